// How the library saves an object that stays open.
#pragma once

#include "platform/mapi.h"

/// Saved over another session's changes, and still writable afterwards.
constexpr ULONG SaveFlags = KEEP_OPEN_READWRITE | FORCE_SAVE;
