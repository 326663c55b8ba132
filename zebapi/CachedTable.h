#pragma once

#include "zebapi/tables/CachedTable.h"
