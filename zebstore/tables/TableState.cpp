#include "zebstore/tables/TableState.h"

#include "zebstore/storage/ValueBuilder.h"

#include <algorithm>
#include <cstring>

namespace zebstore
{

namespace
{

// More events than these, waiting for a slow sink, become one that says that all has changed.
constexpr size_t MostWaiting = 256;

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
        if (m_set.Get())
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

void FillInstanceKey(SPropValue& value, bool has, std::string& key)
{
    value.ulPropTag = PR_NULL;
    if (!has)
    {
        return;
    }
    value.ulPropTag = PR_INSTANCE_KEY;
    value.Value.bin.cb = static_cast<ULONG>(key.size());
    value.Value.bin.lpb = reinterpret_cast<BYTE*>(&key[0]);
}

} // namespace

// Text columns in the form in which the table was asked for.
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

void TableState::SetSortTags(const std::vector<ULONG>& tags)
{
    ChooseInstances(m_columnInstance, InstanceTagOf(tags));
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
    Rearrange([&] { m_view.Renew(); });
}

std::vector<ULONG> TableState::Columns()
{
    return m_columns.empty() ? InOwnForm(m_view.Rows().DefaultColumns()) : m_columns;
}

SRowSet* TableState::ReadRows(LONG count, bool advance)
{
    const std::vector<ULONG> columns = Columns();
    const TableView::Cursor before = m_view.GetCursor();
    const std::vector<RowKey> keys = m_view.Take(count, advance);
    try
    {
        return BuildRows(keys, columns);
    }
    catch (...)
    {
        // The cursor moves only when the rows are there to be handed out.
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

ULONG_PTR TableState::Advise(IMAPIAdviseSink* sink)
{
    const ULONG_PTR number = NextConnectionNumber();
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        m_view.SetListener(this);
        m_view.Sync();
        m_connections.emplace(number, Advised{std::make_shared<Connection>(sink), m_events.size()});
    }
    LookFor(shared_from_this(), number);
    return number;
}

void TableState::Unadvise(ULONG_PTR number)
{
    std::shared_ptr<Connection> connection;
    bool last = false;
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        connection = TakeConnection(m_connections, number, "the table has no connection of this number");
        last = m_connections.empty();
        if (last)
        {
            m_view.SetListener(nullptr);
            m_events.clear();
        }
    }
    connection->Cut();
    if (!last)
    {
        return;
    }
    Notifier::The().Remove(this);
    std::unique_lock<std::mutex> hold(m_lock);
    const bool again = !m_connections.empty(); // somebody advised meanwhile
    hold.unlock();
    if (again)
    {
        Notifier::The().Add(shared_from_this());
    }
}

void TableState::Close() noexcept
{
    std::map<ULONG_PTR, Advised> connections;
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        connections.swap(m_connections);
        m_view.SetListener(nullptr);
        m_events.clear();
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

void TableState::RowAdded(RowKey key, std::optional<RowKey> prior, const ValueSource& values)
{
    QueueRow(TABLE_ROW_ADDED, key, prior, &values);
}

void TableState::RowModified(RowKey key, std::optional<RowKey> prior, const ValueSource& values)
{
    QueueRow(TABLE_ROW_MODIFIED, key, prior, &values);
}

void TableState::RowDeleted(RowKey key)
{
    QueueRow(TABLE_ROW_DELETED, key, std::nullopt, nullptr);
}

void TableState::AllChanged(bool replaced)
{
    QueueWhole(replaced ? TABLE_RELOAD : TABLE_CHANGED);
}

void TableState::QueueRow(ULONG what, RowKey key, std::optional<RowKey> prior, const ValueSource* values)
{
    // Anew where that waits already: a connection that came since then was to pass it over.
    if (m_events.size() >= MostWaiting || (m_events.size() == 1 && m_events.front().what == TABLE_CHANGED))
    {
        return QueueWhole(TABLE_CHANGED);
    }
    Event event;
    event.what = what;
    event.hasIndex = true;
    event.index = InstanceKeyOf(key);
    event.hasPrior = prior.has_value();
    if (prior)
    {
        event.prior = InstanceKeyOf(*prior);
    }
    if (values)
    {
        const std::vector<ULONG> columns = Columns();
        event.row = Buffer<SPropValue>(BuildRow(columns, *values));
        event.columns = static_cast<ULONG>(columns.size());
    }
    m_events.push_back(std::move(event));
}

void TableState::ForgetEvents()
{
    m_events.clear();
    for (auto& each : m_connections)
    {
        each.second.passedOver = 0;
    }
}

// What waits before it is told by it too.
void TableState::QueueWhole(ULONG what, HRESULT result)
{
    ForgetEvents();
    Event event;
    event.what = what;
    event.result = result;
    m_events.push_back(std::move(event));
}

void TableState::LookForChanges()
{
    try
    {
        if (m_lost)
        {
            QueueWhole(TABLE_CHANGED);
        }
        m_lost = false;
        m_view.Sync();
        m_failed = false;
    }
    catch (...)
    {
        const HRESULT result = ResultOfCurrentException();
        if (!m_failed)
        {
            QueueWhole(TABLE_ERROR, result);
        }
        m_failed = true;
    }
}

void TableState::Look(std::vector<Event>& events, Connections& connections)
{
    const std::lock_guard<std::mutex> hold(m_lock);
    if (m_connections.empty())
    {
        return;
    }
    LookForChanges();
    if (m_events.empty())
    {
        return;
    }
    m_lost = true;
    for (auto& each : m_connections)
    {
        connections.push_back(each.second);
        each.second.passedOver = 0;
    }
    events.swap(m_events);
    m_lost = false;
}

bool TableState::LookAndDeliver() noexcept
{
    try
    {
        std::vector<Event> events;
        Connections connections;
        Look(events, connections);
        if (events.empty())
        {
            return false;
        }
        Deliver(events, connections);
    }
    catch (...)
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        m_lost = true;
    }
    return true;
}

void TableState::Deliver(std::vector<Event>& events, const Connections& connections)
{
    std::vector<NOTIFICATION> notifications(events.size());
    for (const Advised& advised : connections)
    {
        // Anew for each sink: what one does to them is not the next one's.
        for (size_t i = 0; i < events.size(); ++i)
        {
            Fill(notifications[i], events[i]);
        }
        const size_t first = advised.passedOver;
        if (first < events.size())
        {
            advised.connection->Deliver(static_cast<ULONG>(events.size() - first), notifications.data() + first);
        }
    }
}

void TableState::Fill(NOTIFICATION& notification, Event& event)
{
    std::memset(static_cast<void*>(&notification), 0, sizeof(notification));
    notification.ulEventType = fnevTableModified;
    TABLE_NOTIFICATION& table = notification.info.tab;
    table.ulTableEvent = event.what;
    table.hResult = event.result;
    FillInstanceKey(table.propIndex, event.hasIndex, event.index);
    FillInstanceKey(table.propPrior, event.hasPrior, event.prior);
    table.row.cValues = event.columns;
    table.row.lpProps = event.row.Get();
}

} // namespace zebstore
