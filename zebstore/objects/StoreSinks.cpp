#include "zebstore/objects/StoreSinks.h"

#include <cstring>

namespace zebstore
{

namespace
{

ULONG TypeOf(const StoreEvent& event)
{
    switch (event.what)
    {
    case StoreEvent::What::Created:
        return fnevObjectCreated;
    case StoreEvent::What::Deleted:
        return fnevObjectDeleted;
    case StoreEvent::What::Moved:
        return fnevObjectMoved;
    default:
        return fnevObjectModified;
    }
}

// The identifiers that one notification points to.
struct Ids
{
    std::vector<BYTE> entry;
    std::vector<BYTE> parent;
    std::vector<BYTE> oldParent;
};

template <class Id>
std::vector<BYTE> BytesOf(const Id& id)
{
    return {id.begin(), id.end()};
}

Ids IdsOf(const StoreContext& store, const StoreEvent& event)
{
    Ids ids;
    ids.entry = event.isFolder ? BytesOf(store.IdOfFolder(event.id)) : BytesOf(store.IdOfMessage(event.id));
    if (event.parent)
    {
        ids.parent = BytesOf(store.IdOfFolder(event.parent));
    }
    if (event.oldParent)
    {
        ids.oldParent = BytesOf(store.IdOfFolder(event.oldParent));
    }
    return ids;
}

void Point(ULONG& size, ENTRYID*& to, std::vector<BYTE>& bytes)
{
    size = static_cast<ULONG>(bytes.size());
    to = bytes.empty() ? nullptr : reinterpret_cast<ENTRYID*>(bytes.data());
}

void Fill(NOTIFICATION& notification, const StoreEvent& event, Ids& ids)
{
    std::memset(static_cast<void*>(&notification), 0, sizeof(notification));
    notification.ulEventType = TypeOf(event);
    OBJECT_NOTIFICATION& object = notification.info.obj;
    object.ulObjType = event.isFolder ? MAPI_FOLDER : MAPI_MESSAGE;
    Point(object.cbEntryID, object.lpEntryID, ids.entry);
    Point(object.cbParentID, object.lpParentID, ids.parent);
    if (event.what != StoreEvent::What::Moved)
    {
        return;
    }
    // A moved folder keeps its identifier.
    object.cbOldID = object.cbEntryID;
    object.lpOldID = object.lpEntryID;
    Point(object.cbOldParentID, object.lpOldParentID, ids.oldParent);
}

} // namespace

void RequireObjectEvents(ULONG events, const IMAPIAdviseSink* sink, ULONG_PTR* connection)
{
    Require(connection != nullptr, "the output pointer is null");
    *connection = 0;
    if (!(events & StoreSinks::Events))
    {
        throw Error(MAPI_E_NO_SUPPORT,
                    "the store does not support this event: only object created, deleted, modified and moved");
    }
    Require(sink != nullptr, "the advise sink is null");
}

bool StoreSinks::Advised::Wants(const StoreEvent& event) const
{
    if (!(events & TypeOf(event)))
    {
        return false;
    }
    if (!item)
    {
        return true;
    }
    if (item->objectType == MAPI_MESSAGE)
    {
        return !event.isFolder && event.id == item->key;
    }
    return event.parent == item->key || event.oldParent == item->key || (event.isFolder && event.id == item->key);
}

ULONG_PTR StoreSinks::Advise(const std::optional<ItemId>& item, ULONG events, IMAPIAdviseSink* sink)
{
    const ULONG_PTR number = NextConnectionNumber();
    {
        const std::lock_guard hold(m_lock);
        if (!m_changes)
        {
            m_changes = std::make_unique<StoreChanges>(m_store->SharedFile());
        }
        m_advised[number] = {item, events, std::make_shared<Connection>(sink)};
    }
    LookFor(shared_from_this(), number);
    return number;
}

void StoreSinks::Unadvise(ULONG_PTR number)
{
    std::shared_ptr<Connection> connection;
    {
        const std::lock_guard hold(m_lock);
        connection = TakeConnection(m_advised, number, "no advise connection has this number");
        if (m_advised.empty())
        {
            m_changes.reset();
        }
    }
    connection->Cut();
}

void StoreSinks::Close() noexcept
{
    std::map<ULONG_PTR, Advised> advised;
    {
        const std::lock_guard hold(m_lock);
        advised.swap(m_advised);
        m_changes.reset();
    }
    for (const auto& each : advised)
    {
        each.second.connection->Cut();
    }
    Notifier::The().Remove(this);
}

bool StoreSinks::LookAndDeliver() noexcept
{
    try
    {
        std::vector<StoreEvent> events;
        std::vector<Advised> advised;
        {
            const std::lock_guard hold(m_lock);
            if (m_changes)
            {
                events = m_changes->Next();
            }
            if (events.empty())
            {
                return false;
            }
            for (const auto& each : m_advised)
            {
                advised.push_back(each.second);
            }
        }
        for (const Advised& each : advised)
        {
            Deliver(each, events);
        }
    }
    catch (...)
    {
        // Changes that could not be read are read again.
    }
    return true;
}

void StoreSinks::Deliver(const Advised& advised, const std::vector<StoreEvent>& events) const
{
    std::vector<StoreEvent> heard;
    for (const StoreEvent& event : events)
    {
        if (advised.Wants(event))
        {
            heard.push_back(event);
        }
    }
    if (heard.empty())
    {
        return;
    }
    std::vector<Ids> ids;
    std::vector<NOTIFICATION> notifications(heard.size());
    for (const StoreEvent& event : heard)
    {
        ids.push_back(IdsOf(*m_store, event));
    }
    for (size_t i = 0; i < heard.size(); ++i)
    {
        Fill(notifications[i], heard[i], ids[i]);
    }
    advised.connection->Deliver(static_cast<ULONG>(notifications.size()), notifications.data());
}

} // namespace zebstore
