#include "tools/zeb/Moments.h"

#include "platform/datetime.h"
#include "platform/zone.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <cctype>
#include <cstdint>
#include <optional>

namespace zeb::tools
{
namespace
{

constexpr int64_t TicksAMinute = 600'000'000;
constexpr int64_t TicksAnHour = 60 * TicksAMinute;
constexpr int64_t TicksADay = 24 * TicksAnHour;

int64_t Ticks(const FILETIME& time)
{
    return static_cast<int64_t>((static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
}

FILETIME TimeOf(int64_t ticks)
{
    FILETIME time;
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(static_cast<uint64_t>(ticks) >> 32);
    return time;
}

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

/// Converts a local time of the zone to UTC.
std::optional<FILETIME> UtcOf(const FILETIME& clock, Zone zone)
{
    return zone == Zone::Utc ? clock : platform::UtcFromLocal(clock);
}

/// The day in the zone that is `days` before the day of a point in time.
std::optional<Moment> DayOf(const FILETIME& clock, int days, Zone zone)
{
    const int64_t begin = Ticks(clock) / TicksADay * TicksADay - days * TicksADay;
    if (begin < 0)
    {
        return std::nullopt;
    }
    const auto time = UtcOf(TimeOf(begin), zone), end = UtcOf(TimeOf(begin + TicksADay), zone);
    return time && end ? std::optional<Moment>(Moment{*time, *end, true}) : std::nullopt;
}

std::optional<Moment> NamedDay(const std::string& text, Zone zone)
{
    if (text != "today" && text != "yesterday")
    {
        return std::nullopt;
    }
    const FILETIME now = platform::CurrentFileTime();
    const FILETIME clock = zone == Zone::Utc ? now : platform::LocalFromUtc(now).value_or(now);
    return DayOf(clock, text == "today" ? 0 : 1, zone);
}

/// "7d"
std::optional<Moment> BeforeNow(const std::string& text)
{
    const size_t digits = text.empty() ? 0 : text.size() - 1;
    if (digits == 0 || digits > 5 || text.find_first_not_of("0123456789") != digits)
    {
        return std::nullopt;
    }
    const char unit = text.back();
    const int64_t ticks = unit == 'h' ? TicksAnHour : unit == 'd' ? TicksADay : unit == 'w' ? 7 * TicksADay : 0;
    const int64_t time = Ticks(platform::CurrentFileTime()) - std::stoll(text.substr(0, digits)) * ticks;
    if (ticks == 0 || time < 0)
    {
        return std::nullopt;
    }
    return Moment{TimeOf(time), TimeOf(time), false};
}

/// The zone at the end of a text: "Z", "+01", "+01:00" or "+0100". Removes it from the text. @return the offset from
/// UTC in ticks; empty when the text has no zone
std::optional<int64_t> TakeZone(std::string& text)
{
    constexpr size_t shortest = 16; // 2026-01-02T03:04
    const size_t at = text.find_first_of("Z+-", shortest);
    if (at == std::string::npos)
    {
        return std::nullopt;
    }
    const std::string zone = text.substr(at);
    if (zone == "Z")
    {
        text.resize(at);
        return 0;
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
    return (zone[0] == '-' ? -1 : 1) * (hours * TicksAnHour + minutes * TicksAMinute);
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
        return ParseTime(text + "T00:00:00Z", clock) ? DayOf(clock, 0, zone) : std::nullopt;
    }
    std::string rest = text;
    if (rest[10] == ' ')
    {
        rest[10] = 'T';
    }
    const std::optional<int64_t> ahead = TakeZone(rest);
    if (rest.size() == 16)
    {
        rest += ":00";
    }
    if (!ParseTime(rest + "Z", clock))
    {
        return std::nullopt;
    }
    const std::optional<FILETIME> time = ahead ? TimeOf(Ticks(clock) - *ahead) : UtcOf(clock, zone);
    if (!time || Ticks(*time) < 0)
    {
        return std::nullopt;
    }
    return Moment{*time, *time, false};
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
