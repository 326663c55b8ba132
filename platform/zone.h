// The user's time zone.
#pragma once

#include "platform/mapi.h"

#include <optional>

namespace zeb::platform
{

/// A UTC file time as the same count of a clock in the user's time zone, by the zone's rules at that time; and
/// the other way round. Nothing when the system cannot say.
std::optional<FILETIME> LocalFromUtc(const FILETIME& utc);
std::optional<FILETIME> UtcFromLocal(const FILETIME& local);

} // namespace zeb::platform
