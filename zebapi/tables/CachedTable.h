// A table read by row index.
#pragma once

#include "framework/Atomic.h"
#include "framework/Sync.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "zebapi/tables/AdviseSink.h"
#include "zebapi/tables/Row.h"
#include "zebapi/tables/RowSet.h"
#include "zebapi/tables/Table.h"

/// Posted to the owner window when a cached table changed; wParam and lParam are 0. Read the count and the rows again.
const UINT WM_CACHED_TABLE_CHANGED = WM_USER + 151;

/// A table read by row index, like an array.
///
/// Keeps a window of up to 50 consecutive rows, read with one QueryRows, with the requested row at position 25. The
/// window is dropped by every notification of the table, by sorting, seeking, searching and restricting, and by
/// assignment. SetColumns, QueryRows and QueryAllRows do not drop it: set the columns before the first read.
///
/// Threads: read from one thread. Notifications may arrive on another, also during a read; they drop the window and
/// post a message to the owner window, and the rows themselves are freed by the next operation of the reading thread.
/// No lock is held across a call of the provider. A handler may unbind inside its own notification.
///
/// Inside a notification nothing frees the rows of the window, whatever operation the handler
/// calls. Free and assignment release the table itself: call them in a notification only when no other thread is inside
/// an operation of this object.
///
/// Deriving: override OnTable_Modified; the delegate's other operations are never called. Notifications may arrive
/// during construction or destruction of a base class: construct the object empty, assign the table to it, and call
/// Free in the destructor of the derived class.
class ZEBAPI_EXPORT CZebCachedTable : public CZebTable, public CAdviseSinkDelegate
{
public:
    /// Frees.
    ~CZebCachedTable() override;
    /// Takes over another table and registers for its notifications. Never throws.
    CZebTable& operator=(const CZebTable& table) override;
    /// Sorts and drops the window.
    void SortTable(SSortOrderSet* order) override;
    void SeekRow(ULONG origin, LONG rowCount, LONG* rowsSought) override;
    bool FindRow(SRestriction* restriction, ULONG origin, ULONG flags) override;
    /// Restricts and drops the window.
    void Restrict(SRestriction* restriction, ULONG flags) override;
    /// Unbinds, drops the window and the table. Never throws.
    void Free() override;

protected:
    /// Registers for the table's notifications; no-op for an empty table.
    virtual void Bind();
    /// Ends the registration. No notification is handled after it.
    virtual void Unbind();
    /// Drops the window. Never throws.
    virtual void EmptyCache();

public:
    /// Sets the window that WM_CACHED_TABLE_CHANGED is posted to; null for none.
    virtual void SetOwnerWindow(HWND window);
    /// Row index, from the window or newly read. The row is a view, usable until the window is next dropped or refilled
    /// by an operation of this thread.
    /// @throws CZebException* E_INVALIDARG when index is not below the row count, MAPI_E_NOT_FOUND when the row was
    /// deleted meanwhile
    virtual CZebRow operator[](ULONG index);
    /// For a change, an error, a reload or a changed row: drops the window and then posts the message. Ignores other
    /// events. Its rows are not used.
    void OnTable_Modified(TABLE_NOTIFICATION* notification) override;

    /// Adds a reference on table, which may be null, and registers for its notifications.
    explicit CZebCachedTable(IMAPITable* table = nullptr);
    /// Shares the table of another, without registering: assign from a table for that.
    explicit CZebCachedTable(const CZebTable& table);
    /// Copies member by member, including window and registration, which both objects then free: do not copy a cached
    /// table.
    CZebCachedTable(const CZebCachedTable& other);
    /// As the copy constructor.
    CZebCachedTable& operator=(const CZebCachedTable& other);

    /// Registers for the table's notifications, again if it did before, and reports why it cannot. Assignment and
    /// construction keep quiet about it: without notifications the window is dropped by the operations of this object only.
    /// @throws CZebException* as CZebTable::Advise; _com_error E_POINTER when empty
    void BindChecked();

private:
    /// Row index, which is not in the window.
    CZebRow ReadRow(ULONG index);
    void ReadWindow(ULONG start);

    zeb::framework::Atomic<ULONG> m_firstRow;
    ULONG m_batch;
    CZebRowSet m_cache;
    // Taken by the thread that unbinds first: the reading thread or, inside a notification, the delivering one.
    zeb::framework::Atomic<CAdviseSinkBinder*> m_binder{nullptr};
    zeb::framework::Atomic<HWND> m_window{nullptr};
    // Counts notifications; guarded with m_firstRow by m_lock.
    ULONG m_generation = 0;
    zeb::CCriticalSection m_lock;
};
