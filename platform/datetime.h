// Dates as people read them.
#pragma once

#include "platform/mapi.h"

#include <optional>
#include <string>

namespace zeb::platform
{

/// A UTC file time as local date and time: the user's locale on Windows (VarBstrFromDate, locale 0x0400, no
/// flags), the C locale's "%x %X" on Linux. Nothing when the time lies outside what an OLE date can say, or
/// when the date's round trip changes year, month, day, hour, minute or second (milliseconds do not count).
std::optional<std::string> LocalDateText(const FILETIME& time);

/// Now, in UTC.
FILETIME CurrentFileTime();

} // namespace zeb::platform
