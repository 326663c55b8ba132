// Locks with a place in an order, which builds for debugging check.
#pragma once

#include <condition_variable>
#include <mutex>

namespace zeb::platform
{

#ifdef ZEB_CHECK_LOCKS

/// Before this thread waits for a lock: ends the process, with the names of both locks on the standard error output,
/// when the thread holds a lock of a higher rank, or one of the same rank that was locked after this one before. A lock
/// that the thread holds already may be locked again.
void LockIsTaken(const void* lock, int rank, const char* name) noexcept;
/// After this thread has got a lock without waiting.
void LockIsTried(const void* lock, int rank, const char* name) noexcept;
void LockIsReleased(const void* lock) noexcept;
/// Forgets in which order the lock was taken.
void LockIsGone(const void* lock) noexcept;

// Methods are named as those of the standard library, whose templates use them.
// NOLINTBEGIN(readability-identifier-naming)

/// A mutex that knows its place. Threads: any.
/// @tparam Order has Rank, a number that rises from the outermost lock to the innermost, and Name
template <class Mutex, class Order>
class OrderedMutex
{
public:
    OrderedMutex() = default;
    ~OrderedMutex() { LockIsGone(this); }
    OrderedMutex(const OrderedMutex&) = delete;
    OrderedMutex& operator=(const OrderedMutex&) = delete;

    void lock()
    {
        LockIsTaken(this, Order::Rank, Order::Name);
        m_mutex.lock();
    }
    /// Waits for nothing, so it may come in any order.
    bool try_lock()
    {
        const bool locked = m_mutex.try_lock();
        if (locked)
        {
            LockIsTried(this, Order::Rank, Order::Name);
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

template <class Mutex, class Order>
using Ordered = OrderedMutex<Mutex, Order>;
/// To wait on with a lock on an ordered mutex.
using Condition = CheckedCondition;

#else

template <class Mutex, class Order>
using Ordered = Mutex;
using Condition = std::condition_variable;

#endif

} // namespace zeb::platform
