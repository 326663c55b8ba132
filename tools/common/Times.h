// Dates as people read them, in their own time zone or in UTC.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>

namespace zeb::tools
{

enum class Zone
{
    Local, ///< the user's, as its rules are at the date itself
    Utc,
};

/// "local" or "UTC".
const char* NameOfZone(Zone zone);

/// A file time (UTC) as "2026-01-02 03:04:05". What is no date from year 1601 to 9999 comes as "0x" and 16 digits.
std::string TimeForPeople(const FILETIME& time, Zone zone);

/// The same with what it differs from UTC by: "2026-01-02 03:04:05 +09:00", or "2026-01-02 03:04:05 UTC".
std::string TimeWithZone(const FILETIME& time, Zone zone);

} // namespace zeb::tools
