#include "platform/datetime.h"

#include <cstdint>
#include <ctime>

namespace zeb::platform
{
namespace
{

constexpr int64_t TicksPerSecond = 10'000'000;    // of 100 ns
constexpr int64_t EpochDistance = 11'644'473'600; // seconds from 1601 to 1970
constexpr int FirstFileTimeYear = 1601;
constexpr int LastOleYear = 9999;

int64_t TicksOf(const FILETIME& time)
{
    return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

} // namespace

std::optional<std::string> LocalDateText(const FILETIME& time)
{
    const int64_t ticks = TicksOf(time);
    if (ticks < 0)
    {
        return std::nullopt;
    }
    const std::time_t seconds = ticks / TicksPerSecond - EpochDistance;
    std::tm local = {};
    if (localtime_r(&seconds, &local) == nullptr)
    {
        return std::nullopt;
    }
    const int year = local.tm_year + 1900;
    if (year < FirstFileTimeYear || year > LastOleYear)
    {
        return std::nullopt;
    }
    char text[64] = {};
    // "%x %X" of the C locale, written out because the process's locale may differ.
    const size_t length = strftime(text, sizeof text, "%m/%d/%y %H:%M:%S", &local);
    return std::string(text, length);
}

FILETIME CurrentFileTime()
{
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const int64_t ticks = (int64_t{now.tv_sec} + EpochDistance) * TicksPerSecond + now.tv_nsec / 100;
    FILETIME time = {};
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return time;
}

} // namespace zeb::platform
