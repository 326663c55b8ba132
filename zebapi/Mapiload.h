#pragma once

#include "zebapi/frame/Mapiload.h"
