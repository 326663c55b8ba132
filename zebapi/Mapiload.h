#pragma once

#include "zebapi/session/Mapiload.h"
