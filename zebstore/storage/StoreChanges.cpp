#include "zebstore/storage/StoreChanges.h"

#include "zebstore/storage/RecentChanges.h"

#include <algorithm>

namespace zebstore
{

namespace
{

StoreEvent::What WhatOf(RowChange::Kind kind)
{
    switch (kind)
    {
    case RowChange::Kind::Added:
        return StoreEvent::What::Created;
    case RowChange::Kind::Deleted:
        return StoreEvent::What::Deleted;
    default:
        return StoreEvent::What::Modified;
    }
}

} // namespace

StoreChanges::StoreChanges(std::shared_ptr<StoreFile> store)
    : m_store(std::move(store))
{
    Next(); // the first call reports all that exists
}

std::vector<StoreEvent> StoreChanges::Next()
{
    std::vector<StoreEvent> events;
    if (m_store->Contents().ChangeStamp() == m_stamp)
    {
        return events;
    }
    const StoreSnapshot snapshot(m_store->Connection());
    const std::uint64_t stamp = m_store->Contents().ChangeStamp();
    const std::uint64_t tree = m_store->Contents().TreeGeneration();
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
    Query query(m_store->Connection().Db(), "SELECT id, parent, props FROM folder");
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
    Query query(m_store->Connection().Db(), "SELECT container, change, recent FROM contents WHERE container != ?");
    query.Bind(1, ContentsKey::Embedded().Column());
    while (query.Step())
    {
        const ContentsKey contents = ContentsKey::FromColumn(query.Number(0));
        const std::int64_t change = query.Number(1);
        const auto was = m_changes.find(contents.Column());
        // Contents are created with change number 1.
        const std::int64_t before = was == m_changes.end() ? 1 : was->second;
        if (change > before)
        {
            const auto folder = m_folders.find(contents.Folder());
            List(events, contents, folder == m_folders.end() ? 0 : folder->second.parent, change - before,
                 query.Bytes(2));
        }
        now[contents.Column()] = change;
    }
    m_changes.swap(now);
}

void StoreChanges::List(std::vector<StoreEvent>& events, ContentsKey contents, FolderId parent, std::int64_t count,
                        std::string_view recent)
{
    const RowChanges changes = LastRecent(recent, contents, static_cast<std::uint64_t>(count));
    if (changes.extent != RowChanges::Extent::Listed)
    {
        events.push_back({StoreEvent::What::Modified, true, contents.Folder(), parent, 0});
        return;
    }
    for (const RowChange& change : changes.rows)
    {
        events.push_back({WhatOf(change.kind), false, change.key, contents.Folder(), 0});
    }
}

} // namespace zebstore
