// The locks of tables in the order in which they are taken (docs/impl.md).
#pragma once

#include "platform/lockorder.h"

namespace zeb::lockorder
{

struct Registering
{
    static constexpr int Rank = 10;
    static constexpr const char* Name = "registration of sinks";
};
struct Deliveries
{
    static constexpr int Rank = 20;
    static constexpr const char* Name = "deliveries";
};
struct Numbers
{
    static constexpr int Rank = 30;
    static constexpr const char* Name = "numbers of tables";
};

template <class Order>
using MutexOf = platform::Ordered<std::mutex, Order>;

} // namespace zeb::lockorder
