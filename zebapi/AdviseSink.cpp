#include "zebapi/AdviseSink.h"

#include "zebapi/Exception.h"

#include <condition_variable>
#include <mutex>
#include <thread>

CAdviseSinkDelegate::CAdviseSinkDelegate() = default;
CAdviseSinkDelegate::CAdviseSinkDelegate(const CAdviseSinkDelegate& other) = default;
CAdviseSinkDelegate& CAdviseSinkDelegate::operator=(const CAdviseSinkDelegate& other) = default;
CAdviseSinkDelegate::~CAdviseSinkDelegate() = default;

void CAdviseSinkDelegate::OnTable_Modified(TABLE_NOTIFICATION* notification)
{
    switch (notification->ulTableEvent)
    {
    case TABLE_CHANGED:
        OnTableModified_Changed();
        break;
    case TABLE_ERROR:
        OnTableModified_Error();
        break;
    case TABLE_ROW_ADDED:
        OnTableModified_Row_Added(notification);
        break;
    case TABLE_ROW_DELETED:
        OnTableModified_Row_Deleted(notification);
        break;
    case TABLE_ROW_MODIFIED:
        OnTableModified_Row_Modified(notification);
        break;
    case TABLE_RELOAD:
        OnTableModified_Reload();
        break;
    default:
        break;
    }
}

void CAdviseSinkDelegate::OnTableModified_ReloadCommon() {}

void CAdviseSinkDelegate::OnTableModified_Changed()
{
    OnTableModified_ReloadCommon();
}

void CAdviseSinkDelegate::OnTableModified_Error()
{
    OnTableModified_ReloadCommon();
}

void CAdviseSinkDelegate::OnTableModified_Reload()
{
    OnTableModified_ReloadCommon();
}

void CAdviseSinkDelegate::OnTableModified_Row_Added(TABLE_NOTIFICATION*) {}

void CAdviseSinkDelegate::OnTableModified_Row_Deleted(TABLE_NOTIFICATION*) {}

void CAdviseSinkDelegate::OnTableModified_Row_Modified(TABLE_NOTIFICATION*) {}

namespace
{

/// A call of a delegate that is under way; it stands on the stack of the thread that delivers.
struct Delivery
{
    const CAdviseSink* sink;
    const CAdviseSinkDelegate* delegate;
    std::thread::id thread;
    unsigned long long number;
    Delivery* next;
};

/// Every delivery of the process. The lock is held for bookkeeping only, never while a delegate runs: a provider may
/// deliver with a lock of its own held, and a delegate may call the provider.
class DeliveryList
{
public:
    /// Counts the calling thread in and gives the delegate to call, unless there is none.
    CAdviseSinkDelegate* Enter(Delivery& delivery, const CAdviseSink* sink,
                               CAdviseSinkDelegate* const& delegate)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (delegate != nullptr)
        {
            delivery = {sink, delegate, std::this_thread::get_id(), ++m_entered, m_first};
            m_first = &delivery;
        }
        return delegate;
    }
    void Leave(const Delivery& delivery)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        Delivery** at = &m_first;
        while (*at != &delivery)
        {
            at = &(*at)->next;
        }
        *at = delivery.next;
        m_left.notify_all();
    }
    CAdviseSinkDelegate* Read(CAdviseSinkDelegate* const& delegate)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return delegate;
    }
    void Write(CAdviseSinkDelegate*& delegate, CAdviseSinkDelegate* value)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        delegate = value;
    }
    /// Waits until no other thread is in a delivery of `sink`, which is to have lost its delegate.
    void AwaitSink(const CAdviseSink* sink)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_left.wait(lock, [&] { return !Any([&](const Delivery& d) { return d.sink == sink && !Own(d); }); });
    }
    /// Waits until no other thread is in a delivery to `delegate` that it had entered by now; not at all inside one.
    void AwaitDelegate(const CAdviseSinkDelegate* delegate)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (Any([&](const Delivery& d) { return d.delegate == delegate && Own(d); }))
        {
            return;
        }
        const unsigned long long last = m_entered;
        m_left.wait(
            lock, [&]
            { return !Any([&](const Delivery& d) { return d.delegate == delegate && d.number <= last; }); });
    }

private:
    static bool Own(const Delivery& delivery) { return delivery.thread == std::this_thread::get_id(); }
    template <class Test>
    bool Any(const Test& test) const
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

    std::mutex m_mutex;
    std::condition_variable m_left;
    Delivery* m_first = nullptr;
    unsigned long long m_entered = 0;
};

