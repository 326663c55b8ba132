#pragma once

#include "zebapi/frame/MEM.h"
