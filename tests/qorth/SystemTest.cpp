#include "qorth/System.h"
#include "qorth/Text.h"
#include "qorth/TimeProfile.h"

#include <gtest/gtest.h>

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

TEST(System, IsNtAndLaterThanVista)
{
    EXPECT_TRUE(QorIsNTRunning());
    EXPECT_TRUE(QorIsWinVistaorHigher());
}

TEST(System, TheFilePathLosesItsSeparator)
{
    EXPECT_EQ(QorGetFilePath("C:\\Program Files\\Mail\\mapi32.dll"), "C:\\Program Files\\Mail");
    EXPECT_EQ(QorGetFilePath("/usr/lib/libx.so"), "/usr/lib");
    EXPECT_EQ(QorGetFilePath("C:\\mapi32.dll"), "C:");
    EXPECT_EQ(QorGetFilePath("mapi32.dll"), "");
    EXPECT_EQ(QorGetFilePath(""), "");
    EXPECT_EQ(QorGetFilePath(nullptr), "");
    EXPECT_EQ(QorGetFilePath("C:\\folder\\"), "C:\\folder");
}

TEST(System, TheLastSlashIsOneBackslash)
{
    EXPECT_EQ(QorCheckLastSlash("C:\\Mail"), "C:\\Mail\\");
    EXPECT_EQ(QorCheckLastSlash("C:\\Mail\\"), "C:\\Mail\\");
    EXPECT_EQ(QorCheckLastSlash("C:\\Mail\\\\"), "C:\\Mail\\");
    EXPECT_EQ(QorCheckLastSlash("/usr/lib/"), "/usr/lib\\");
    EXPECT_EQ(QorCheckLastSlash("/"), "\\");
}

TEST(System, AnEmptyPathStaysEmpty)
{
    EXPECT_EQ(QorCheckLastSlash(""), "");
    EXPECT_EQ(QorCheckLastSlash(nullptr), "");
}

TEST(AnsiTable, ConvertsBothWays)
{
    EXPECT_EQ(QorConvertStringByANSITable(ZEBW("Subject")), "Subject");
    EXPECT_EQ(QorConvertStringByANSITable("Subject"), ZEBW("Subject"));
    EXPECT_EQ(QorConvertStringByANSITable(ZEBW("Subject"), 3), "Sub");
    EXPECT_EQ(QorConvertStringByANSITable("Subject", 3), ZEBW("Sub"));
}

TEST(AnsiTable, NullAndEmptyTextAreEmpty)
{
    EXPECT_EQ(QorConvertStringByANSITable(static_cast<const char*>(nullptr)), ZEBW(""));
    EXPECT_EQ(QorConvertStringByANSITable(static_cast<const WCHAR*>(nullptr)), "");
    EXPECT_EQ(QorConvertStringByANSITable(""), ZEBW(""));
    EXPECT_EQ(QorConvertStringByANSITable(ZEBW("")), "");
}

TEST(AnsiTable, UnconvertibleTextLosesNothingAfterIt)
{
    const WCHAR text[] = {'a', 0xD83D, 'z', 0};
    const CStringA narrow = QorConvertStringByANSITable(text);
    EXPECT_EQ(narrow.Left(1), "a");
    EXPECT_EQ(narrow.Right(1), "z");
}

TEST(TimeProfile, ReportsNameAndSeconds)
{
    std::vector<std::pair<std::string, double>> reports;
    CTimeProfile::SetReporter([&](const char* name, double seconds) { reports.emplace_back(name, seconds); });
    {
        const CTimeProfile profile("work");
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        EXPECT_GE(profile.Elapsed(), 0.015);
        EXPECT_TRUE(reports.empty());
    }
    CTimeProfile::SetReporter({});
    {
        const CTimeProfile silent("silent");
    }
    ASSERT_EQ(reports.size(), 1u);
    EXPECT_EQ(reports[0].first, "work");
    EXPECT_GE(reports[0].second, 0.015);
    EXPECT_LT(reports[0].second, 60.0);
}

TEST(TimeProfile, AThrowingReporterIsNoFailure)
{
    CTimeProfile::SetReporter([](const char*, double) { throw std::runtime_error("x"); });
    EXPECT_NO_THROW({ const CTimeProfile profile("work"); });
    CTimeProfile::SetReporter({});
}

} // namespace
