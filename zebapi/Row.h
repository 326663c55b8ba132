#pragma once

#include "zebapi/tables/Row.h"
