#pragma once

#include "zebapi/entryid/EntryIDInfo.h"
