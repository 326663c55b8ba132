// Arrays and maps.
#pragma once

#include "framework/Array.h"
#include "framework/Map.h"
