#pragma once

#include "zebapi/session/Profiles.h"
