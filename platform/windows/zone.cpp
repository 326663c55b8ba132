#include "platform/zone.h"

#include <cstdint>

namespace zeb::platform
{
namespace
{

using Conversion = BOOL (*)(const TIME_ZONE_INFORMATION*, const SYSTEMTIME*, SYSTEMTIME*);

int64_t CountOf(const FILETIME& time)
{
    return static_cast<int64_t>(static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

/// `time` shifted by the offset of the conversion, with the rules of its year.
std::optional<FILETIME> Converted(const FILETIME& time, Conversion convert)
{
    SYSTEMTIME from = {};
    SYSTEMTIME to = {};
    TIME_ZONE_INFORMATION zone = {};
    FILETIME whole = {};
    FILETIME converted = {};
    if (!FileTimeToSystemTime(&time, &from) || !GetTimeZoneInformationForYear(from.wYear, nullptr, &zone) ||
        !convert(&zone, &from, &to) || !SystemTimeToFileTime(&from, &whole) || !SystemTimeToFileTime(&to, &converted))
    {
        return std::nullopt;
    }
    const int64_t count = CountOf(time) + CountOf(converted) - CountOf(whole);
    FILETIME result;
    result.dwLowDateTime = static_cast<DWORD>(count);
    result.dwHighDateTime = static_cast<DWORD>(static_cast<uint64_t>(count) >> 32);
    return result;
}

} // namespace

std::optional<FILETIME> LocalFromUtc(const FILETIME& utc)
{
    return Converted(utc, [](const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* from, SYSTEMTIME* to) -> BOOL
    { return SystemTimeToTzSpecificLocalTime(zone, from, to); });
}

std::optional<FILETIME> UtcFromLocal(const FILETIME& local)
{
    return Converted(local, [](const TIME_ZONE_INFORMATION* zone, const SYSTEMTIME* from, SYSTEMTIME* to) -> BOOL
    { return TzSpecificLocalTimeToSystemTime(zone, from, to); });
}

} // namespace zeb::platform
