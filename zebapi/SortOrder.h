#pragma once

#include "zebapi/tables/SortOrder.h"
