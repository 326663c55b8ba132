#pragma once

#include "zebapi/tables/RowSet.h"
