// The log's lines, handed to a host.
#include "zebapi/LogSink.h"

#include "qorlog/QorLog.h"
#include "zebapi/Exception.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

namespace
{

struct Received
{
    std::vector<std::string> lines;
    bool resets = false;
};

void Keep(void* context, int level, const char* component, const char* text)
{
    auto& received = *static_cast<Received*>(context);
    received.lines.push_back(std::to_string(level) + " " + component + " " + text);
    if (received.resets)
    {
        Zeb_SetLogSink(nullptr, nullptr);
    }
}

class LogSink : public ::testing::Test
{
protected:
    ~LogSink() override { Zeb_SetLogSink(nullptr, nullptr); }
    Received m_received;
};

} // namespace

TEST_F(LogSink, ReceivesEveryLineUnchanged)
{
    Zeb_SetLogSink(&Keep, &m_received);
    Log("ZebAPI", "100% of it");
    LLog(3, "ZebAPI", "progress");
    Zeb_GetResultDescription(S_OK);
    try
    {
        CZebException::Throw(MAPI_E_NOT_FOUND);
    }
    catch (CZebException* exception)
    {
        exception->Delete();
    }
    ASSERT_EQ(m_received.lines.size(), 3u);
    EXPECT_EQ(m_received.lines[0], "-1 ZebAPI 100% of it");
    EXPECT_EQ(m_received.lines[1], "3 ZebAPI progress");
    EXPECT_EQ(m_received.lines[2].find("1 ZebAPI THROW Exception 0x8004010f (MAPI_E_NOT_FOUND), File "), 0u)
        << m_received.lines[2];
}

TEST_F(LogSink, ReceivesNothingAfterItsRemoval)
{
    Zeb_SetLogSink(&Keep, &m_received);
    Received other;
    Zeb_SetLogSink(&Keep, &other);
    Log("ZebAPI", "to the other");
    Zeb_SetLogSink(nullptr, &other);
    Log("ZebAPI", "to nobody");
    EXPECT_EQ(m_received.lines.size(), 0u);
    EXPECT_EQ(other.lines.size(), 1u);
}

TEST_F(LogSink, MayTakeItselfBack)
{
    m_received.resets = true;
    Zeb_SetLogSink(&Keep, &m_received);
    Log("ZebAPI", "once");
    Log("ZebAPI", "twice");
    EXPECT_EQ(m_received.lines.size(), 1u);
}

TEST_F(LogSink, IsNotCalledDuringItsRemoval)
{
    struct Slow
    {
        std::atomic<bool> isInside{false};
        std::atomic<bool> hasEnded{false};
    } slow;
    Zeb_SetLogSink([](void* context, int, const char*, const char*)
    {
        auto& state = *static_cast<Slow*>(context);
        state.isInside = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        state.hasEnded = true;
    }, &slow);
    std::thread logging([] { Log("ZebAPI", "a line"); });
    while (!slow.isInside)
    {
        std::this_thread::yield();
    }
    Zeb_SetLogSink(nullptr, nullptr);
    EXPECT_TRUE(slow.hasEnded);
    logging.join();
}
