#include "zebstore/storage/StoreChanges.h"

#include "zebstore/storage/RecentChanges.h"

#include <algorithm>

namespace zebstore
{

namespace
{

StoreEvent::What WhatOf(RowEvent event)
{
    switch (event)
    {
    case RowEvent::Added:
        return StoreEvent::What::Created;
    case RowEvent::Deleted:
        return StoreEvent::What::Deleted;
    default:
        return StoreEvent::What::Modified;
    }
}

} // namespace

StoreChanges::StoreChanges(std::shared_ptr<StoreFile> store)
    : m_store(std::move(store))
{
    Next(); // tells of all there is, which is nobody's concern
}

std::vector<StoreEvent> StoreChanges::Next()
{
    std::vector<StoreEvent> events;
    if (m_store->ChangeStamp() == m_stamp)
    {
        return events;
    }
    const StoreMoment moment(*m_store);
    const std::uint64_t stamp = m_store->ChangeStamp();
    const std::uint64_t tree = m_store->Generation(0, false);
    if (tree != m_tree)
    {
        LookAtFolders(events);
    }
    LookAtContents(events);
    m_tree = tree;
    m_stamp = stamp;
    return events;
}

void StoreChanges::LookAtFolders(std::vector<StoreEvent>& events)
{
    std::map<FolderId, SeenFolder> now;
    Query query(m_store->Connection(), "SELECT id, parent, props FROM folder");
    while (query.Step())
    {
        now[query.Number(0)] = {query.Number(1), std::string(query.Bytes(2))};
    }
    for (const auto& [folder, is] : now)
    {
        const auto was = m_folders.find(folder);
        if (was == m_folders.end())
        {
            events.push_back({StoreEvent::What::Created, true, folder, is.parent, 0});
        }
        else if (was->second.parent != is.parent)
        {
            events.push_back({StoreEvent::What::Moved, true, folder, is.parent, was->second.parent});
        }
        else if (was->second.properties != is.properties)
        {
            events.push_back({StoreEvent::What::Modified, true, folder, is.parent, 0});
        }
    }
    for (const auto& [folder, was] : m_folders)
    {
        if (now.count(folder) == 0)
        {
            events.push_back({StoreEvent::What::Deleted, true, folder, was.parent, 0});
        }
    }
    m_folders.swap(now);
}

void StoreChanges::LookAtContents(std::vector<StoreEvent>& events)
{
    std::unordered_map<std::int64_t, std::int64_t> now;
    Query query(m_store->Connection(), "SELECT container, change, recent FROM contents WHERE container != 0");
    while (query.Step())
    {
        const std::int64_t container = query.Number(0);
        const std::int64_t change = query.Number(1);
        const auto was = m_changes.find(container);
        // A place is made with change number 1.
        const std::int64_t before = was == m_changes.end() ? 1 : was->second;
        if (change > before)
        {
            const auto folder = m_folders.find(container >> 1);
            List(events, container, folder == m_folders.end() ? 0 : folder->second.parent, change - before,
                 query.Bytes(2));
        }
        now[container] = change;
    }
    m_changes.swap(now);
}

void StoreChanges::List(std::vector<StoreEvent>& events, std::int64_t container, FolderId parent, std::int64_t count,
                        std::string_view recent)
{
    const FolderId folder = container >> 1;
    const std::vector<RecentChange> changes = LastRecent(recent, static_cast<size_t>(count));
    const bool whole =
        std::any_of(changes.begin(), changes.end(), [](const RecentChange& change) { return change.IsEverything(); });
    if (whole || changes.size() < static_cast<size_t>(count))
    {
        events.push_back({StoreEvent::What::Modified, true, folder, parent, 0});
        return;
    }
    for (const RecentChange& change : changes)
    {
        events.push_back({WhatOf(change.event), false, FirstOf(container) | change.number, folder, 0});
    }
}

} // namespace zebstore
