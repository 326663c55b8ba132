#pragma once

#include "zebapi/tables/Restrict.h"
