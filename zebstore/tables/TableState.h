// The state of an open table: view, columns, advise sinks.
#pragma once

#include "zebstore/base/Locks.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/storage/InstanceRows.h"
#include "zebstore/tables/TableOptions.h"
#include "zebstore/tables/TableSinks.h"
#include "zebstore/tables/TableView.h"

#include <vector>

namespace zebstore
{

/// The state of one IMAPITable, shared with the notifier while the table has advise sinks.
/// Threads: Advise, Unadvise and Close from any; the rest only under Lock().
class TableState : public Notified, public std::enable_shared_from_this<TableState>
{
public:
    using TableLock = MutexOf<lockorder::Table>;

    TableState(std::shared_ptr<RowSource> rows, const TableOptions& options)
        : m_options(options)
        , m_instances(std::make_shared<InstanceRows>(std::move(rows)))
        , m_view(m_instances)
    {
    }

    TableLock& Lock() { return m_lock; }
    const TableOptions& Options() const { return m_options; }
    /// The view, up to date with its source; what that changed is queued for the sinks.
    TableView& Current();
    void FreeBookmark(BOOKMARK bookmark) { m_view.FreeBookmark(bookmark); }

    /// @throws Error MAPI_E_TOO_COMPLEX for the instances of more than one property
    void SetColumns(std::vector<ULONG> columns);
    std::vector<ULONG> Columns();
    std::vector<ULONG> AllColumns() { return InOwnForm(m_view.Rows().AllColumns()); }
    /// The next rows (before the cursor with a negative count), owned by the caller.
    SRowSet* ReadRows(LONG count, bool advance);
    /// Sorts the view; notifications of the old order that still wait are dropped.
    /// @throws Error MAPI_E_TOO_COMPLEX as SetColumns and SortOrder
    void Sort(const SSortOrderSet& order);
    /// The sort keys as they were given.
    const std::vector<SSortOrder>& Sorts() const { return m_sorts; }
    /// Restricts the view (null: not any more), as Sort. @throws Error as Restriction
    void Restrict(const SRestriction* restriction);

    /// From now on `sink` is notified of every change. @return the connection's number
    ULONG_PTR Advise(IMAPIAdviseSink* sink);
    /// @throws Error MAPI_E_INVALID_PARAMETER for a number that no connection has
    void Unadvise(ULONG_PTR number);
    /// Ends all connections, when the table's interface is destroyed.
    void Close() noexcept;

    bool LookAndDeliver() noexcept override;

private:
    void ChooseInstances(ULONG column, ULONG sort);
    std::vector<ULONG> InOwnForm(std::vector<ULONG> columns) const;
    SRowSet* BuildRows(const std::vector<RowKey>& keys, const std::vector<ULONG>& columns);
    SPropValue* BuildRow(const std::vector<ULONG>& columns, const ValueSource& values) const;
    void TakeOver();
    void Queue(const RowChanges& changes);
    void QueueRow(const RowChange& change);
    void LookForChanges();
    TableSinks::Delivery TakeDelivery();

    TableLock m_lock;
    const TableOptions m_options;
    const std::shared_ptr<InstanceRows> m_instances;
    TableView m_view;
    ULONG m_columnInstance = 0;   // the property whose instances the columns ask for, 0: none
    ULONG m_sortInstance = 0;     // and the sort order
    std::vector<ULONG> m_columns; // empty: the default ones
    std::vector<SSortOrder> m_sorts;
    TableSinks m_sinks;
    bool m_failed = false; // the last look for changes; the sinks were notified
    bool m_lost = false;   // changes were not queued, for want of memory
};

} // namespace zebstore
