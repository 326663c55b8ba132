#pragma once

#include "zebapi/objects/Container.h"
