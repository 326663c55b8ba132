#include "tools/common/Output.h"

#include "platform/utf8.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace zeb::tools
{
namespace
{

constexpr uint64_t TicksPerSecond = 10'000'000;
constexpr uint64_t SecondsPerDay = 86'400;
/// The first file time of the year 10000.
constexpr uint64_t EndOfYears = 2'650'467'744'000'000'000ull;
constexpr const char* Ellipsis = "\xE2\x80\xA6";

struct CivilDate
{
    int year, month, day;
};

/// Converts days since 1601-01-01 to a Gregorian date; 1601 begins a cycle of 400 years.
CivilDate DateOfDays(int64_t days)
{
    // Counted from 1 March 1600, so that the leap day ends a year.
    days += 306;
    const int64_t cycle = days / 146'097;
    const int64_t dayOfCycle = days % 146'097;
    const int64_t yearOfCycle = (dayOfCycle - dayOfCycle / 1'460 + dayOfCycle / 36'524 - dayOfCycle / 146'096) / 365;
    const int64_t dayOfYear = dayOfCycle - (365 * yearOfCycle + yearOfCycle / 4 - yearOfCycle / 100);
    const int64_t shifted = (5 * dayOfYear + 2) / 153;
    const int day = static_cast<int>(dayOfYear - (153 * shifted + 2) / 5 + 1);
    const int month = static_cast<int>(shifted < 10 ? shifted + 3 : shifted - 9);
    const int year = static_cast<int>(1600 + cycle * 400 + yearOfCycle + (month <= 2 ? 1 : 0));
    return {year, month, day};
}

int64_t DaysOfDate(const CivilDate& date)
{
    const int64_t year = date.year - (date.month <= 2 ? 1 : 0) - 1600;
    const int64_t cycle = year / 400;
    const int64_t yearOfCycle = year % 400;
    const int64_t dayOfYear = (153 * (date.month > 2 ? date.month - 3 : date.month + 9) + 2) / 5 + date.day - 1;
    return cycle * 146'097 + yearOfCycle * 365 + yearOfCycle / 4 - yearOfCycle / 100 + dayOfYear - 306;
}

uint64_t Ticks(const FILETIME& time)
{
    return (static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime;
}

FILETIME TimeOfTicks(uint64_t ticks)
{
    FILETIME time;
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    return time;
}

std::string DateAndTime(uint64_t ticks, char separator)
{
    const uint64_t seconds = ticks / TicksPerSecond;
    const CivilDate date = DateOfDays(static_cast<int64_t>(seconds / SecondsPerDay));
    const int rest = static_cast<int>(seconds % SecondsPerDay);
    char text[40];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d%c%02d:%02d:%02d", date.year, date.month, date.day, separator,
                  rest / 3600, rest / 60 % 60, rest % 60);
    return text;
}

/// The columns of the code point at `at`, which is advanced past it: none for combining marks and joiners, two for wide
/// characters. Each invalid sequence has the column of its U+FFFD.
size_t NextColumns(std::string_view text, size_t& at)
{
    const char32_t code = platform::NextCodePoint(text, at, platform::LoneSurrogate::Replaced);
    return static_cast<size_t>(utf8proc_charwidth(static_cast<utf8proc_int32_t>(code)));
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

/// Reads an optional ".1234567" as 100 ns units.
bool ReadFraction(const std::string& text, size_t& at, uint64_t& ticks)
{
    ticks = 0;
    if (at >= text.size() || text[at] != '.')
    {
        return true;
    }
    const size_t begin = ++at;
    uint64_t unit = TicksPerSecond / 10;
    for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at, unit /= 10)
    {
        if (unit == 0 && text[at] != '0')
        {
            return false;
        }
        ticks += unit * static_cast<uint64_t>(text[at] - '0');
    }
    return at > begin;
}

bool ParseHexTime(const std::string& text, FILETIME& time)
{
    if (text.size() != 18 || text.compare(0, 2, "0x") != 0 ||
        text.find_first_not_of("0123456789abcdefABCDEF", 2) != std::string::npos)
    {
        return false;
    }
    time = TimeOfTicks(std::stoull(text.substr(2), nullptr, 16));
    return true;
}

int DaysOfMonth(int year, int month)
{
    if (month == 2)
    {
        return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0 ? 29 : 28;
    }
    return month == 4 || month == 6 || month == 9 || month == 11 ? 30 : 31;
}

} // namespace

std::string Utf8(const CStringW& text)
{
    return platform::Utf8FromWide(static_cast<const WCHAR*>(text), static_cast<size_t>(text.GetLength()));
}

std::string Utf8FromNarrow(const std::string& text)
{
    const platform::WideString wide = platform::WideFromNarrow(text.data(), text.size());
    return platform::Utf8FromWide(wide.data(), wide.size());
}

std::string ValidUtf8(const std::string& text)
{
    const platform::WideString wide = platform::WideFromUtf8(text.data(), text.size());
    return platform::Utf8FromWide(wide.data(), wide.size());
}

CStringW WideFromUtf8(const std::string& text)
{
    return CStringW(platform::WideFromUtf8(text.data(), text.size()).c_str());
}

std::string NarrowFromUtf8(const std::string& text)
{
    const platform::WideString wide = platform::WideFromUtf8(text.data(), text.size());
    return platform::NarrowFromWide(wide.data(), wide.size());
}

std::string OneLine(std::string text)
{
    for (size_t i = 0; i < text.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7F)
        {
            text[i] = ' ';
        }
        // U+0080 to U+009F control a terminal too.
        else if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0)
        {
            text.replace(i, 2, " ");
        }
    }
    return text;
}

