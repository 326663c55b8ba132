// The advise sinks of a store: notifications about its folders and messages.
#pragma once

#include "zebstore/base/Locks.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/StoreChanges.h"

#include <map>
#include <optional>

namespace zebstore
{

/// The connections of one IMsgStore or IMAPISession. Threads: any.
class StoreSinks : public Notified, public std::enable_shared_from_this<StoreSinks>
{
public:
    /// The events that a sink can subscribe to.
    static constexpr ULONG Events = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified | fnevObjectMoved;

    explicit StoreSinks(StorePtr store)
        : m_store(std::move(store))
    {
    }

    /// @param item the object to watch: a message, or a folder with its contents; empty: the whole store
    /// @return the connection's number
    ULONG_PTR Advise(const std::optional<ItemId>& item, ULONG events, IMAPIAdviseSink* sink);
    /// @throws Error MAPI_E_INVALID_PARAMETER for a number that no connection has
    void Unadvise(ULONG_PTR number);
    /// Closes all connections.
    void Close() noexcept;

    bool LookAndDeliver() noexcept override;

private:
    struct Advised
    {
        std::optional<ItemId> item;
        ULONG events = 0;
        std::shared_ptr<Connection> connection;

        bool Wants(const StoreEvent& event) const;
    };

    void Deliver(const Advised& advised, const std::vector<StoreEvent>& events) const;

    const StorePtr m_store;
    MutexOf<lockorder::Table> m_lock;
    std::map<ULONG_PTR, Advised> m_advised;
    std::unique_ptr<StoreChanges> m_changes; // while at least one sink is advised
};

/// Validates the arguments of an Advise. @throws Error MAPI_E_NO_SUPPORT, MAPI_E_INVALID_PARAMETER
void RequireObjectEvents(ULONG events, const IMAPIAdviseSink* sink, ULONG_PTR* connection);

} // namespace zebstore
