// Points in time as written on a command line.
#pragma once

#include "tools/common/Times.h"

#include <string>

namespace zeb::tools
{

/// A point in time, or a day.
struct Moment
{
    FILETIME time{}; ///< UTC; for a day its beginning
    FILETIME end{};  ///< for a day the beginning of the next day; otherwise equal to `time`
    bool isDay = false;
};

/// Reads a date of ISO 8601 ("2026-01-02", "2026-01-02 03:04", "2026-01-02T03:04:05.5+01:00", "2026-01-02T03:04Z"),
/// "today", "yesterday", or a time before now ("12h", "7d", "2w").
/// @param what the option, for the error text @param zone the zone of a date without one
/// @throws UsageError
Moment ParseMoment(const std::string& what, const std::string& text, Zone zone);

} // namespace zeb::tools
