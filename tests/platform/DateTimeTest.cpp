#include "platform/datetime.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>

using namespace zeb::platform;

namespace
{

constexpr uint64_t Second = 10'000'000;
constexpr uint64_t Year2026 = 134'397'489'710'000'000;   // 2026-11-21 15:36:11
constexpr uint64_t Year9999 = 2'650'282'848'000'000'000; // 9999-06-01

FILETIME FileTime(uint64_t ticks)
{
    FILETIME time = {};
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return time;
}

TEST(DateTime, FractionsOfASecondAreHidden)
{
    const auto text = LocalDateText(FileTime(Year2026));
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(LocalDateText(FileTime(Year2026 + Second - 1)), text);
    EXPECT_NE(LocalDateText(FileTime(Year2026 + Second)), text);
}

TEST(DateTime, TheYear10000HasNoText)
{
    EXPECT_TRUE(LocalDateText(FileTime(Year9999)).has_value());
    EXPECT_FALSE(LocalDateText(FileTime(Year9999 + 365 * 86400 * Second)).has_value());
    EXPECT_FALSE(LocalDateText(FileTime(INT64_MAX)).has_value());
    EXPECT_FALSE(LocalDateText(FileTime(UINT64_MAX)).has_value());
    EXPECT_FALSE(LocalDateText(FileTime(uint64_t{1} << 63)).has_value());
}

TEST(DateTime, NowIsTheSystemsClock)
{
    const FILETIME time = CurrentFileTime();
    const uint64_t ticks = uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    const auto unixSeconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_NEAR(static_cast<double>(ticks / Second) - 11'644'473'600.0, static_cast<double>(unixSeconds), 5.0);
}

} // namespace
