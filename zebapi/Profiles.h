#pragma once

#include "zebapi/frame/Profiles.h"
