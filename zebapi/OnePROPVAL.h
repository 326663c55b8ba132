#pragma once

#include "zebapi/values/OnePROPVAL.h"
