#pragma once

#include "zebapi/frame/Exception.h"
