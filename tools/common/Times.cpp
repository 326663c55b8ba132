#include "tools/common/Times.h"

#include "platform/zone.h"
#include "tools/common/FileTime.h"

#include <cstdio>
#include <cstdlib>

namespace zeb::tools
{
namespace
{

constexpr size_t WholeSeconds = 19; // the length of "2026-01-02T03:04:05"

FILETIME ShownTime(const FILETIME& time, Zone zone)
{
    return zone == Zone::Utc ? time : platform::LocalFromUtc(time).value_or(time);
}

/// Reads `digits` digits at `at`, which is advanced past them.
bool ReadNumber(const std::string& text, size_t& at, int digits, int& number)
{
    number = 0;
    for (int i = 0; i < digits; ++i, ++at)
    {
        if (at >= text.size() || text[at] < '0' || text[at] > '9')
        {
            return false;
        }
        number = number * 10 + (text[at] - '0');
    }
    return true;
}

bool ReadSign(const std::string& text, size_t& at, char sign)
{
    return at < text.size() && text[at++] == sign;
}

/// Reads an optional ".1234567".
bool ReadFraction(const std::string& text, size_t& at, FileTicks& fraction)
{
    fraction = FileTicks::zero();
    if (at >= text.size() || text[at] != '.')
    {
        return true;
    }
    const size_t begin = ++at;
    FileTicks unit = std::chrono::milliseconds(100);
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, unit /= 10)
    {
        if (unit == FileTicks::zero() && text[at] != '0')
        {
            return false;
        }
        fraction += unit * (text[at] - '0');
    }
    return at > begin;
}

/// Reads "2026-01-02", a day of the calendar that a file time can represent.
bool ReadDay(const std::string& text, size_t& at, FilePoint& day)
{
    int year = 0, month = 0, dayOfMonth = 0;
    if (!(ReadNumber(text, at, 4, year) && ReadSign(text, at, '-') && ReadNumber(text, at, 2, month) &&
          ReadSign(text, at, '-') && ReadNumber(text, at, 2, dayOfMonth)))
    {
        return false;
    }
    const date::year_month_day civil(date::year(year), date::month(static_cast<unsigned>(month)),
                                     date::day(static_cast<unsigned>(dayOfMonth)));
    if (!civil.ok() || date::sys_days(civil) < FirstFileDay)
    {
        return false;
    }
    day = date::sys_days(civil);
    return true;
}

/// Reads "03:04:05" or "03:04:05.0000001".
bool ReadTimeOfDay(const std::string& text, size_t& at, FileTicks& sinceMidnight)
{
    int hour = 0, minute = 0, second = 0;
    FileTicks fraction{};
    if (!(ReadNumber(text, at, 2, hour) && ReadSign(text, at, ':') && ReadNumber(text, at, 2, minute) &&
          ReadSign(text, at, ':') && ReadNumber(text, at, 2, second) && ReadFraction(text, at, fraction)))
    {
        return false;
    }
    sinceMidnight = std::chrono::hours(hour) + std::chrono::minutes(minute) + std::chrono::seconds(second) + fraction;
    return hour <= 23 && minute <= 59 && second <= 59;
}

bool ParseHexTime(const std::string& text, FILETIME& time)
{
    if (text.size() != 18 || text.compare(0, 2, "0x") != 0 ||
        text.find_first_not_of("0123456789abcdefABCDEF", 2) != std::string::npos)
    {
        return false;
    }
    time.dwHighDateTime = static_cast<DWORD>(std::stoul(text.substr(2, 8), nullptr, 16));
    time.dwLowDateTime = static_cast<DWORD>(std::stoul(text.substr(10), nullptr, 16));
    return true;
}

/// The parts of a date and a time of day, with the names that mail gives to days and months.
struct MailTime
{
    explicit MailTime(const FILETIME& time)
    {
        constexpr const char* Weekdays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
        constexpr const char* Months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                          "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
        const FilePoint point = PointOf(time);
        const auto dayPoint = date::floor<date::days>(point);
        const date::year_month_day civil(dayPoint);
        const date::hh_mm_ss<FileTicks> sinceMidnight(point - dayPoint);
        char text[16];
        std::snprintf(text, sizeof text, "%02d:%02d:%02d", static_cast<int>(sinceMidnight.hours().count()),
                      static_cast<int>(sinceMidnight.minutes().count()),
                      static_cast<int>(sinceMidnight.seconds().count()));
        clock = text;
        weekday = Weekdays[date::weekday(dayPoint).c_encoding()];
        month = Months[static_cast<unsigned>(civil.month()) - 1];
        day = static_cast<unsigned>(civil.day());
        year = static_cast<int>(civil.year());
    }
    std::string clock;
    const char* weekday = "";
    const char* month = "";
    unsigned day = 0;
    int year = 0;
};

} // namespace

