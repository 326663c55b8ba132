#include "framework/Sync.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace
{

TEST(CriticalSection, TheHolderMayTakeItAgain)
{
    CCriticalSection section;
    section.Lock();
    section.Lock();
    std::atomic<bool> entered{false};
    std::thread other([&]
    {
        const CSingleLock lock(&section, true);
        entered = true;
    });
    section.Unlock();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    EXPECT_FALSE(entered) << "released only as often as taken";
    section.Unlock();
    other.join();
    EXPECT_TRUE(entered);
}

TEST(CriticalSection, KeepsThreadsApart)
{
    CCriticalSection section;
    int value = 0;
    const auto count = [&]
    {
        for (int i = 0; i < 10000; ++i)
        {
            const CSingleLock lock(&section, true);
            ++value;
        }
    };
    std::thread other(count);
    count();
    other.join();
    EXPECT_EQ(value, 20000);
}

TEST(SingleLock, LocksWhenAskedAndUnlocks)
{
    CCriticalSection section;
    {
        CSingleLock lock(&section);
        EXPECT_FALSE(lock.IsLocked());
        EXPECT_FALSE(lock.Unlock());
        EXPECT_TRUE(lock.Lock());
        EXPECT_TRUE(lock.Lock()) << "held already";
        EXPECT_TRUE(lock.IsLocked());
        EXPECT_TRUE(lock.Unlock());
        EXPECT_TRUE(lock.Lock());
    }
    bool taken = false;
    std::thread([&]
    {
        const CSingleLock lock(&section, true);
        taken = true;
    }).join();
    EXPECT_TRUE(taken);
}

} // namespace
