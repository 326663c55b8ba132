#include "platform/zone.h"

#include <cstdint>
#include <ctime>

namespace zeb::platform
{
namespace
{

constexpr int64_t TicksPerSecond = 10'000'000;    // of 100 ns
constexpr int64_t EpochDistance = 11'644'473'600; // seconds from 1601 to 1970

int64_t TicksOf(const FILETIME& time)
{
    return static_cast<int64_t>(uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime);
}

FILETIME TimeOfTicks(int64_t ticks)
{
    FILETIME time = {};
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(static_cast<uint64_t>(ticks) >> 32);
    return time;
}

std::time_t SecondsOf(int64_t ticks)
{
    return ticks / TicksPerSecond - EpochDistance;
}

} // namespace

std::optional<FILETIME> LocalFromUtc(const FILETIME& utc)
{
    const int64_t ticks = TicksOf(utc);
    const std::time_t seconds = SecondsOf(ticks);
    std::tm local = {};
    tzset();
    if (ticks < 0 || localtime_r(&seconds, &local) == nullptr)
    {
        return std::nullopt;
    }
    return TimeOfTicks(ticks + local.tm_gmtoff * TicksPerSecond);
}

std::optional<FILETIME> UtcFromLocal(const FILETIME& local)
{
    const int64_t ticks = TicksOf(local);
    const std::time_t seconds = SecondsOf(ticks);
    std::tm clock = {};
    if (ticks < 0 || gmtime_r(&seconds, &clock) == nullptr)
    {
        return std::nullopt;
    }
    clock.tm_isdst = -1;
    const std::time_t utc = std::mktime(&clock);
    return TimeOfTicks(ticks + (static_cast<int64_t>(utc) - seconds) * TicksPerSecond);
}

} // namespace zeb::platform
