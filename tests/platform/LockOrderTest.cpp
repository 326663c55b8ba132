// Locks that are taken against their order end the process in builds for debugging, and are plain mutexes in others.
#include "platform/lockorder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <thread>
#include <type_traits>

namespace zeb::platform
{
namespace
{

struct Outer : LockRank<1>
{
    static constexpr const char* Name = "outer";
};
struct Inner : LockRank<2>
{
    static constexpr const char* Name = "inner";
};
struct Nested : LockRank<3, true>
{
    static constexpr const char* Name = "nested";
};

using OuterLock = Ordered<std::mutex, Outer>;
using InnerLock = Ordered<std::recursive_mutex, Inner>;
using NestedLock = Ordered<std::recursive_mutex, Nested>;

/// Uses a lock when its thread, or the process, ends.
struct AtTheEnd
{
    ~AtTheEnd()
    {
        const std::lock_guard hold(outer);
        reached = true;
    }

    OuterLock& outer;
    bool& reached;
};

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

TEST(LockOrder, ReleasesInAnyOrder)
{
    OuterLock outer;
    InnerLock inner;
    std::unique_lock first(outer);
    std::unique_lock second(inner);
    first.unlock();
    second.unlock();
    first.lock();
}

TEST(LockOrder, TriesInAnyOrder)
{
    OuterLock outer;
    InnerLock inner;
    const std::lock_guard first(inner);
    EXPECT_TRUE(outer.try_lock());
    outer.unlock();
}

TEST(LockOrder, EachThreadHoldsItsOwn)
{
    OuterLock outer;
    InnerLock inner;
    const std::lock_guard first(inner);
    std::thread([&] { const std::lock_guard hold(outer); }).join();
    EXPECT_TRUE(outer.try_lock());
    outer.unlock();
}

TEST(LockOrder, LocksAtTheEndOfAThread)
{
    OuterLock outer;
    bool reached = false;
    std::thread([&]
    {
        thread_local const AtTheEnd end{outer, reached};
        EXPECT_FALSE(end.reached);
        const std::lock_guard hold(outer);
    }).join();
    EXPECT_TRUE(reached);
}

TEST(LockOrder, LocksAtTheEndOfTheProcess)
{
    const auto end = []
    {
        static OuterLock outer;
        static bool reached = false;
        static const AtTheEnd atEnd{outer, reached};
        std::exit(atEnd.reached ? 1 : 0);
    };
    EXPECT_EXIT(end(), testing::ExitedWithCode(0), "");
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

TEST(LockOrder, NestsOneWay)
{
    NestedLock one;
    NestedLock other;
    for (int i = 0; i < 2; ++i)
    {
        const std::lock_guard first(one);
        const std::lock_guard second(other);
    }
}

#ifdef ZEB_CHECK_LOCKS

TEST(LockOrder, AgainstTheOrderEndsTheProcess)
{
    OuterLock outer;
    InnerLock inner;
    const std::lock_guard first(inner);
    EXPECT_DEATH(outer.lock(), "lock order: \"outer\" \\(rank 1\\) is locked while \"inner\" \\(rank 2\\) is held");
}

TEST(LockOrder, AfterATryEndsTheProcess)
{
    OuterLock outer;
    InnerLock inner;
    EXPECT_TRUE(inner.try_lock());
    EXPECT_DEATH(outer.lock(), "\"outer\" .* while \"inner\"");
    inner.unlock();
}

TEST(LockOrder, TwoOfOneRankEndTheProcess)
{
    InnerLock one;
    InnerLock other;
    const std::lock_guard first(one);
    EXPECT_DEATH(other.lock(), "\"inner\" \\(rank 2\\) is locked while \"inner\" \\(rank 2\\) is held");
}

TEST(LockOrder, APlainLockTwiceEndsTheProcess)
{
    OuterLock outer;
    const std::lock_guard first(outer);
    EXPECT_DEATH(outer.lock(), "lock order: \"outer\".*: it waits for itself");
}

TEST(LockOrder, NestingBothWaysEndsTheProcess)
{
    NestedLock one;
    NestedLock other;
    {
        const std::lock_guard first(one);
        const std::lock_guard second(other);
    }
    const std::lock_guard first(other);
    EXPECT_DEATH(one.lock(), "lock order: \"nested\".* and the other way round before");
}

TEST(LockOrder, ANewLockHasNoFormerOrder)
{
    NestedLock one;
    for (int i = 0; i < 2; ++i)
    {
        NestedLock other;
        std::scoped_lock<NestedLock> first(i == 0 ? one : other);
        std::scoped_lock<NestedLock> second(i == 0 ? other : one);
    }
}

TEST(LockOrder, ASectionTakesPart)
{
    int section = 0;
    OuterLock outer;
    const OrderedScope<Inner> scope(&section);
    const OrderedScope<Inner> again(&section);
    EXPECT_DEATH(outer.lock(), "\"outer\" .* while \"inner\"");
}

#else

TEST(LockOrder, CostsNothing)
{
    EXPECT_TRUE((std::is_same_v<OuterLock, std::mutex>));
    EXPECT_TRUE((std::is_same_v<Condition, std::condition_variable>));
    EXPECT_TRUE(std::is_empty_v<OrderedScope<Outer>>);
}

#endif

} // namespace
} // namespace zeb::platform
