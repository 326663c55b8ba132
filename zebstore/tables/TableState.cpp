#include "zebstore/tables/TableState.h"

#include "zebstore/storage/InstanceTag.h"
#include "zebstore/storage/ValueBuilder.h"

#include <algorithm>
#include <cstring>

namespace zebstore
{

namespace
{

bool IsTextType(ULONG type)
{
    return type == PT_STRING8 || type == PT_UNICODE;
}

// Owns a row set while it is filled.
class RowSetBuffer
{
public:
    explicit RowSetBuffer(size_t rows)
        : m_set(Allocate(CbNewSRowSet(rows)))
    {
        std::memset(static_cast<void*>(m_set.Get()), 0, CbNewSRowSet(rows));
    }
    ~RowSetBuffer()
    {
        if (m_set.Get() != nullptr)
        {
            for (ULONG i = 0; i < m_set->cRows; ++i)
            {
                Free(m_set->aRow[i].lpProps);
            }
        }
    }
    RowSetBuffer(const RowSetBuffer&) = delete;
    RowSetBuffer& operator=(const RowSetBuffer&) = delete;

    void Add(SPropValue* values, size_t count)
    {
        SRow& row = m_set->aRow[m_set->cRows++];
        row.cValues = static_cast<ULONG>(count);
        row.lpProps = values;
    }
    SRowSet* Detach() { return m_set.Detach(); }

private:
    Buffer<SRowSet> m_set;
};

constexpr const char* ManyInstances = "a table shows the single values of one multi-valued property at a time";

/// The property whose instances are asked for, without a type; 0: none.
ULONG InstanceTagOf(const std::vector<ULONG>& tags)
{
    ULONG found = 0;
    for (const ULONG tag : tags)
    {
        if (!IsInstanceTag(tag))
        {
            continue;
        }
        if (found && PROP_ID(found) != PROP_ID(tag))
        {
            throw Error(MAPI_E_TOO_COMPLEX, ManyInstances);
        }
        found = PROP_TAG(PT_UNSPECIFIED, PROP_ID(tag));
    }
    return found;
}

} // namespace

// Text columns are given in the form in which the table was asked for.
std::vector<ULONG> TableState::InOwnForm(std::vector<ULONG> columns) const
{
    const ULONG form = m_options.unicode ? PT_UNICODE : PT_STRING8;
    for (ULONG& tag : columns)
    {
        const ULONG many = PROP_TYPE(tag) & MV_FLAG;
        if (IsTextType(PROP_TYPE(tag) & ~many))
        {
            tag = CHANGE_PROP_TYPE(tag, form | many);
        }
    }
    return columns;
}

void TableState::SetColumns(std::vector<ULONG> columns)
{
    ChooseInstances(InstanceTagOf(columns), m_sortInstance);
    m_columns.swap(columns);
}

void TableState::Sort(const SSortOrderSet& order)
{
    auto taken = std::make_unique<SortOrder>(order);
    std::vector<SSortOrder> keys(order.aSort, order.aSort + order.cSorts);
    std::vector<ULONG> tags;
    for (const SSortOrder& each : keys)
    {
        tags.push_back(each.ulPropTag);
    }
    ChooseInstances(m_columnInstance, InstanceTagOf(tags));
    m_view.Sort(std::move(taken));
    m_sinks.Forget();
    m_sorts.swap(keys);
}

void TableState::Restrict(const SRestriction* restriction)
{
    auto taken = restriction != nullptr ? std::make_unique<Restriction>(*restriction) : nullptr;
    m_view.Restrict(std::move(taken));
    m_sinks.Forget();
}

void TableState::ChooseInstances(ULONG column, ULONG sort)
{
    if (column && sort && column != sort)
    {
        throw Error(MAPI_E_TOO_COMPLEX, ManyInstances);
    }
    const ULONG chosen = column ? column : sort;
    m_columnInstance = column;
    m_sortInstance = sort;
    if (chosen == m_instances->Chosen())
    {
        return;
    }
    m_instances->Choose(chosen);
    m_view.Renew();
    m_sinks.Forget();
}

std::vector<ULONG> TableState::Columns()
{
    return m_columns.empty() ? InOwnForm(m_view.Rows().DefaultColumns()) : m_columns;
}

SRowSet* TableState::ReadRows(LONG count, bool advance)
{
    const std::vector<ULONG> columns = Columns();
    TakeOver();
    const TableView::Cursor before = m_view.GetCursor();
    const std::vector<RowKey> keys = m_view.Take(count, advance);
    try
    {
        return BuildRows(keys, columns);
    }
    catch (...)
    {
        // The cursor moves only when the rows can be handed out.
        m_view.SetCursor(before);
        throw;
    }
}

SRowSet* TableState::BuildRows(const std::vector<RowKey>& keys, const std::vector<ULONG>& columns)
{
    RowSetBuffer rows(keys.size());
    m_view.Rows().Read(keys.data(), keys.size(),
                       [&](size_t, const ValueSource& values) { rows.Add(BuildRow(columns, values), columns.size()); });
    return rows.Detach();
}

SPropValue* TableState::BuildRow(const std::vector<ULONG>& columns, const ValueSource& values) const
{
    BuildOptions options;
    options.unicode = m_options.unicode;
    return BuildValues(columns.data(), columns.size(), values, options);
}

TableView& TableState::Current()
{
    TakeOver();
    return m_view;
}

void TableState::TakeOver()
{
    if (m_sinks.IsEmpty())
    {
        m_view.Sync();
        return;
    }
    if (!m_view.IsBehind())
    {
        return;
    }
    // The values of the changed rows are read in the snapshot in which the changes were found.
    const std::shared_ptr<void> snapshot = m_view.Rows().Snapshot();
    const RowChanges changes = m_view.Sync();
    m_lost = true;
    Queue(changes);
    m_lost = false;
}

void TableState::Queue(const RowChanges& changes)
{
    if (changes.extent != RowChanges::Extent::Listed)
    {
        m_sinks.QueueWhole(changes.extent == RowChanges::Extent::Replaced ? TABLE_RELOAD : TABLE_CHANGED);
        return;
    }
    for (const RowChange& change : changes.rows)
    {
        if (m_sinks.IsFull())
        {
            m_sinks.QueueWhole(TABLE_CHANGED);
        }
        else
        {
            QueueRow(change);
        }
    }
}

void TableState::QueueRow(const RowChange& change)
{
    if (change.kind == RowChange::Kind::Deleted)
    {
        m_sinks.QueueRow(change, {}, 0);
        return;
    }
    const std::vector<ULONG> columns = Columns();
    m_view.Rows().Read(&change.key, 1, [&](size_t, const ValueSource& values)
    { m_sinks.QueueRow(change, Buffer<SPropValue>(BuildRow(columns, values)), static_cast<ULONG>(columns.size())); });
}

ULONG_PTR TableState::Advise(IMAPIAdviseSink* sink)
{
    const ULONG_PTR number = NextConnectionNumber();
    {
        const std::lock_guard hold(m_lock);
        m_view.Follow(true);
        TakeOver();
        m_sinks.Add(number, sink);
    }
    LookFor(shared_from_this(), number);
    return number;
}

void TableState::Unadvise(ULONG_PTR number)
{
    std::shared_ptr<Connection> connection;
    bool last = false;
    {
        const std::lock_guard hold(m_lock);
        connection = m_sinks.Remove(number);
        last = m_sinks.IsEmpty();
        if (last)
        {
            m_view.Follow(false);
        }
    }
    connection->Cut();
    if (!last)
    {
        return;
    }
    Notifier::The().Remove(this);
    std::unique_lock hold(m_lock);
    const bool again = !m_sinks.IsEmpty(); // a connection was added in the meantime
    hold.unlock();
    if (again)
    {
        Notifier::The().Add(shared_from_this());
    }
}

void TableState::Close() noexcept
{
    TableSinks::Connections connections;
    {
        const std::lock_guard hold(m_lock);
        connections = m_sinks.TakeAll();
        m_view.Follow(false);
    }
    for (const auto& each : connections)
    {
        each.second.connection->Cut();
    }
    if (!connections.empty())
    {
        Notifier::The().Remove(this);
    }
}

void TableState::LookForChanges()
{
    try
    {
        if (m_lost)
        {
            m_sinks.QueueWhole(TABLE_CHANGED);
        }
        m_lost = false;
        TakeOver();
        m_failed = false;
    }
    catch (...)
    {
        const HRESULT result = ResultOfCurrentException();
        if (!m_failed)
        {
            m_sinks.QueueWhole(TABLE_ERROR, result);
        }
        m_failed = true;
    }
}

TableSinks::Delivery TableState::TakeDelivery()
{
    const std::lock_guard hold(m_lock);
    if (m_sinks.IsEmpty())
    {
        return {};
    }
    LookForChanges();
    return m_sinks.Take();
}

bool TableState::LookAndDeliver() noexcept
{
    try
    {
        TableSinks::Delivery delivery = TakeDelivery();
        if (delivery.IsEmpty())
        {
            return false;
        }
        delivery.Run();
    }
    catch (...)
    {
        const std::lock_guard hold(m_lock);
        m_lost = true;
    }
    return true;
}

} // namespace zebstore
