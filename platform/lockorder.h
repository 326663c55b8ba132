// Locks with a place in an order, which builds for debugging check (docs/impl.md).
#pragma once

#include <condition_variable>
#include <mutex>
#include <type_traits>

namespace zeb::platform
{

/// The base of a kind of lock, which adds a Name.
/// @tparam RankOf rises from the outermost lock to the innermost
/// @tparam NestsOf whether a thread may hold several of this kind, in an order in which it always takes them
template <int RankOf, bool NestsOf = false>
struct LockRank
{
    static constexpr int Rank = RankOf;
    static constexpr bool Nests = NestsOf;
};

#ifdef ZEB_CHECK_LOCKS

struct LockKind
{
    int rank;
    const char* name;
    bool nests;
    bool recursive;
};

template <class Order, bool Recursive>
inline constexpr LockKind KindOf{Order::Rank, Order::Name, Order::Nests, Recursive};

/// Before this thread waits for a lock: ends the process, with the names of both locks on the standard error output, when the
/// thread holds a lock of the same or a higher rank. It may hold this lock if that is recursive, and others of this kind if they
/// nest and were not locked the other way round before.
void LockIsTaken(const void* lock, const LockKind& kind) noexcept;
/// After this thread has got a lock without waiting.
void LockIsTried(const void* lock, const LockKind& kind) noexcept;
void LockIsReleased(const void* lock) noexcept;
/// Forgets the order in which a lock that nests was taken.
void LockIsGone(const void* lock) noexcept;

// Methods are named as those of the standard library, whose templates use them.
// NOLINTBEGIN(readability-identifier-naming)

/// A mutex that knows its place. Threads: any.
/// @tparam Order is derived from LockRank
template <class Mutex, class Order>
class OrderedMutex
{
public:
    OrderedMutex() = default;
    ~OrderedMutex()
    {
        if constexpr (Order::Nests)
        {
            LockIsGone(this);
        }
    }
    OrderedMutex(const OrderedMutex&) = delete;
    OrderedMutex& operator=(const OrderedMutex&) = delete;

    void lock()
    {
        LockIsTaken(this, Kind);
        m_mutex.lock();
    }
    /// Waits for nothing, so it may come in any order.
    bool try_lock()
    {
        const bool locked = m_mutex.try_lock();
        if (locked)
        {
            LockIsTried(this, Kind);
        }
        return locked;
    }
    void unlock()
    {
        m_mutex.unlock();
        LockIsReleased(this);
    }

private:
    friend class CheckedCondition;

    static constexpr const LockKind& Kind = KindOf<Order, std::is_same_v<Mutex, std::recursive_mutex>>;
    Mutex m_mutex;
};

/// std::condition_variable over an ordered mutex. It has no memory of its own, as std::condition_variable_any does.
class CheckedCondition
{
public:
    void notify_all() noexcept { m_condition.notify_all(); }
    template <class Order, class Test>
    void wait(std::unique_lock<OrderedMutex<std::mutex, Order>>& hold, Test test)
    {
        While(hold, [&](std::unique_lock<std::mutex>& inner) { m_condition.wait(inner, test); });
    }
    template <class Order, class Duration, class Test>
    bool wait_for(std::unique_lock<OrderedMutex<std::mutex, Order>>& hold, const Duration& most, Test test)
    {
        bool passed = false;
        While(hold, [&](std::unique_lock<std::mutex>& inner) { passed = m_condition.wait_for(inner, most, test); });
        return passed;
    }

private:
    /// The lock counts as held meanwhile: a thread that waits takes no other.
    template <class Order, class Body>
    static void While(std::unique_lock<OrderedMutex<std::mutex, Order>>& hold, Body body)
    {
        std::unique_lock<std::mutex> inner(hold.mutex()->m_mutex, std::adopt_lock);
        body(inner);
        inner.release();
    }

    std::condition_variable m_condition;
};

// NOLINTEND(readability-identifier-naming)

/// The place of a recursive lock of another type, while that is held: constructed before it is locked.
template <class Order>
class OrderedScope
{
public:
    explicit OrderedScope(const void* lock)
        : m_lock(lock)
    {
        LockIsTaken(lock, KindOf<Order, true>);
    }
    ~OrderedScope() { LockIsReleased(m_lock); }
    OrderedScope(const OrderedScope&) = delete;
    OrderedScope& operator=(const OrderedScope&) = delete;

private:
    const void* m_lock;
};

template <class Mutex, class Order>
using Ordered = OrderedMutex<Mutex, Order>;
/// To wait on with a lock on an ordered mutex.
using Condition = CheckedCondition;

#else

template <class Mutex, class Order>
using Ordered = Mutex;
using Condition = std::condition_variable;

template <class Order>
class OrderedScope
{
public:
    explicit OrderedScope(const void*) {}
};

#endif

} // namespace zeb::platform
