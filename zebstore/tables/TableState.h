// An open table behind its interface: view, columns, advise sinks.
#pragma once

#include "zebstore/base/Memory.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/storage/InstanceRows.h"
#include "zebstore/storage/InstanceTag.h"
#include "zebstore/tables/Table.h"
#include "zebstore/tables/TableView.h"

#include <map>
#include <string>
#include <vector>

namespace zebstore
{

/// What one IMAPITable stands for. Lives on its own while the notifier looks at it.
/// Threads: Advise, Unadvise and Close from any; the rest only under Lock().
class TableState : public Notified, private ViewListener, public std::enable_shared_from_this<TableState>
{
public:
    TableState(std::shared_ptr<RowSource> rows, const TableOptions& options)
        : m_options(options)
        , m_instances(std::make_shared<InstanceRows>(std::move(rows)))
        , m_view(m_instances)
    {
    }

    std::mutex& Lock() { return m_lock; }
    const TableOptions& Options() const { return m_options; }
    TableView& View() { return m_view; }

    /// @throws Error MAPI_E_TOO_COMPLEX for the instances of more than one property
    void SetColumns(std::vector<ULONG> columns);
    std::vector<ULONG> Columns();
    std::vector<ULONG> AllColumns() { return InOwnForm(m_view.Rows().AllColumns()); }
    /// The next rows (before the cursor with a negative count), owned by the caller.
    SRowSet* ReadRows(LONG count, bool advance);
    /// @param tags those of the keys, before the view is sorted by them
    /// @throws Error MAPI_E_TOO_COMPLEX as SetColumns
    void SetSortTags(const std::vector<ULONG>& tags);
    /// Sorts or restricts through `change`; what was not told yet of the old order will not be.
    template <typename Change>
    void Rearrange(Change&& change)
    {
        ForgetEvents();
        change();
    }

    /// From now on `sink` hears of every change. @return the connection's number
    ULONG_PTR Advise(IMAPIAdviseSink* sink);
    /// @throws Error MAPI_E_INVALID_PARAMETER for a number that no connection has
    void Unadvise(ULONG_PTR number);
    /// Ends all connections; the table's interface is gone.
    void Close() noexcept;

    bool LookAndDeliver() noexcept override;

private:
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
        size_t passedOver = 0; // so many of the waiting events are older than the connection
    };
    using Connections = std::vector<Advised>;

    void RowAdded(RowKey key, std::optional<RowKey> prior, const ValueSource& values) override;
    void RowModified(RowKey key, std::optional<RowKey> prior, const ValueSource& values) override;
    void RowDeleted(RowKey key) override;
    void AllChanged(bool replaced) override;

    void ChooseInstances(ULONG column, ULONG sort);
    std::vector<ULONG> InOwnForm(std::vector<ULONG> columns) const;
    SRowSet* BuildRows(const std::vector<RowKey>& keys, const std::vector<ULONG>& columns);
    SPropValue* BuildRow(const std::vector<ULONG>& columns, const ValueSource& values) const;
    void ForgetEvents();
    void QueueRow(ULONG what, RowKey key, std::optional<RowKey> prior, const ValueSource* values);
    void QueueWhole(ULONG what, HRESULT result = S_OK);
    void Look(std::vector<Event>& events, Connections& connections);
    void LookForChanges();
    static void Deliver(std::vector<Event>& events, const Connections& connections);
    static void Fill(NOTIFICATION& notification, Event& event);

    std::mutex m_lock;
    const TableOptions m_options;
    const std::shared_ptr<InstanceRows> m_instances;
    TableView m_view;
    ULONG m_columnInstance = 0;   // the property whose instances the columns ask for, 0: none
    ULONG m_sortInstance = 0;     // and the sort order
    std::vector<ULONG> m_columns; // empty: the default ones
    std::map<ULONG_PTR, Advised> m_connections;
    std::vector<Event> m_events;
    bool m_failed = false; // the last look; sinks know
    bool m_lost = false;   // events, for want of memory
};

} // namespace zebstore
