#include "tools/common/Moments.h"

#include "platform/datetime.h"
#include "platform/zone.h"
#include "tools/common/Failure.h"
#include "tools/common/FileTime.h"
#include "tools/common/Output.h"

#include <cctype>
#include <chrono>
#include <optional>

namespace zeb::tools
{
namespace
{

/// Whether the text at `at` matches the pattern: 'd' is a digit, other characters match themselves.
bool Matches(const std::string& text, size_t at, const char* pattern)
{
    for (size_t i = 0; pattern[i] != '\0'; ++i)
    {
        if (at + i >= text.size())
        {
            return false;
        }
        const bool isDigit = std::isdigit(static_cast<unsigned char>(text[at + i])) != 0;
        if (pattern[i] == 'd' ? !isDigit : text[at + i] != pattern[i])
        {
            return false;
        }
    }
    return true;
}

/// Converts a local time of the zone to UTC. Empty when a file time cannot represent it.
std::optional<FILETIME> UtcOf(FilePoint clock, Zone zone)
{
    if (clock < FirstFileDay)
    {
        return std::nullopt;
    }
    const std::optional<FILETIME> time =
        zone == Zone::Utc ? FileTimeOf(clock) : platform::UtcFromLocal(FileTimeOf(clock));
    return time && PointOf(*time) >= FirstFileDay ? time : std::nullopt;
}

/// A day of the zone.
std::optional<Moment> WholeDay(date::sys_days day, Zone zone)
{
    const auto begin = UtcOf(day, zone), end = UtcOf(day + date::days(1), zone);
    return begin && end ? std::optional<Moment>(Moment{*begin, *end, true}) : std::nullopt;
}

std::optional<Moment> MomentAt(FilePoint point)
{
    if (point < FirstFileDay)
    {
        return std::nullopt;
    }
    return Moment{FileTimeOf(point), FileTimeOf(point), false};
}

std::optional<Moment> NamedDay(const std::string& text, Zone zone)
{
    if (text != "today" && text != "yesterday")
    {
        return std::nullopt;
    }
    const FILETIME now = platform::CurrentFileTime();
    const FILETIME clock = zone == Zone::Utc ? now : platform::LocalFromUtc(now).value_or(now);
    const auto today = date::floor<date::days>(PointOf(clock));
    return WholeDay(text == "today" ? today : today - date::days(1), zone);
}

/// "7d"
std::optional<Moment> BeforeNow(const std::string& text)
{
    const size_t digits = text.empty() ? 0 : text.size() - 1;
    if (digits == 0 || digits > 5 || text.find_first_not_of("0123456789") != digits)
    {
        return std::nullopt;
    }
    const FilePoint now = PointOf(platform::CurrentFileTime());
    const int count = std::stoi(text.substr(0, digits));
    switch (text.back())
    {
    case 'h':
        return MomentAt(now - std::chrono::hours(count));
    case 'd':
        return MomentAt(now - date::days(count));
    case 'w':
        return MomentAt(now - date::weeks(count));
    default:
        return std::nullopt;
    }
}

/// The zone at the end of a text: "Z", "+01", "+01:00" or "+0100". Removes it from the text. @return how far
/// it is ahead of UTC; empty when the text has no zone
std::optional<std::chrono::minutes> TakeZone(std::string& text)
{
    constexpr size_t Shortest = 16; // 2026-01-02T03:04
    const size_t at = text.find_first_of("Z+-", Shortest);
    if (at == std::string::npos)
    {
        return std::nullopt;
    }
    const std::string zone = text.substr(at);
    if (zone == "Z")
    {
        text.resize(at);
        return std::chrono::minutes(0);
    }
    const bool isHours = zone.size() == 3 && Matches(zone, 1, "dd");
    const bool isPlain = zone.size() == 5 && Matches(zone, 1, "dddd");
    const bool isSplit = zone.size() == 6 && Matches(zone, 1, "dd:dd");
    const int hours = isHours || isPlain || isSplit ? std::stoi(zone.substr(1, 2)) : 24;
    const int minutes = isPlain || isSplit ? std::stoi(zone.substr(zone.size() - 2)) : 0;
    if (hours > 23 || minutes > 59)
    {
        return std::nullopt;
    }
    text.resize(at);
    const std::chrono::minutes ahead = std::chrono::hours(hours) + std::chrono::minutes(minutes);
    return zone[0] == '-' ? -ahead : ahead;
}

std::optional<Moment> IsoDate(const std::string& text, Zone zone)
{
    FILETIME clock{};
    if (!Matches(text, 0, "dddd-dd-dd"))
    {
        return ParseTime(text, clock) ? std::optional<Moment>(Moment{clock, clock, false}) : std::nullopt;
    }
    if (text.size() == 10)
    {
        return ParseTime(text + "T00:00:00Z", clock) ? WholeDay(date::floor<date::days>(PointOf(clock)), zone)
                                                     : std::nullopt;
    }
    std::string rest = text;
    if (rest[10] == ' ')
    {
        rest[10] = 'T';
    }
    const std::optional<std::chrono::minutes> ahead = TakeZone(rest);
    if (rest.size() == 16)
    {
        rest += ":00";
    }
    if (!ParseTime(rest + "Z", clock))
    {
        return std::nullopt;
    }
    if (ahead)
    {
        return MomentAt(PointOf(clock) - *ahead);
    }
    const std::optional<FILETIME> time = UtcOf(PointOf(clock), zone);
    return time ? std::optional<Moment>(Moment{*time, *time, false}) : std::nullopt;
}

} // namespace

Moment ParseMoment(const std::string& what, const std::string& text, Zone zone)
{
    std::optional<Moment> moment = NamedDay(text, zone);
    if (!moment)
    {
        moment = BeforeNow(text);
    }
    if (!moment)
    {
        moment = IsoDate(text, zone);
    }
    if (!moment)
    {
        throw UsageError(what + " needs a date such as 2026-01-02, 2026-01-02T03:04:05Z, yesterday or 7d, not '" +
                         Shortened(OneLine(ValidUtf8(text)), 40) + "'");
    }
    return *moment;
}

} // namespace zeb::tools
