#include "zebapi/AdviseSink.h"

#include "zebapi/Exception.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

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

/// The threads that are inside a sink's delegate. The lock is held for bookkeeping only, never while a delegate runs: a
/// provider may deliver with a lock of its own held, and a delegate may call the provider.
class CAdviseSink::Deliveries
{
public:
    /// The delegate to call, counted in; null when there is none.
    CAdviseSinkDelegate* Enter(CAdviseSinkDelegate* const& delegate)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (delegate != nullptr)
        {
            m_inside.push_back(std::this_thread::get_id());
        }
        return delegate;
    }
    void Leave()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_inside.erase(std::find(m_inside.begin(), m_inside.end(), std::this_thread::get_id()));
        m_left.notify_all();
    }
    void Cut(CAdviseSinkDelegate*& delegate)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        delegate = nullptr;
        const std::thread::id own = std::this_thread::get_id();
        m_left.wait(lock, [&] { return std::count(m_inside.begin(), m_inside.end(), own) == Inside(); });
    }

private:
    std::ptrdiff_t Inside() const { return static_cast<std::ptrdiff_t>(m_inside.size()); }

    std::mutex m_mutex;
    std::condition_variable m_left;
    std::vector<std::thread::id> m_inside;
};

CAdviseSink::CAdviseSink(CAdviseSinkDelegate* delegate)
    : m_delegate(delegate)
    , m_deliveries(std::make_unique<Deliveries>())
{
}

CAdviseSink::CAdviseSink(const CAdviseSink& other)
    : m_references(other.m_references.load())
    , m_delegate(other.m_delegate)
    , m_deliveries(std::make_unique<Deliveries>())
{
}

CAdviseSink& CAdviseSink::operator=(const CAdviseSink& other)
{
    m_references = other.m_references.load();
    m_delegate = other.m_delegate;
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
    CAdviseSinkDelegate* delegate = nullptr;
    zeb::Guarded(__FILE__, __LINE__, [&] { delegate = m_deliveries->Enter(m_delegate); });
    if (delegate != nullptr)
    {
        zeb::Guarded(__FILE__, __LINE__, [&] { delegate->OnTable_Modified(notification); });
        m_deliveries->Leave();
    }
}

void CAdviseSink::Cut()
{
    m_deliveries->Cut(m_delegate);
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
        zeb::Guarded(__FILE__, __LINE__, [&] { m_sink->Cut(); });
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
}
