#pragma once

#include "zebapi/constants/NameLookup.h"
#include "zebapi/values/TAGS.h"
