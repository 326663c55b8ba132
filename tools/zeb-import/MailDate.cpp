#include "tools/zeb-import/MailDate.h"

#include "tools/zeb-import/Mime.h"

#include <regex>

namespace zeb::tools
{
namespace
{

/// The file time of the Unix epoch, and the file time units per second.
constexpr int64_t EpochAsFileTime = 116'444'736'000'000'000, UnitsPerSecond = 10'000'000;
/// The calendar, including weekdays, repeats after 400 years.
constexpr int CycleYears = 400;
constexpr int64_t CycleSeconds = int64_t(146'097) * 24 * 60 * 60;
/// Longer texts are not dates.
constexpr size_t LongestDate = 200;

/// GMime accepts no year before 1969 and reads 69 as 2069: such a date is shifted by one cycle. @return the shift in
/// seconds
int64_t MakeReadable(std::string& date)
{
    static const std::regex dayMonthYear("^([^0-9]*[0-9]{1,2}[ -][A-Za-z]{3,9}[ -])([0-9]{2,4})(?![0-9:])"),
        yearAtEnd("^([^0-9]*[0-9]{1,2} +[0-9]{1,2}:[0-9]{2}(?::[0-9]{2})?(?: +[A-Z]{1,5})? +)([0-9]{4})$");
    std::smatch match;
    if (!std::regex_search(date, match, dayMonthYear) && !std::regex_search(date, match, yearAtEnd))
    {
        return 0;
    }
    int year = std::stoi(match[2].str());
    if (match.length(2) == 2)
    {
        year += year < 50 ? 2000 : 1900;
    }
    else if (match.length(2) == 3)
    {
        year += 1900;
    }
    const bool early = year < 1970 && year >= 1600;
    date = match[1].str() + std::to_string(early ? year + CycleYears : year) + match.suffix().str();
    return early ? CycleSeconds : 0;
}

} // namespace

std::optional<int64_t> MomentOf(const std::string& text)
{
    if (text.size() > LongestDate)
    {
        return std::nullopt;
    }
    std::string date = text;
    const int64_t later = MakeReadable(date);
    std::unique_ptr<GDateTime, void (*)(GDateTime*)> time(g_mime_utils_header_decode_date(date.c_str()),
                                                          g_date_time_unref);
    if (!time)
    {
        time.reset(g_date_time_new_from_iso8601(text.c_str(), nullptr));
    }
    if (!time)
    {
        return std::nullopt;
    }
    const int64_t ticks = (g_date_time_to_unix(time.get()) - later) * UnitsPerSecond + EpochAsFileTime;
    return ticks > 0 ? std::optional<int64_t>(ticks) : std::nullopt;
}

} // namespace zeb::tools
