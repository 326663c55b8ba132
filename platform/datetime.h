// Dates for display.
#pragma once

#include "platform/mapi.h"

#include <optional>
#include <string>

namespace zeb::platform
{

/// A UTC file time as local date and time: the user's locale on Windows (VarBstrFromDate, locale 0x0400, no
/// flags), the C locale's "%x %X" on Linux. Empty when the time is outside the range of an OLE date, or when the date's
/// round trip changes year, month, day, hour, minute or second (milliseconds do not count).
std::optional<std::string> LocalDateText(const FILETIME& time);

/// The current time in UTC.
FILETIME CurrentFileTime();

} // namespace zeb::platform
