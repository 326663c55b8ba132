// Locks that are taken against their order end the process in builds for debugging, and are plain mutexes in others.
#include "platform/lockorder.h"

#include <gtest/gtest.h>

#include <thread>
#include <type_traits>

namespace zeb::platform
{
namespace
{

struct Outer
{
    static constexpr int Rank = 1;
    static constexpr const char* Name = "outer";
};
struct Inner
{
    static constexpr int Rank = 2;
    static constexpr const char* Name = "inner";
};

using OuterLock = Ordered<std::mutex, Outer>;
using InnerLock = Ordered<std::recursive_mutex, Inner>;

TEST(LockOrder, LocksFromTheOutermostToTheInnermost)
{
    OuterLock outer;
    InnerLock inner;
    for (int i = 0; i < 100; ++i)
    {
        const std::lock_guard first(outer);
        const std::lock_guard second(inner);
        const std::lock_guard again(inner);
    }
}

TEST(LockOrder, WaitsOnAConditionReleaseTheLock)
{
    OuterLock outer;
    Condition condition;
    bool done = false;
    std::thread other([&]
    {
        const std::lock_guard hold(outer);
        done = true;
        condition.notify_all();
    });
    std::unique_lock hold(outer);
    condition.wait(hold, [&] { return done; });
    hold.unlock();
    other.join();
    EXPECT_TRUE(done);
}

#ifdef ZEB_CHECK_LOCKS

TEST(LockOrder, AgainstTheOrderEndsTheProcess)
{
    OuterLock outer;
    InnerLock inner;
    const std::lock_guard first(inner);
    EXPECT_DEATH(outer.lock(), "lock order: \"outer\" \\(rank 1\\) is locked while \"inner\" \\(rank 2\\) is held");
}

TEST(LockOrder, OneRankBothWaysEndsTheProcess)
{
    InnerLock one;
    InnerLock other;
    {
        const std::lock_guard first(one);
        const std::lock_guard second(other);
    }
    const std::lock_guard first(other);
    EXPECT_DEATH(one.lock(), "lock order: \"inner\".* and the other way round before");
}

TEST(LockOrder, ANewLockHasNoFormerOrder)
{
    InnerLock one;
    for (int i = 0; i < 2; ++i)
    {
        InnerLock other;
        std::scoped_lock<InnerLock> first(i == 0 ? one : other);
        std::scoped_lock<InnerLock> second(i == 0 ? other : one);
    }
}

#else

TEST(LockOrder, CostsNothing)
{
    EXPECT_TRUE((std::is_same_v<OuterLock, std::mutex>));
    EXPECT_TRUE((std::is_same_v<Condition, std::condition_variable>));
}

#endif

} // namespace
} // namespace zeb::platform
