#include "qorlog/QorLog.h"

#include "tests/support/Environment.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace
{

struct Line
{
    int level;
    std::string component;
    std::string text;
};

class QorLog : public ::testing::Test
{
protected:
    QorLog()
    {
        qorlog::SetSink([this](int level, const char* component, const char* text)
        { m_lines.push_back({level, component, text}); });
    }
    ~QorLog() override
    {
        zeb::test::SetEnvironment("ZEBAPI_LOG", std::nullopt);
        zeb::test::SetEnvironment("ZEBAPI_LOG_LEVEL", std::nullopt);
        qorlog::SetSink({});
        std::filesystem::remove("qorlog_test.log");
    }

    /// The output of the default sink to a file while `action` runs.
    static std::vector<std::string> FileLines(void (*action)(), const char* level = "")
    {
        zeb::test::SetEnvironment("ZEBAPI_LOG", "qorlog_test.log");
        zeb::test::SetEnvironment("ZEBAPI_LOG_LEVEL", level);
        qorlog::SetSink({});
        action();
        zeb::test::SetEnvironment("ZEBAPI_LOG", std::nullopt);
        qorlog::SetSink({});
        std::ifstream file("qorlog_test.log");
        std::vector<std::string> lines;
        for (std::string line; std::getline(file, line);)
        {
            lines.push_back(line);
        }
        return lines;
    }

    std::vector<Line> m_lines;
};

TEST_F(QorLog, ASinkReceivesEveryPart)
{
    LLog(1, "ZebAPI", "THROW Exception 0x%08x (%s), line %d", 0x8004010F, "MAPI_E_NOT_FOUND", 12);
    Log("ZebAPI", "Checking '%s'", "MAPI32.DLL");
    ASSERT_EQ(m_lines.size(), 2u);
    EXPECT_EQ(m_lines[0].level, 1);
    EXPECT_EQ(m_lines[0].component, "ZebAPI");
    EXPECT_EQ(m_lines[0].text, "THROW Exception 0x8004010f (MAPI_E_NOT_FOUND), line 12");
    EXPECT_EQ(m_lines[1].level, qorlog::NoLevel);
    EXPECT_EQ(m_lines[1].text, "Checking 'MAPI32.DLL'");
}

TEST_F(QorLog, TextWithoutArgumentsIsNoFormat)
{
    LLog(3, "ZebAPI", "100%s %n %d");
    Log("ZebAPI", "%%");
    ASSERT_EQ(m_lines.size(), 2u);
    EXPECT_EQ(m_lines[0].text, "100%s %n %d");
    EXPECT_EQ(m_lines[1].text, "%%");
}

TEST_F(QorLog, PercentSignsInArgumentsAreText)
{
    LLog(3, "ZebAPI", "%s", "%s%n");
    EXPECT_EQ(m_lines.at(0).text, "%s%n");
}

TEST_F(QorLog, NullTextsAreEmpty)
{
    LLog(1, nullptr, nullptr);
    EXPECT_EQ(m_lines.at(0).component, "");
    EXPECT_EQ(m_lines.at(0).text, "");
}

TEST_F(QorLog, LongLinesAreWhole)
{
    const std::string word(100'000, 'x');
    LLog(1, "ZebAPI", "<%s>", word.c_str());
    EXPECT_EQ(m_lines.at(0).text, "<" + word + ">");
}

TEST_F(QorLog, ASinkReceivesEveryLevel)
{
    LLog(99, "ZebAPI", "x");
    EXPECT_EQ(m_lines.size(), 1u);
    EXPECT_TRUE(qorlog::IsEnabled(99));
}

TEST_F(QorLog, ASinkMayReplaceItself)
{
    int calls = 0;
    qorlog::SetSink([&](int, const char*, const char* text)
    {
        if (++calls == 1)
        {
            LLog(1, "inner", "%s", text);
            qorlog::SetSink({});
        }
    });
    LLog(1, "outer", "x");
    LLog(1, "outer", "y");
    EXPECT_EQ(calls, 2);
}

TEST_F(QorLog, AThrowingSinkLeavesItUsable)
{
    qorlog::SetSink([](int, const char*, const char*) { throw std::runtime_error("x"); });
    EXPECT_THROW(LLog(1, "a", "b"), std::runtime_error);
    std::thread([] { EXPECT_THROW(LLog(1, "a", "b"), std::runtime_error); }).join();
}

TEST_F(QorLog, SinkCallsDoNotOverlap)
{
    const auto write = []
    {
        for (int i = 0; i < 1000; ++i)
        {
            LLog(3, "ZebAPI", "line %d", i);
        }
    };
    std::thread other(write);
    write();
    other.join();
    EXPECT_EQ(m_lines.size(), 2000u);
}

TEST_F(QorLog, ByDefaultLinesGoNowhere)
{
    zeb::test::SetEnvironment("ZEBAPI_LOG", std::nullopt);
    qorlog::SetSink({});
    EXPECT_FALSE(qorlog::IsEnabled(0));
    EXPECT_FALSE(qorlog::IsEnabled(qorlog::NoLevel));
    LLog(1, "ZebAPI", "nobody reads this");
    EXPECT_TRUE(m_lines.empty());
}

TEST_F(QorLog, AppendsToTheEnvironmentsFile)
{
    const auto write = []
    {
        LLog(1, "ZebAPI", "an error");
        Log("ZebAPI", "a line of no level");
    };
    FileLines(write);
    const std::vector<std::string> lines = FileLines(write);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].substr(24), " 1 ZebAPI: an error") << lines[0];
    EXPECT_EQ(lines[3].substr(24), " - ZebAPI: a line of no level");
    EXPECT_EQ(lines[0][10], 'T');
    EXPECT_EQ(lines[0][23], 'Z');
}

