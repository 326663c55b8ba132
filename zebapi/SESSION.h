#pragma once

#include "zebapi/frame/SESSION.h"
