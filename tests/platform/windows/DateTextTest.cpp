#include "platform/datetime.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <string>

using namespace zeb::platform;

namespace
{

TEST(DateText, IsInTheUsersForm)
{
    SYSTEMTIME local = {};
    local.wYear = 2026;
    local.wMonth = 11;
    local.wDay = 21;
    local.wHour = 15;
    local.wMinute = 36;
    local.wSecond = 11;
    local.wMilliseconds = 900;
    FILETIME localTime = {};
    FILETIME time = {};
    ASSERT_TRUE(SystemTimeToFileTime(&local, &localTime) && LocalFileTimeToFileTime(&localTime, &time));

    BSTR wanted = nullptr;
    const double midnight = 46347.0; // 2026-11-21 00:00
    ASSERT_EQ(VarBstrFromDate(midnight + (15 * 3600 + 36 * 60 + 11) / 86400.0, 0x0400, 0, &wanted), S_OK);
    const std::string text = NarrowFromWide(wanted, SysStringLen(wanted));
    SysFreeString(wanted);
    EXPECT_NE(text.find("11"), std::string::npos) << text;
    EXPECT_EQ(LocalDateText(time), text);
}

} // namespace
