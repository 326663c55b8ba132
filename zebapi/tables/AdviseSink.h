// Notifications of tables.
#pragma once

#include "framework/Atomic.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "zebapi/tables/Table.h"

/// Receiver of a table's notifications: derive and override the operations of interest.
///
/// A change, an error and a reload all end in OnTableModified_ReloadCommon; row events are ignored.
/// Threads: the operations run on the thread on which MAPI delivers, inside the delivery.
class ZEBAPI_EXPORT CAdviseSinkDelegate
{
public:
    CAdviseSinkDelegate();
    /// Copies nothing: a delegate has no state of its own.
    CAdviseSinkDelegate(const CAdviseSinkDelegate& other);
    /// Copies nothing.
    CAdviseSinkDelegate& operator=(const CAdviseSinkDelegate& other);
    virtual ~CAdviseSinkDelegate();
    /// Every table event; calls the operation for it. The notification is valid only during this call.
    virtual void OnTable_Modified(TABLE_NOTIFICATION* notification);
    /// The table must be read again.
    virtual void OnTableModified_ReloadCommon();
    /// TABLE_CHANGED.
    virtual void OnTableModified_Changed();
    /// TABLE_ERROR.
    virtual void OnTableModified_Error();
    /// TABLE_RELOAD.
    virtual void OnTableModified_Reload();
    /// TABLE_ROW_ADDED.
    virtual void OnTableModified_Row_Added(TABLE_NOTIFICATION* notification);
    /// TABLE_ROW_DELETED.
    virtual void OnTableModified_Row_Deleted(TABLE_NOTIFICATION* notification);
    /// TABLE_ROW_MODIFIED.
    virtual void OnTableModified_Row_Modified(TABLE_NOTIFICATION* notification);
};

/// The object that MAPI notifies; it passes table events on to one delegate.
///
/// Counted, with 1 at construction, and deletes itself; create it with new. The delegate is not owned: it must outlive
/// the sink or be detached from it. Threads: notifications may arrive on any thread, also concurrently. No lock is held
/// while a delegate is called.
class ZEBAPI_EXPORT CAdviseSink : public IMAPIAdviseSink
{
public:
    /// IUnknown and IMAPIAdviseSink; E_POINTER for a null result, else E_NOINTERFACE.
    STDMETHOD(QueryInterface)(REFIID riid, void** ppv) override;
    /// Adds a reference. @return the new count
    STDMETHOD_(ULONG, AddRef)() override;
    /// Releases a reference; the last one deletes the sink. @return the new count
    STDMETHOD_(ULONG, Release)() override;
    /// Calls the delegate for each fnevTableModified, in order. An exception of the delegate is logged, and the next
    /// notification is processed. Always 0. The sink is kept alive while this runs.
    STDMETHOD_(ULONG, OnNotify)(ULONG count, LPNOTIFICATION notifications) override;
    virtual ~CAdviseSink();

    /// @param delegate  may be null: notifications are accepted and ignored
    explicit CAdviseSink(CAdviseSinkDelegate* delegate);
    /// Copies the delegate and the count of references: do not copy a sink that is advised.
    CAdviseSink(const CAdviseSink& other);
    /// As the copy constructor.
    CAdviseSink& operator=(const CAdviseSink& other);

    /// Detaches the delegate and waits until no other thread is inside it: after that it is not called any more. A call
    /// from inside a delivery does not wait for that delivery.
    void Cut();
    /// Waits until no other thread is inside a notification in which `delegate` was called before this. From inside a
    /// notification of that delegate, returns at once.
    static void AwaitDeliveries(const CAdviseSinkDelegate* delegate);

private:
    void Deliver(TABLE_NOTIFICATION* notification);

    zeb::framework::Atomic<ULONG> m_references{1};
    CAdviseSinkDelegate* m_delegate; // guarded by the lock of the active deliveries
};

/// Connects a delegate to a table: creates the sink, registers it for fnevTableModified, and unregisters it.
///
/// Nothing here but AdviseChecked throws; failures are logged, and a failed registration ends without one. The delegate is not
/// owned and must outlive the binder. Do not copy a binder that is advised: the copy shares sink and
/// connection uncounted. Threads: advise and unadvise from one thread, or inside a notification on the thread that
/// delivers it. A notification may arrive before Advise has returned, and may unadvise or destroy the binder.
class ZEBAPI_EXPORT CAdviseSinkBinder
{
public:
    /// Unadvises, and waits until no other thread is inside a notification of the delegate, for any table; does not
    /// wait inside such a notification.
    virtual ~CAdviseSinkBinder();
    /// Registers a new sink on table, by CZebTable::Advise; the previous sink is unregistered first.
    virtual void Advise(CZebTable& table);
    /// Detaches the delegate, unregisters the sink and releases it. When it returns, no notification of this
    /// registration is in progress (except one that it was called from) and none will follow.
    virtual void Unadvise();

    /// @param table  advised at once when not null
    CAdviseSinkBinder(CAdviseSinkDelegate* delegate, CZebTable* table);
    /// Copies the members; see above.
    CAdviseSinkBinder(const CAdviseSinkBinder& other);
    /// As the copy constructor.
    CAdviseSinkBinder& operator=(const CAdviseSinkBinder& other);

    /// Advise that reports why it failed. Nothing is registered then.
    /// @throws CZebException* as CZebTable::Advise; _com_error E_POINTER for an empty table
    void AdviseChecked(CZebTable& table);

private:
    /// Registers a new sink on table. Throws anything.
    void Register(CZebTable& table);
    /// Registers the sink on the table held. After a failure nothing is registered. Throws anything.
    void Register(CAdviseSink* sink);

    CAdviseSinkDelegate* m_delegate;
    CAdviseSink* m_sink = nullptr;
    CZebTable m_table;
    ULONG m_connection = 0;
};
