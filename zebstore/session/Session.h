// Logging on.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// Opens a session; the caller owns the one reference.
/// @param profile narrow text, or 16-bit text when `flags` has MAPI_UNICODE; null or empty: the default profile.
/// @throws Error MAPI_E_LOGON_FAILED when the profile does not exist.
IMAPISession* Logon(const char* profile, ULONG flags);

} // namespace zebstore
