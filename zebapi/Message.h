#pragma once

#include "zebapi/objects/Message.h"
