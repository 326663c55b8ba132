// The user's time zone.
#pragma once

#include "platform/mapi.h"

#include <optional>

namespace zeb::platform
{

/// Converts a UTC file time to local time in the user's time zone, by the zone's rules at that time, and back. Empty
/// when the system cannot convert it.
std::optional<FILETIME> LocalFromUtc(const FILETIME& utc);
std::optional<FILETIME> UtcFromLocal(const FILETIME& local);

} // namespace zeb::platform
