#include "tools/common/Times.h"

#include "platform/zone.h"
#include "tools/common/Output.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace zeb::tools
{
namespace
{

constexpr int64_t TicksAMinute = 600'000'000;

int64_t Ticks(const FILETIME& time)
{
    return static_cast<int64_t>((static_cast<uint64_t>(time.dwHighDateTime) << 32) | time.dwLowDateTime);
}

FILETIME ShownTime(const FILETIME& time, Zone zone)
{
    return zone == Zone::Utc ? time : platform::LocalFromUtc(time).value_or(time);
}

} // namespace

const char* NameOfZone(Zone zone)
{
    return zone == Zone::Utc ? "UTC" : "local";
}

std::string TimeForPeople(const FILETIME& time, Zone zone)
{
    std::string text = TimeForMachines(ShownTime(time, zone));
    if (text.compare(0, 2, "0x") == 0)
    {
        return text;
    }
    constexpr size_t wholeSeconds = 19;
    text.resize(wholeSeconds);
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
    const auto minutes = static_cast<int>((Ticks(ShownTime(time, zone)) - Ticks(time)) / TicksAMinute);
    char offset[16];
    std::snprintf(offset, sizeof offset, " %c%02d:%02d", minutes < 0 ? '-' : '+', std::abs(minutes) / 60,
                  std::abs(minutes) % 60);
    return text + offset;
}

} // namespace zeb::tools
