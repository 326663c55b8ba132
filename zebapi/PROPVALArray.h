#pragma once

#include "zebapi/values/PROPVALArray.h"
