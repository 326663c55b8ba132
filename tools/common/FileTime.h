// File times as points in time of <chrono>, for arithmetic by the calendar.
#pragma once

#include "platform/mapi.h"

#include <date/date.h>

#include <chrono>
#include <cstdint>
#include <ratio>

namespace zeb::tools
{

/// Units of 100 ns.
using FileTicks = std::chrono::duration<int64_t, std::ratio<1, 10'000'000>>;
using FilePoint = date::sys_time<FileTicks>;

/// File times count from here.
constexpr date::sys_days FirstFileDay = date::year{1601} / date::January / 1;
/// The first day whose year has more than four digits.
constexpr date::sys_days EndOfYears = date::year{10000} / date::January / 1;

/// True for a time before EndOfYears.
inline bool HasDate(const FILETIME& time)
{
    constexpr FileTicks End = EndOfYears - FirstFileDay;
    return (static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime) < static_cast<uint64_t>(End.count());
}

/// A time of 2^63 units or more is a negative number of units, that is a time before FirstFileDay.
inline FilePoint PointOf(const FILETIME& time)
{
    const auto ticks = static_cast<int64_t>(static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
    return FirstFileDay + FileTicks(ticks);
}

/// REQUIRES: `point` is not before FirstFileDay
inline FILETIME FileTimeOf(FilePoint point)
{
    const auto ticks = static_cast<uint64_t>((point - FilePoint(FirstFileDay)).count());
    FILETIME time{};
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return time;
}

} // namespace zeb::tools
