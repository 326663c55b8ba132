#pragma once

#include "zebapi/values/BinArray.h"
