#include "zebapi/tables/internal/Deliveries.h"

namespace zeb
{

namespace
{

DeliveryList g_deliveries;

bool OfThisThread(const Delivery& delivery)
{
    return delivery.thread == std::this_thread::get_id();
}

} // namespace

DeliveryList& Deliveries()
{
    return g_deliveries;
}

template <class Test>
bool DeliveryList::Any(const Test& test) const
{
    for (const Delivery* delivery = m_first; delivery != nullptr; delivery = delivery->next)
    {
        if (test(*delivery))
        {
            return true;
        }
    }
    return false;
}

CAdviseSinkDelegate* DeliveryList::Enter(Delivery& delivery, const CAdviseSink* sink,
                                         CAdviseSinkDelegate* const& delegate)
{
    const std::lock_guard lock(m_mutex);
    if (delegate != nullptr)
    {
        delivery = {sink, delegate, std::this_thread::get_id(), ++m_entered, m_first};
        m_first = &delivery;
    }
    return delegate;
}

void DeliveryList::Leave(const Delivery& delivery)
{
    const std::lock_guard lock(m_mutex);
    Delivery** at = &m_first;
    while (*at != &delivery)
    {
        at = &(*at)->next;
    }
    *at = delivery.next;
    m_left.notify_all();
}

bool DeliveryList::IsInside(const CAdviseSinkDelegate* delegate) const
{
    const std::lock_guard lock(m_mutex);
    return Any([&](const Delivery& d) { return d.delegate == delegate && OfThisThread(d); });
}

CAdviseSinkDelegate* DeliveryList::Read(CAdviseSinkDelegate* const& delegate) const
{
    const std::lock_guard lock(m_mutex);
    return delegate;
}

void DeliveryList::Write(CAdviseSinkDelegate*& delegate, CAdviseSinkDelegate* value)
{
    const std::lock_guard lock(m_mutex);
    delegate = value;
}

void DeliveryList::AwaitSink(const CAdviseSink* sink)
{
    std::unique_lock lock(m_mutex);
    m_left.wait(lock, [&] { return !Any([&](const Delivery& d) { return d.sink == sink && !OfThisThread(d); }); });
}

void DeliveryList::AwaitDelegate(const CAdviseSinkDelegate* delegate)
{
    std::unique_lock lock(m_mutex);
    if (Any([&](const Delivery& d) { return d.delegate == delegate && OfThisThread(d); }))
    {
        return;
    }
    const unsigned long long last = m_entered;
    m_left.wait(lock,
                [&] { return !Any([&](const Delivery& d) { return d.delegate == delegate && d.number <= last; }); });
}

} // namespace zeb
