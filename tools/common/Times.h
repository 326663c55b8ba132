// Dates as text: for display in the local time zone or in UTC, and as ISO 8601.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>

namespace zeb::tools
{

enum class Zone
{
    Local, ///< the user's time zone, with the rules in force at the given date
    Utc,
};

/// "local" or "UTC".
const char* NameOfZone(Zone zone);

/// A file time as ISO 8601 in UTC with as many fractional digits as needed (100 ns units): "2026-01-02T03:04:05Z",
/// "2026-01-02T03:04:05.0000001Z". Times outside the years 1601 to 9999 are printed as "0x" and 16 hexadecimal digits.
std::string TimeForMachines(const FILETIME& time);

/// The inverse of TimeForMachines; also accepts fewer or more trailing zeros. @return false when the text has neither
/// form
bool ParseTime(const std::string& text, FILETIME& time);

/// A file time (UTC) as "2026-01-02 03:04:05". Times outside the years 1601 to 9999 are printed as "0x" and 16 digits.
std::string TimeForPeople(const FILETIME& time, Zone zone);

/// The same with the offset from UTC: "2026-01-02 03:04:05 +09:00", or "2026-01-02 03:04:05 UTC".
std::string TimeWithZone(const FILETIME& time, Zone zone);

/// A file time as the date of a mail, in UTC: "Fri, 02 Jan 2026 03:04:05 +0000"; empty outside the years 1601 to 9999.
std::string TimeForMail(const FILETIME& time);

/// A file time as the date of a message in an mbox file, in UTC: "Fri Jan  2 03:04:05 2026"; that of 1970 outside the
/// years 1601 to 9999.
std::string TimeForMbox(const FILETIME& time);

} // namespace zeb::tools
