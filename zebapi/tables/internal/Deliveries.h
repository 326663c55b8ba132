// Internal: the active calls of delegates, of all sinks of the process.
#pragma once

#include "zebapi/tables/internal/Locks.h"

#include <thread>

class CAdviseSink;
class CAdviseSinkDelegate;

namespace zeb
{

/// An active call of a delegate; on the stack of the delivering thread.
struct Delivery
{
    const CAdviseSink* sink; ///< null for a handler that was called without a sink
    const CAdviseSinkDelegate* delegate;
    std::thread::id thread;
    unsigned long long number;
    Delivery* next;
};

/// Threads: any. The lock is held for bookkeeping only, never while a delegate runs: a provider may deliver with a lock
/// of its own held, and a delegate may call the provider.
class DeliveryList
{
public:
    /// Registers the calling thread and returns the delegate to call; null when there is none.
    CAdviseSinkDelegate* Enter(Delivery& delivery, const CAdviseSink* sink, CAdviseSinkDelegate* const& delegate);
    void Leave(const Delivery& delivery);
    /// Whether the calling thread is inside a delivery to `delegate`.
    bool IsInside(const CAdviseSinkDelegate* delegate) const;
    CAdviseSinkDelegate* Read(CAdviseSinkDelegate* const& delegate) const;
    void Write(CAdviseSinkDelegate*& delegate, CAdviseSinkDelegate* value);
    /// Waits until no other thread is in a delivery of `sink`. REQUIRES: the sink's delegate is detached.
    void AwaitSink(const CAdviseSink* sink);
    /// Waits for all deliveries to `delegate` that other threads have already entered; does not wait inside a delivery.
    void AwaitDelegate(const CAdviseSinkDelegate* delegate);

private:
    template <class Test>
    bool Any(const Test& test) const;

    mutable lockorder::MutexOf<lockorder::Deliveries> m_mutex;
    platform::Condition m_left;
    Delivery* m_first = nullptr;
    unsigned long long m_entered = 0;
};

/// The list of this process.
DeliveryList& Deliveries();

/// Counts as a delivery to `delegate` on this thread for its lifetime.
class DeliveryScope
{
public:
    explicit DeliveryScope(CAdviseSinkDelegate* delegate) { Deliveries().Enter(m_delivery, nullptr, delegate); }
    ~DeliveryScope() { Deliveries().Leave(m_delivery); }
    DeliveryScope(const DeliveryScope&) = delete;
    DeliveryScope& operator=(const DeliveryScope&) = delete;

private:
    Delivery m_delivery = {};
};

} // namespace zeb
