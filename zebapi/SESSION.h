#pragma once

#include "zebapi/session/SESSION.h"
