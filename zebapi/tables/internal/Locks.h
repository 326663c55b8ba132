// The locks of tables in the order in which they are taken (docs/impl.md).
#pragma once

#include "platform/lockorder.h"

namespace zeb::lockorder
{

struct Registering : platform::LockRank<10>
{
    static constexpr const char* Name = "registration of sinks";
};
struct Deliveries : platform::LockRank<20>
{
    static constexpr const char* Name = "deliveries";
};
struct Numbers : platform::LockRank<30>
{
    static constexpr const char* Name = "numbers of tables";
};

template <class Order>
using MutexOf = platform::Ordered<std::mutex, Order>;

} // namespace zeb::lockorder
