#include "tools/common/Progress.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

namespace
{

using zeb::tools::Progress;

/// What three steps print, with a pause before the last two.
std::string Printed(bool quiet, std::chrono::seconds interval)
{
    testing::internal::CaptureStderr();
    {
        Progress progress("messages", 4, quiet, interval);
        progress.Step(1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1050));
        progress.Step(2);
        progress.Step(3);
    }
    return testing::internal::GetCapturedStderr();
}

TEST(Progress, OneLineForEachInterval)
{
    EXPECT_EQ(Printed(false, std::chrono::seconds(1)), "2 messages, 1/s, 50 %, 0:01 left\n");
}

TEST(Progress, NothingWithoutAnInterval)
{
    EXPECT_EQ(Printed(false, std::chrono::seconds(0)), "");
}

TEST(Progress, NothingWhenQuiet)
{
    EXPECT_EQ(Printed(true, std::chrono::seconds(1)), "");
}

} // namespace
