#pragma once

#include "zebapi/objects/NAMEID.h"