TEST_F(QorLog, ThreeIsTheHighestDefaultLevel)
{
    const auto write = []
    {
        for (int level = 0; level <= 5; ++level)
        {
            LLog(level, "ZebAPI", "level %d", level);
        }
        Log("ZebAPI", "none");
    };
    EXPECT_EQ(FileLines(write).size(), 5u);
    std::filesystem::remove("qorlog_test.log");
    EXPECT_EQ(FileLines(write, "2").size(), 4u);
    std::filesystem::remove("qorlog_test.log");
    EXPECT_EQ(FileLines(write, "1").size(), 2u) << "a line without a level is no failure";
}

TEST_F(QorLog, ANoteIsNoFailure)
{
    LNote(1, "ZebAPI", "started, 100%s");
    ASSERT_EQ(m_lines.size(), 1u);
    EXPECT_EQ(m_lines[0].level, 1);
    EXPECT_EQ(m_lines[0].text, "started, 100%s");
    const auto write = []
    {
        LNote(1, "ZebAPI", "started");
        LLog(1, "ZebAPI", "failed");
    };
    std::vector<std::string> lines = FileLines(write, "1");
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].substr(24), " 1 ZebAPI: failed");
    std::filesystem::remove("qorlog_test.log");
    lines = FileLines(write, "2");
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].substr(24), " 1 ZebAPI: started");
}

TEST_F(QorLog, TheHostsTimeIsNotOverwritten)
{
    const std::time_t epoch = 0;
    const std::tm* own = std::gmtime(&epoch);
    ASSERT_EQ(own->tm_year, 70);
    EXPECT_EQ(FileLines([] { LLog(1, "ZebAPI", "x"); }).size(), 1u);
    EXPECT_EQ(own->tm_year, 70);
    EXPECT_EQ(own->tm_sec, 0);
}

TEST_F(QorLog, LinesHaveUtcTimes)
{
    const auto now = [] { return std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()); };
    const std::time_t before = now();
    const std::vector<std::string> lines = FileLines([] { LLog(1, "ZebAPI", "x"); });
    const std::time_t after = now();
    ASSERT_EQ(lines.size(), 1u);
    std::vector<std::string> possible;
    for (std::time_t second = before; second <= after; ++second)
    {
        char text[32] = {};
        std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", std::gmtime(&second));
        possible.emplace_back(text);
    }
    EXPECT_NE(std::find(possible.begin(), possible.end(), lines[0].substr(0, 19)), possible.end()) << lines[0];
}

TEST(UtcText, FollowsTheCalendarIncludingLeapDays)
{
    EXPECT_EQ(qorlog::UtcText(0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(qorlog::UtcText(951'782'399'999), "2000-02-28T23:59:59.999Z");
    EXPECT_EQ(qorlog::UtcText(951'782'400'007), "2000-02-29T00:00:00.007Z");
    EXPECT_EQ(qorlog::UtcText(4'107'542'400'000), "2100-03-01T00:00:00.000Z");
    EXPECT_EQ(qorlog::UtcText(1'767'225'599'120), "2025-12-31T23:59:59.120Z");
}

TEST_F(QorLog, AWordNamesStandardError)
{
    ::testing::internal::CaptureStderr();
    zeb::test::SetEnvironment("ZEBAPI_LOG", "stderr");
    qorlog::SetSink({});
    LLog(1, "ZebAPI", "here");
    const std::string text = ::testing::internal::GetCapturedStderr();
    EXPECT_NE(text.find(" 1 ZebAPI: here\n"), std::string::npos) << text;
}

TEST_F(QorLog, AnUnopenableFileIsReportedOnce)
{
    ::testing::internal::CaptureStderr();
    zeb::test::SetEnvironment("ZEBAPI_LOG", "no/such/folder/x.log");
    qorlog::SetSink({});
    LLog(1, "ZebAPI", "a");
    LLog(1, "ZebAPI", "b");
    EXPECT_EQ(::testing::internal::GetCapturedStderr(),
              "ZEBAPI_LOG: cannot open 'no/such/folder/x.log': No such file or directory\n");
    EXPECT_FALSE(qorlog::IsEnabled(1));
}

} // namespace
