// The advise sinks of an open table, and the notifications that wait for them.
#pragma once

#include "zebstore/base/Memory.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/storage/RowChange.h"

#include <map>
#include <string>
#include <vector>

namespace zebstore
{

/// Threads: one at a time; Delivery::Run needs no lock.
class TableSinks
{
public:
    /// A notification that waits.
    struct Event
    {
        ULONG what = TABLE_CHANGED;
        HRESULT result = S_OK;
        bool hasIndex = false;
        bool hasPrior = false;
        std::string index; // instance keys
        std::string prior;
        Buffer<SPropValue> row;
        ULONG columns = 0;
    };
    struct Advised
    {
        std::shared_ptr<Connection> connection;
        size_t skipped = 0; // so many of the waiting events are older than the connection
    };
    /// What waited, with the connections that get it.
    class Delivery
    {
    public:
        bool IsEmpty() const { return m_events.empty(); }
        void Run();

    private:
        friend class TableSinks;
        std::vector<Event> m_events;
        std::vector<Advised> m_connections;
    };
    using Connections = std::map<ULONG_PTR, Advised>;

    bool IsEmpty() const { return m_connections.empty(); }
    /// The connection gets every event that is queued from now on.
    void Add(ULONG_PTR number, IMAPIAdviseSink* sink);
    /// @throws Error MAPI_E_INVALID_PARAMETER for a number that no connection has
    std::shared_ptr<Connection> Remove(ULONG_PTR number);
    /// Removes all connections and events.
    Connections TakeAll() noexcept;

    /// @param row the values of a row that was added or modified, null for one that was deleted
    void QueueRow(const RowChange& change, Buffer<SPropValue> row, ULONG columns);
    /// Queues an event for the whole table; what waits is dropped, as it is included.
    void QueueWhole(ULONG what, HRESULT result = S_OK);
    void Forget();
    /// True when another row change only becomes a part of TABLE_CHANGED.
    bool IsFull() const;
    /// Empties the queue.
    Delivery Take();

private:
    Connections m_connections;
    std::vector<Event> m_events;
};

} // namespace zebstore
