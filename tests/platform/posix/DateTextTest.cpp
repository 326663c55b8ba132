#include "platform/datetime.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

using namespace zeb::platform;

namespace
{

constexpr uint64_t Second = 10'000'000;
constexpr uint64_t Year2026 = 134'397'489'710'000'000;     // 2026-11-21 15:36:11
constexpr uint64_t LastSecond = 2'650'467'743'990'000'000; // 9999-12-31 23:59:59

FILETIME FileTime(uint64_t ticks)
{
    FILETIME time = {};
    time.dwLowDateTime = static_cast<DWORD>(ticks);
    time.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return time;
}

class DateText : public ::testing::Test
{
protected:
    DateText()
    {
        if (const char* zone = std::getenv("TZ"))
        {
            m_before = zone;
        }
    }
    ~DateText() override { Zone(m_before); }

    static void Zone(const std::string& zone)
    {
        if (zone.empty())
        {
            unsetenv("TZ");
        }
        else
        {
            setenv("TZ", zone.c_str(), 1);
        }
        tzset();
    }

private:
    std::string m_before;
};

TEST_F(DateText, IsLocalTimeInCLocale)
{
    Zone("UTC0");
    EXPECT_EQ(LocalDateText(FileTime(Year2026)), "11/21/26 15:36:11");
    Zone("XYZ-9");
    EXPECT_EQ(LocalDateText(FileTime(Year2026)), "11/22/26 00:36:11");
}

TEST_F(DateText, TheLocalYearDecides)
{
    Zone("UTC0");
    EXPECT_EQ(LocalDateText(FileTime(LastSecond)), "12/31/99 23:59:59");
    EXPECT_FALSE(LocalDateText(FileTime(LastSecond + Second)).has_value());
    EXPECT_EQ(LocalDateText(FileTime(0)), "01/01/01 00:00:00");
    Zone("XYZ-9");
    EXPECT_FALSE(LocalDateText(FileTime(LastSecond)).has_value());
    Zone("XYZ5");
    EXPECT_TRUE(LocalDateText(FileTime(LastSecond + Second)).has_value());
    EXPECT_FALSE(LocalDateText(FileTime(0)).has_value()) << "no file time says the year 1600";
}

} // namespace
