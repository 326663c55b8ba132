#pragma once

#include "zebapi/objects/IProp.h"
