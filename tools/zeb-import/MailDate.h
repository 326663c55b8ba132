// Dates of mail.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zeb::tools
{

/// Parses the date of a mail header. @return units of 100 ns since 1601 (UTC); empty for an invalid date or one before
/// 1601. Two-digit years are 1950 to 2049; a date without a zone is UTC.
std::optional<int64_t> MomentOf(const std::string& date);

} // namespace zeb::tools
