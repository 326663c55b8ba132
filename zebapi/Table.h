#pragma once

#include "zebapi/tables/Table.h"
