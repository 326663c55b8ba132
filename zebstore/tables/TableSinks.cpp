#include "zebstore/tables/TableSinks.h"

#include "zebstore/storage/RowSource.h"

#include <cstring>

namespace zebstore
{

namespace
{

// More events than these, waiting for a slow sink, become one TABLE_CHANGED.
constexpr size_t MostWaiting = 256;

ULONG EventOf(RowChange::Kind kind)
{
    switch (kind)
    {
    case RowChange::Kind::Added:
        return TABLE_ROW_ADDED;
    case RowChange::Kind::Deleted:
        return TABLE_ROW_DELETED;
    default:
        return TABLE_ROW_MODIFIED;
    }
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

void Fill(NOTIFICATION& notification, TableSinks::Event& event)
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

} // namespace

void TableSinks::Add(ULONG_PTR number, IMAPIAdviseSink* sink)
{
    m_connections.emplace(number, Advised{std::make_shared<Connection>(sink), m_events.size()});
}

std::shared_ptr<Connection> TableSinks::Remove(ULONG_PTR number)
{
    std::shared_ptr<Connection> connection =
        TakeConnection(m_connections, number, "the table has no connection of this number");
    if (m_connections.empty())
    {
        m_events.clear();
    }
    return connection;
}

TableSinks::Connections TableSinks::TakeAll() noexcept
{
    Connections connections;
    connections.swap(m_connections);
    m_events.clear();
    return connections;
}

// A TABLE_CHANGED that waits is queued again for a further change: a connection that was added since skips the first one.
bool TableSinks::IsFull() const
{
    return m_events.size() >= MostWaiting || (m_events.size() == 1 && m_events.front().what == TABLE_CHANGED);
}

void TableSinks::QueueRow(const RowChange& change, Buffer<SPropValue> row, ULONG columns)
{
    Event event;
    event.what = EventOf(change.kind);
    event.hasIndex = true;
    event.index = InstanceKeyOf(change.key);
    event.hasPrior = change.prior.has_value();
    if (change.prior)
    {
        event.prior = InstanceKeyOf(*change.prior);
    }
    event.row = std::move(row);
    event.columns = columns;
    m_events.push_back(std::move(event));
}

void TableSinks::QueueWhole(ULONG what, HRESULT result)
{
    Forget();
    Event event;
    event.what = what;
    event.result = result;
    m_events.push_back(std::move(event));
}

void TableSinks::Forget()
{
    m_events.clear();
    for (auto& each : m_connections)
    {
        each.second.skipped = 0;
    }
}

TableSinks::Delivery TableSinks::Take()
{
    Delivery delivery;
    if (m_events.empty())
    {
        return delivery;
    }
    for (auto& each : m_connections)
    {
        delivery.m_connections.push_back(each.second);
        each.second.skipped = 0;
    }
    delivery.m_events.swap(m_events);
    return delivery;
}

void TableSinks::Delivery::Run()
{
    std::vector<NOTIFICATION> notifications(m_events.size());
    for (const Advised& advised : m_connections)
    {
        // Filled again for each sink: a sink may change what it is given.
        for (size_t i = 0; i < m_events.size(); ++i)
        {
            Fill(notifications[i], m_events[i]);
        }
        if (advised.skipped < m_events.size())
        {
            advised.connection->Deliver(static_cast<ULONG>(m_events.size() - advised.skipped),
                                        notifications.data() + advised.skipped);
        }
    }
}

} // namespace zebstore
