// The provider's locks in the order in which they are taken (docs/impl.md).
#pragma once

#include "platform/lockorder.h"

namespace zebstore
{

#define ZEB_LOCK_ORDER(order, rank, name)                                                                              \
    struct order                                                                                                       \
    {                                                                                                                  \
        static constexpr int Rank = rank;                                                                              \
        static constexpr const char* Name = name;                                                                      \
    }

namespace lockorder
{

ZEB_LOCK_ORDER(Life, 10, "MAPIInitialize");
ZEB_LOCK_ORDER(Session, 20, "session");
ZEB_LOCK_ORDER(Object, 30, "object");
ZEB_LOCK_ORDER(Table, 40, "table or its sinks");
ZEB_LOCK_ORDER(Store, 50, "store file");
ZEB_LOCK_ORDER(Rows, 60, "rows in memory");
ZEB_LOCK_ORDER(Notifier, 70, "notifier");
ZEB_LOCK_ORDER(Connection, 80, "advise connection");
ZEB_LOCK_ORDER(Keys, 90, "search keys");
ZEB_LOCK_ORDER(Watch, 91, "watch of the calls");
ZEB_LOCK_ORDER(Errors, 92, "error texts");

} // namespace lockorder

#undef ZEB_LOCK_ORDER

/// Serializes the use of a store file; recursive.
using StoreLock = zeb::platform::Ordered<std::recursive_mutex, lockorder::Store>;
/// Of an object with properties; recursive.
using ObjectLock = zeb::platform::Ordered<std::recursive_mutex, lockorder::Object>;
template <class Order>
using MutexOf = zeb::platform::Ordered<std::mutex, Order>;
using zeb::platform::Condition;

} // namespace zebstore
