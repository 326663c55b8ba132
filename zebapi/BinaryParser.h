#pragma once

#include "zebapi/entryid/BinaryParser.h"
