#include "zebapi/tables/AdviseSink.h"

#include "zebapi/frame/Exception.h"
#include "zebapi/tables/internal/Deliveries.h"
#include "zebapi/tables/internal/Locks.h"

#include <utility>

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

/// A registration under way, from before the provider knows the sink until its connection is stored. It lies on the
/// stack of CAdviseSinkBinder::Register.
struct Attempt
{
    const CAdviseSink* sink;
    /// The sink was unadvised meanwhile, and the binder may have been destroyed.
    bool abandoned;
    Attempt* next;
};

// A notification may arrive, and unadvise, before the provider's Advise returns: a binder's sink and connection change
// together, and only under this lock. It is never held across a call.
zeb::lockorder::MutexOf<zeb::lockorder::Registering> g_registering;
Attempt* g_attempts = nullptr;

/// REQUIRES: the lock.
void Begin(Attempt& attempt)
{
    attempt.next = g_attempts;
    g_attempts = &attempt;
}

/// REQUIRES: the lock.
void End(const Attempt& attempt)
{
    Attempt** at = &g_attempts;
    while (*at != &attempt)
    {
        at = &(*at)->next;
    }
    *at = attempt.next;
}

/// Ends the attempt; unless it was abandoned, `keep` runs under the lock, for the binder is there then.
/// @return whether it was not abandoned
template <class Keep>
bool EndWith(const Attempt& attempt, Keep keep)
{
    const std::lock_guard lock(g_registering);
    End(attempt);
    if (!attempt.abandoned)
    {
        keep();
    }
    return !attempt.abandoned;
}

/// REQUIRES: the lock.
void Abandon(const CAdviseSink* sink)
{
    for (Attempt* attempt = g_attempts; attempt != nullptr; attempt = attempt->next)
    {
        attempt->abandoned = attempt->abandoned || attempt->sink == sink;
    }
}

} // namespace

CAdviseSink::CAdviseSink(CAdviseSinkDelegate* delegate)
    : m_delegate(delegate)
{
}

CAdviseSink::CAdviseSink(const CAdviseSink& other)
    : m_references(other.m_references.Load())
    , m_delegate(zeb::Deliveries().Read(other.m_delegate))
{
}

CAdviseSink& CAdviseSink::operator=(const CAdviseSink& other)
{
    m_references = other.m_references.Load();
    zeb::Deliveries().Write(m_delegate, zeb::Deliveries().Read(other.m_delegate));
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
    zeb::Delivery delivery;
    if (CAdviseSinkDelegate* delegate = zeb::Deliveries().Enter(delivery, this, m_delegate))
    {
        zeb::Guarded([&] { delegate->OnTable_Modified(notification); });
        zeb::Deliveries().Leave(delivery);
    }
}

void CAdviseSink::Cut()
{
    zeb::Deliveries().Write(m_delegate, nullptr);
    zeb::Deliveries().AwaitSink(this);
}

void CAdviseSink::AwaitDeliveries(const CAdviseSinkDelegate* delegate)
{
    zeb::Deliveries().AwaitDelegate(delegate);
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
    // The delegate may have unadvised inside a notification that is still running on another thread.
    CAdviseSink::AwaitDeliveries(m_delegate);
}

void CAdviseSinkBinder::Advise(CZebTable& table)
{
    zeb::Guarded([&] { Register(table); });
}

void CAdviseSinkBinder::AdviseChecked(CZebTable& table)
{
    zeb::framework::WithMemory([&] { Register(table); });
}

void CAdviseSinkBinder::Register(CZebTable& table)
{
    Unadvise();
    zeb::Guarded([&] { m_table = table; });
    CComPtr<CAdviseSink> sink;
    try
    {
        sink.Attach(new CAdviseSink(m_delegate));
    }
    catch (...)
    {
        m_table.Free();
        Unadvise();
        throw;
    }
    Register(sink.Get());
}

void CAdviseSinkBinder::Register(CAdviseSink* sink)
{
    // Holds a reference to the table: an early notification may destroy this binder, and with it m_table.
    CZebTable table;
    if (m_table.IsValid())
    {
        table = m_table;
    }
    Attempt attempt = {sink, false, nullptr};
    {
        const std::lock_guard lock(g_registering);
        Begin(attempt);
        sink->AddRef();
        m_sink = sink;
    }
    ULONG connection = 0;
    try
    {
        table.Advise(sink, &connection);
    }
    catch (...)
    {
        // No handler uses the binder after this.
        sink->Cut();
        if (EndWith(attempt, [] {}))
        {
            Unadvise();
        }
        throw;
    }
    if (!EndWith(attempt, [&] { m_connection = connection; }))
    {
        zeb::Guarded([&] { table.Unadvise(connection); });
    }
}

void CAdviseSinkBinder::Unadvise()
{
    CAdviseSink* sink = nullptr;
    ULONG connection = 0;
    {
        const std::lock_guard lock(g_registering);
        sink = std::exchange(m_sink, nullptr);
        connection = std::exchange(m_connection, 0);
        Abandon(sink);
    }
    if (sink == nullptr)
    {
        return;
    }
    sink->Cut();
    if (connection != 0)
    {
        zeb::Guarded([&] { m_table.Unadvise(connection); });
    }
    m_table.Free();
    zeb::Guarded([&] { sink->Release(); });
}