std::string TimeForMail(const FILETIME& time)
{
    if (!HasDate(time))
    {
        return "";
    }
    const MailTime parts(time);
    char text[40];
    std::snprintf(text, sizeof text, "%s, %02u %s %04d %s +0000", parts.weekday, parts.day, parts.month, parts.year,
                  parts.clock.c_str());
    return text;
}

std::string TimeForMbox(const FILETIME& time)
{
    if (!HasDate(time))
    {
        return "Thu Jan  1 00:00:00 1970";
    }
    const MailTime parts(time);
    char text[40];
    std::snprintf(text, sizeof text, "%s %s %2u %s %04d", parts.weekday, parts.month, parts.day, parts.clock.c_str(),
                  parts.year);
    return text;
}

const char* NameOfZone(Zone zone)
{
    return zone == Zone::Utc ? "UTC" : "local";
}

std::string TimeForMachines(const FILETIME& time)
{
    char text[40];
    if (!HasDate(time))
    {
        std::snprintf(text, sizeof text, "0x%08X%08X", static_cast<unsigned>(time.dwHighDateTime),
                      static_cast<unsigned>(time.dwLowDateTime));
        return text;
    }
    const FilePoint point = PointOf(time);
    const auto day = date::floor<date::days>(point);
    const date::year_month_day civil(day);
    const date::hh_mm_ss<FileTicks> clock(point - day);
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%07d", static_cast<int>(civil.year()),
                  static_cast<unsigned>(civil.month()), static_cast<unsigned>(civil.day()),
                  static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()), static_cast<int>(clock.subseconds().count()));
    std::string result = text;
    result.erase(result.find_last_not_of('0') + 1);
    if (result.back() == '.')
    {
        result.pop_back();
    }
    return result + "Z";
}

bool ParseTime(const std::string& text, FILETIME& time)
{
    if (ParseHexTime(text, time))
    {
        return true;
    }
    FilePoint day{};
    FileTicks sinceMidnight{};
    size_t at = 0;
    if (!(ReadDay(text, at, day) && ReadSign(text, at, 'T') && ReadTimeOfDay(text, at, sinceMidnight) &&
          ReadSign(text, at, 'Z') && at == text.size()))
    {
        return false;
    }
    time = FileTimeOf(day + sinceMidnight);
    return true;
}

std::string TimeForPeople(const FILETIME& time, Zone zone)
{
    std::string text = TimeForMachines(ShownTime(time, zone));
    if (text.compare(0, 2, "0x") == 0)
    {
        return text;
    }
    text.resize(WholeSeconds);
    text[10] = ' ';
    return text;
}

std::string TimeWithZone(const FILETIME& time, Zone zone)
{
    const std::string text = TimeForPeople(time, zone);
    if (text.compare(0, 2, "0x") == 0)
    {
        return text;
    }
    if (zone == Zone::Utc)
    {
        return text + " UTC";
    }
    const FileTicks ahead = PointOf(ShownTime(time, zone)) - PointOf(time);
    const auto minutes = static_cast<int>(std::chrono::duration_cast<std::chrono::minutes>(ahead).count());
    char offset[16];
    std::snprintf(offset, sizeof offset, " %c%02d:%02d", minutes < 0 ? '-' : '+', std::abs(minutes) / 60,
                  std::abs(minutes) % 60);
    return text + offset;
}

} // namespace zeb::tools