DeliveryList g_deliveries;

} // namespace

CAdviseSink::CAdviseSink(CAdviseSinkDelegate* delegate)
    : m_delegate(delegate)
{
}

CAdviseSink::CAdviseSink(const CAdviseSink& other)
    : m_references(other.m_references.load())
    , m_delegate(g_deliveries.Read(other.m_delegate))
{
}

CAdviseSink& CAdviseSink::operator=(const CAdviseSink& other)
{
    m_references = other.m_references.load();
    g_deliveries.Write(m_delegate, g_deliveries.Read(other.m_delegate));
    return *this;
}

CAdviseSink::~CAdviseSink() = default;

HRESULT STDMETHODCALLTYPE CAdviseSink::QueryInterface(REFIID riid, void** ppv)
{
    if (ppv == nullptr)
    {
        return E_POINTER;
    }
    *ppv = nullptr;
    if (riid != IID_IUnknown && riid != IID_IMAPIAdviseSink)
    {
        return E_NOINTERFACE;
    }
    *ppv = static_cast<IMAPIAdviseSink*>(this);
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CAdviseSink::AddRef()
{
    return ++m_references;
}

ULONG STDMETHODCALLTYPE CAdviseSink::Release()
{
    const ULONG left = --m_references;
    if (left < 1)
    {
        delete this;
    }
    return left;
}

ULONG STDMETHODCALLTYPE CAdviseSink::OnNotify(ULONG count, LPNOTIFICATION notifications)
{
    // The delegate may unadvise, and so release, this very sink.
    AddRef();
    for (ULONG i = 0; notifications != nullptr && i < count; ++i)
    {
        if (notifications[i].ulEventType == fnevTableModified)
        {
            Deliver(&notifications[i].info.tab);
        }
    }
    Release();
    return 0;
}

void CAdviseSink::Deliver(TABLE_NOTIFICATION* notification)
{
    Delivery delivery;
    if (CAdviseSinkDelegate* delegate = g_deliveries.Enter(delivery, this, m_delegate))
    {
        zeb::Guarded(__FILE__, __LINE__, [&] { delegate->OnTable_Modified(notification); });
        g_deliveries.Leave(delivery);
    }
}

void CAdviseSink::Cut()
{
    g_deliveries.Write(m_delegate, nullptr);
    g_deliveries.AwaitSink(this);
}

void CAdviseSink::AwaitDeliveries(const CAdviseSinkDelegate* delegate)
{
    g_deliveries.AwaitDelegate(delegate);
}

CAdviseSinkBinder::CAdviseSinkBinder(CAdviseSinkDelegate* delegate, CZebTable* table)
    : m_delegate(delegate)
{
    if (table != nullptr)
    {
        CAdviseSinkBinder::Advise(*table);
    }
}

CAdviseSinkBinder::CAdviseSinkBinder(const CAdviseSinkBinder& other) = default;
CAdviseSinkBinder& CAdviseSinkBinder::operator=(const CAdviseSinkBinder& other) = default;

CAdviseSinkBinder::~CAdviseSinkBinder()
{
    CAdviseSinkBinder::Unadvise();
}

void CAdviseSinkBinder::Advise(CZebTable& table)
{
    Unadvise();
    zeb::Guarded(__FILE__, __LINE__, [&] { m_table = table; });
    const bool advised = zeb::Guarded(__FILE__, __LINE__,
                                      [&]
                                      {
                                          m_sink = new CAdviseSink(m_delegate);
                                          m_table.Advise(m_sink, &m_connection);
                                      });
    if (!advised)
    {
        m_connection = 0;
        Unadvise();
    }
}

void CAdviseSinkBinder::Unadvise()
{
    if (m_sink != nullptr)
    {
        m_sink->Cut();
    }
    if (m_connection != 0)
    {
        zeb::Guarded(__FILE__, __LINE__, [&] { m_table.Unadvise(m_connection); });
        m_connection = 0;
    }
    m_table.Free();
    if (m_sink != nullptr)
    {
        zeb::Guarded(__FILE__, __LINE__, [&] { m_sink->Release(); });
        m_sink = nullptr;
    }
    // The delegate may have unadvised inside a notification that another thread has not come out of yet.
    CAdviseSink::AwaitDeliveries(m_delegate);
}
