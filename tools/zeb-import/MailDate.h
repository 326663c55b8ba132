// Dates of mail.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zeb::tools
{

/// The moment that a date of a mail header tells, in units of 100 ns since 1601 (UTC); nothing when it tells
/// none, or one before 1601. Years of two digits are those from 1950 to 2049; a date without a zone is UTC.
std::optional<int64_t> MomentOf(const std::string& date);

} // namespace zeb::tools
