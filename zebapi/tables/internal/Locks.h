// The library's locks in the order in which they are taken (docs/impl.md).
#pragma once

#include "framework/Sync.h"
#include "platform/lockorder.h"

namespace zeb
{

namespace lockorder
{

using platform::LockRank;

struct Start : LockRank<10>
{
    static constexpr const char* Name = "start of MAPI";
};
struct Api : LockRank<20>
{
    static constexpr const char* Name = "CZebAPI";
};
struct Window : LockRank<30>
{
    static constexpr const char* Name = "window of a cached table";
};
struct Registering : LockRank<40>
{
    static constexpr const char* Name = "registration of sinks";
};
struct Deliveries : LockRank<50>
{
    static constexpr const char* Name = "deliveries";
};
struct Numbers : LockRank<60>
{
    static constexpr const char* Name = "numbers of tables";
};

template <class Order>
using MutexOf = platform::Ordered<std::mutex, Order>;

} // namespace lockorder

/// Holds a critical section of a public class, which has no rank in its type, for a scope.
template <class Order>
class OrderedLock
{
public:
    explicit OrderedLock(CCriticalSection& section)
        : m_order(&section)
        , m_lock(&section, true)
    {
    }

private:
    const platform::OrderedScope<Order> m_order;
    const CSingleLock m_lock;
};

} // namespace zeb
