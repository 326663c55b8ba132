#pragma once

#include "zebapi/values/Binary.h"