size_t DisplayWidth(std::string_view text)
{
    size_t width = 0;
    for (size_t at = 0; at < text.size();)
    {
        width += NextColumns(text, at);
    }
    return width;
}

std::string Shortened(const std::string& text, size_t width)
{
    if (width == 0 || DisplayWidth(text) <= width)
    {
        return text;
    }
    size_t used = 0, end = 0;
    for (size_t at = 0; at < text.size(); end = at)
    {
        used += NextColumns(text, at);
        if (used > width - 1)
        {
            break;
        }
    }
    return text.substr(0, end) + Ellipsis;
}

std::string Fitted(const std::string& text, size_t width)
{
    std::string fitted = Shortened(text, width);
    const size_t used = DisplayWidth(fitted);
    fitted.append(used < width ? width - used : 0, ' ');
    return fitted;
}

std::string TimeForMachines(const FILETIME& time)
{
    const uint64_t ticks = Ticks(time);
    char text[24];
    if (ticks >= EndOfYears)
    {
        std::snprintf(text, sizeof text, "0x%08X%08X", static_cast<unsigned>(time.dwHighDateTime),
                      static_cast<unsigned>(time.dwLowDateTime));
        return text;
    }
    std::string result = DateAndTime(ticks, 'T');
    if (const uint64_t fraction = ticks % TicksPerSecond)
    {
        std::snprintf(text, sizeof text, ".%07u", static_cast<unsigned>(fraction));
        result += text;
        result.erase(result.find_last_not_of('0') + 1);
    }
    return result + "Z";
}

bool ParseTime(const std::string& text, FILETIME& time)
{
    if (ParseHexTime(text, time))
    {
        return true;
    }
    CivilDate date{};
    int hour = 0, minute = 0, second = 0;
    uint64_t fraction = 0;
    size_t at = 0;
    if (!(ReadNumber(text, at, 4, date.year) && ReadSign(text, at, '-') && ReadNumber(text, at, 2, date.month) &&
          ReadSign(text, at, '-') && ReadNumber(text, at, 2, date.day) && ReadSign(text, at, 'T') &&
          ReadNumber(text, at, 2, hour) && ReadSign(text, at, ':') && ReadNumber(text, at, 2, minute) &&
          ReadSign(text, at, ':') && ReadNumber(text, at, 2, second) && ReadFraction(text, at, fraction) &&
          ReadSign(text, at, 'Z') && at == text.size()))
    {
        return false;
    }
    if (date.year < 1601 || date.month < 1 || date.month > 12 || date.day < 1 ||
        date.day > DaysOfMonth(date.year, date.month) || hour > 23 || minute > 59 || second > 59)
    {
        return false;
    }
    const uint64_t seconds = static_cast<uint64_t>(DaysOfDate(date)) * SecondsPerDay +
                             static_cast<uint64_t>(hour * 3600 + minute * 60 + second);
    time = TimeOfTicks(seconds * TicksPerSecond + fraction);
    return true;
}

std::string Grouped(unsigned long long number)
{
    std::string text = std::to_string(number);
    for (size_t at = text.size(); at > 3;)
    {
        at -= 3;
        text.insert(at, ",");
    }
    return text;
}

void Print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
    {
        throw std::runtime_error("standard output cannot be written");
    }
}

void FlushOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
    {
        throw std::runtime_error("standard output cannot be written");
    }
}

} // namespace zeb::tools
