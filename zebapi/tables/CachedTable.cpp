#include "zebapi/tables/CachedTable.h"

#include "platform/messages.h"
#include "zebapi/frame/Exception.h"
#include "zebapi/tables/internal/Deliveries.h"
#include "zebapi/tables/internal/Locks.h"

#include <climits>

namespace
{

constexpr ULONG NoRow = 0xFFFFFFFF;
constexpr ULONG BatchSize = 25;

bool ChangesRows(ULONG event)
{
    return (event >= TABLE_CHANGED && event <= TABLE_ROW_MODIFIED) || event == TABLE_RELOAD;
}

} // namespace

CZebCachedTable::CZebCachedTable(IMAPITable* table)
    : CZebTable(table)
    , m_firstRow(NoRow)
    , m_batch(BatchSize)
{
    CZebCachedTable::Bind();
}

CZebCachedTable::CZebCachedTable(const CZebTable& table)
    : CZebTable(table)
    , m_firstRow(NoRow)
    , m_batch(BatchSize)
{
}

CZebCachedTable::CZebCachedTable(const CZebCachedTable& other)
    : CZebTable(other)
    , CAdviseSinkDelegate(other)
    , m_firstRow(other.m_firstRow.Load())
    , m_batch(other.m_batch)
    , m_cache(other.m_cache)
    , m_binder(other.m_binder.Load())
    , m_window(other.m_window.Load())
{
}

CZebCachedTable& CZebCachedTable::operator=(const CZebCachedTable& other)
{
    CZebTable::operator=(other);
    m_firstRow = other.m_firstRow.Load();
    m_batch = other.m_batch;
    m_cache = other.m_cache;
    m_binder = other.m_binder.Load();
    m_window = other.m_window.Load();
    return *this;
}

CZebCachedTable::~CZebCachedTable()
{
    CZebCachedTable::Free();
}

CZebTable& CZebCachedTable::operator=(const CZebTable& table)
{
    Unbind();
    EmptyCache();
    CZebTable::operator=(table);
    Bind();
    return *this;
}

void CZebCachedTable::SortTable(SSortOrderSet* order)
{
    EmptyCache();
    CZebTable::SortTable(order);
}

void CZebCachedTable::SeekRow(ULONG origin, LONG rowCount, LONG* rowsSought)
{
    EmptyCache();
    CZebTable::SeekRow(origin, rowCount, rowsSought);
}

bool CZebCachedTable::FindRow(SRestriction* restriction, ULONG origin, ULONG flags)
{
    EmptyCache();
    return CZebTable::FindRow(restriction, origin, flags);
}

void CZebCachedTable::Restrict(SRestriction* restriction, ULONG flags)
{
    EmptyCache();
    CZebTable::Restrict(restriction, flags);
}

void CZebCachedTable::Free()
{
    Unbind();
    EmptyCache();
    zeb::Guarded([&] { m_table.Release(); });
}

void CZebCachedTable::Bind()
{
    Unbind();
    if (IsValid())
    {
        CAdviseSinkBinder* binder = nullptr;
        if (zeb::Guarded([&] { binder = new CAdviseSinkBinder(this, nullptr); }))
        {
            // Before it advises: an early notification may unbind, which destroys the binder.
            m_binder = binder;
            binder->Advise(*this);
        }
    }
}

void CZebCachedTable::BindChecked()
{
    m_table.Checked();
    Unbind();
    auto* const binder = zeb::framework::WithMemory([&] { return new CAdviseSinkBinder(this, nullptr); });
    m_binder = binder;
    try
    {
        binder->AdviseChecked(*this);
    }
    catch (...)
    {
        Unbind();
        throw;
    }
}

void CZebCachedTable::Unbind()
{
    delete m_binder.Exchange(nullptr);
    // A handler on another thread may have taken the binder and be using it.
    CAdviseSink::AwaitDeliveries(this);
}

void CZebCachedTable::EmptyCache()
{
    // In a notification the rows are kept, because the reading thread may use them; its next operation frees them.
    const bool notified = zeb::Deliveries().IsInside(this);
    {
        const zeb::OrderedLock<zeb::lockorder::Window> lock(m_lock);
        m_firstRow = NoRow;
        m_generation += notified ? 1 : 0;
    }
    if (notified)
    {
        return;
    }
    zeb::Guarded([&] { m_cache.Empty(); });
}

void CZebCachedTable::SetOwnerWindow(HWND window)
{
    m_window = window;
}

CZebRow CZebCachedTable::operator[](ULONG index)
{
    if (index >= GetRowCount())
    {
        CZebException::Throw(E_INVALIDARG);
    }
    const ULONG first = m_firstRow;
    SRowSet* const rows = m_cache.Get();
    if (first != NoRow && rows != nullptr && index - first < rows->cRows)
    {
        return CZebRow(&rows->aRow[index - first], rows);
    }
    return ReadRow(index);
}

CZebRow CZebCachedTable::ReadRow(ULONG index)
{
    const ULONG start = index > m_batch ? index - m_batch : 0;
    // SeekRow takes a LONG.
    if (start > INT_MAX)
    {
        CZebException::Throw(E_INVALIDARG);
    }
    ReadWindow(start);
    try
    {
        if (index - start < m_cache.Count())
        {
            return m_cache[index - start];
        }
    }
    catch (...)
    {
        EmptyCache();
        throw;
    }
    CZebException::Throw(MAPI_E_NOT_FOUND);
}

void CZebCachedTable::ReadWindow(ULONG start)
{
    ULONG generation = 0;
    {
        const zeb::OrderedLock<zeb::lockorder::Window> lock(m_lock);
        generation = m_generation;
    }
    try
    {
        SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(start), nullptr);
        QueryRows(&m_cache, static_cast<LONG>(m_batch * 2), nullptr, nullptr);
    }
    catch (...)
    {
        EmptyCache();
        throw;
    }
    // Rows read during a notification may have the old or the new state: they are returned once and not cached.
    const zeb::OrderedLock<zeb::lockorder::Window> lock(m_lock);
    m_firstRow = generation == m_generation ? start : NoRow;
}

void CZebCachedTable::OnTable_Modified(TABLE_NOTIFICATION* notification)
{
    if (!ChangesRows(notification->ulTableEvent))
    {
        return;
    }
    {
        const zeb::DeliveryScope scope(this);
        EmptyCache();
    }
    if (const HWND window = m_window)
    {
        zeb::platform::PostWindowMessage(window, WM_CACHED_TABLE_CHANGED, 0, 0);
    }
}
