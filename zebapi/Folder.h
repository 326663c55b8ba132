#pragma once

#include "zebapi/objects/Folder.h"
