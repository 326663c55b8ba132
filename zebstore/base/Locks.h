// The provider's locks in the order in which they are taken (docs/impl.md).
#pragma once

#include "platform/lockorder.h"

namespace zebstore
{

namespace lockorder
{

using zeb::platform::LockRank;

struct Life : LockRank<10>
{
    static constexpr const char* Name = "MAPIInitialize";
};
struct Session : LockRank<20>
{
    static constexpr const char* Name = "session";
};
struct Object : LockRank<30, true>
{
    static constexpr const char* Name = "object";
};
struct Table : LockRank<40>
{
    static constexpr const char* Name = "table or its sinks";
};
struct Store : LockRank<50>
{
    static constexpr const char* Name = "store file";
};
struct Rows : LockRank<60>
{
    static constexpr const char* Name = "rows in memory";
};
struct Notifier : LockRank<70>
{
    static constexpr const char* Name = "notifier";
};
struct Connection : LockRank<80>
{
    static constexpr const char* Name = "advise connection";
};
struct Keys : LockRank<90>
{
    static constexpr const char* Name = "search keys";
};
struct Watch : LockRank<91>
{
    static constexpr const char* Name = "watch of the calls";
};
struct Errors : LockRank<92>
{
    static constexpr const char* Name = "error texts";
};

} // namespace lockorder

/// Serializes the use of a store file; recursive.
using StoreLock = zeb::platform::Ordered<std::recursive_mutex, lockorder::Store>;
/// Of an object with properties; recursive. They nest: an attachment holds its own while it takes its message's.
using ObjectLock = zeb::platform::Ordered<std::recursive_mutex, lockorder::Object>;
template <class Order>
using MutexOf = zeb::platform::Ordered<std::mutex, Order>;
using zeb::platform::Condition;

} // namespace zebstore
