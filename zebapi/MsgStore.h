#pragma once

#include "zebapi/objects/MsgStore.h"
