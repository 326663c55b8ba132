#include "zebstore/storage/HierarchyRows.h"

#include "zebstore/storage/RowParts.h"
#include "zebstore/storage/RowSelection.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace zebstore
{

namespace
{

constexpr ULONG InfoTags[] = {PR_DEPTH,      PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_ASSOC_CONTENT_COUNT,
                              PR_SUBFOLDERS, PR_FOLDER_TYPE};

// Counters change with the messages of a folder, all other columns with the folders.
bool IsCounter(ULONG tag)
{
    return PROP_ID(tag) == PROP_ID(PR_CONTENT_COUNT) || PROP_ID(tag) == PROP_ID(PR_CONTENT_UNREAD) ||
           PROP_ID(tag) == PROP_ID(PR_ASSOC_CONTENT_COUNT);
}

bool AsksForCounters(const RestrictionNode& node)
{
    return IsCounter(node.tag) || IsCounter(node.otherTag) ||
           std::any_of(node.children.begin(), node.children.end(), AsksForCounters);
}

bool SortsByCounters(const SortOrder& order)
{
    return std::any_of(order.Keys().begin(), order.Keys().end(),
                       [](const SortOrder::Key& key) { return IsCounter(key.tag); });
}

class FolderValues : public ValueSource
{
public:
    FolderValues(StoreFile& store, const ComputedProperties* computed, const FolderInfo& info)
        : m_store(store)
        , m_computed(computed)
        , m_info(info)
    {
        m_counts.SetLong(PR_DEPTH, static_cast<LONG>(info.depth));
        m_counts.SetLong(PR_CONTENT_COUNT, static_cast<LONG>(info.messages));
        m_counts.SetLong(PR_CONTENT_UNREAD, static_cast<LONG>(info.unread));
        m_counts.SetLong(PR_ASSOC_CONTENT_COUNT, static_cast<LONG>(info.associated));
        m_counts.SetBool(PR_SUBFOLDERS, info.subfolders != 0);
        m_counts.SetLong(PR_FOLDER_TYPE, static_cast<LONG>(info.type));
    }

    EncodedValue Find(ULONG tag) const override
    {
        if (const EncodedValue count = m_counts.Find(tag))
        {
            return count;
        }
        const auto compute = [&](PropertySet& made)
        { return m_computed != nullptr && m_computed->OfFolder(tag, m_info, made); };
        if (const auto value = m_made.Find(tag, compute))
        {
            return *value;
        }
        if (!m_stored)
        {
            m_stored = m_store.Folders().Properties(m_info.id);
        }
        if (const EncodedValue stored = m_stored->Find(tag))
        {
            return stored;
        }
        const auto times = [this] { return m_store.Folders().Times(m_info.id); };
        const auto complete = [&](PropertySet& made)
        { return m_computed != nullptr && m_computed->DefaultOfFolder(tag, times, made); };
        return m_made.Find(tag, complete).value_or(EncodedValue());
    }

private:
    StoreFile& m_store;
    const ComputedProperties* m_computed;
    FolderInfo m_info;
    PropertySet m_counts;
    mutable std::optional<PropertySet> m_stored;
    mutable ComputedValues m_made;
};

class HierarchyRows : public RowSource
{
public:
    HierarchyRows(std::shared_ptr<StoreFile> store, FolderId folder, bool wholeTree,
                  std::shared_ptr<const ComputedProperties> computed)
        : m_store(std::move(store))
        , m_folder(folder)
        , m_wholeTree(wholeTree)
        , m_computed(std::move(computed))
    {
    }

    ULONG Count() override
    {
        if (!m_wholeTree)
        {
            return m_store->Folders().Info(m_folder).subfolders;
        }
        return static_cast<ULONG>(m_store->Folders().Under(m_folder, true).size());
    }

    // The counters of folders change with every message, which matters only to a table that is followed, or whose rows
    // depend on them.
    std::uint64_t Generation() override
    {
        return m_followed || m_countersMatter ? m_store->Contents().ChangeStamp()
                                              : m_store->Contents().TreeGeneration();
    }

    std::shared_ptr<void> Snapshot() override { return std::make_shared<StoreSnapshot>(m_store->Connection()); }

    void Follow() override
    {
        m_followed = true;
        m_seen = See();
        m_seenTree = m_store->Contents().TreeGeneration();
        m_seenGeneration = Generation();
    }

    RowChanges ChangesSince(std::uint64_t generation) override
    {
        RowChanges changes;
        if (!m_followed)
        {
            return changes;
        }
        const bool known = generation == m_seenGeneration;
        const std::map<FolderId, Seen> before = m_seen;
        const std::uint64_t tree = m_store->Contents().TreeGeneration();
        if (tree == m_seenTree)
        {
            SeeCounters();
        }
        else
        {
            m_seen = See();
        }
        m_seenTree = tree;
        m_seenGeneration = Generation();
        if (!known)
        {
            return changes;
        }
        changes.extent = RowChanges::Extent::Listed;
        for (const auto& [folder, seen] : before)
        {
            const auto now = m_seen.find(folder);
            if (now == m_seen.end())
            {
                changes.rows.push_back({RowChange::Kind::Deleted, folder, {}});
            }
            else if (!(now->second == seen))
            {
                changes.rows.push_back({RowChange::Kind::Modified, folder, {}});
            }
        }
        for (const auto& each : m_seen)
        {
            if (before.count(each.first) == 0)
            {
                changes.rows.push_back({RowChange::Kind::Added, each.first, {}});
            }
        }
        return changes;
    }

    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override
    {
        const std::lock_guard hold(m_store->Lock());
        m_countersMatter = m_countersMatter || (restriction != nullptr && AsksForCounters(restriction->Root())) ||
                           (order != nullptr && SortsByCounters(*order));
        RowSelection selection(restriction, order);
        for (const FolderInfo& info : m_store->Folders().Under(m_folder, m_wholeTree))
        {
            selection.Add(info.id, FolderValues(*m_store, m_computed.get(), info), restriction == nullptr);
        }
        return selection.Take();
    }

    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override
    {
        std::vector<RowKey> keys;
        bool reached = !after;
        for (const FolderInfo& info : m_store->Folders().Under(m_folder, m_wholeTree))
        {
            if (reached && keys.size() < count)
            {
                keys.push_back(info.id);
            }
            reached = reached || info.id == *after;
        }
        return keys;
    }

    void Read(const RowKey* keys, size_t count, const Visitor& visit) override
    {
        const StoreSnapshot snapshot(m_store->Connection());
        const PropertySet none;
        for (size_t i = 0; i < count; ++i)
        {
            if (!m_store->Folders().Exists(keys[i]))
            {
                visit(i, none);
                continue;
            }
            FolderInfo info = m_store->Folders().Info(keys[i]);
            info.depth = DepthOf(info);
            visit(i, FolderValues(*m_store, m_computed.get(), info));
        }
    }

    std::vector<ULONG> DefaultColumns() override
    {
        std::vector<ULONG> columns = m_computed ? m_computed->FolderTags() : std::vector<ULONG>();
        columns.push_back(PR_DISPLAY_NAME_W);
        columns.push_back(PR_COMMENT_W);
        columns.push_back(PR_CONTAINER_CLASS_W);
        columns.insert(columns.end(), std::begin(InfoTags), std::end(InfoTags));
        return columns;
    }

    std::vector<ULONG> AllColumns() override
    {
        ColumnList columns(DefaultColumns());
        const std::lock_guard hold(m_store->Lock());
        for (const FolderInfo& info : m_store->Folders().Under(m_folder, m_wholeTree))
        {
            for (const ULONG tag : m_store->Folders().Properties(info.id).Tags())
            {
                columns.Add(tag);
            }
        }
        return columns.Take();
    }

private:
    // All that a folder's row shows.
    struct Seen
    {
        FolderInfo info;
        std::string properties;
        std::int64_t modified;

        bool operator==(const Seen& other) const
        {
            const auto shown = [](const FolderInfo& each)
            {
                return std::make_tuple(each.parent, each.type, each.messages, each.unread, each.associated,
                                       each.subfolders != 0, each.depth);
            };
            return shown(info) == shown(other.info) && properties == other.properties && modified == other.modified;
        }
    };

    std::map<FolderId, Seen> See() const
    {
        const std::lock_guard hold(m_store->Lock());
        std::map<FolderId, Seen> seen;
        Query query(m_store->Connection().Db(), "SELECT props FROM folder WHERE id=?");
        for (const FolderInfo& info : m_store->Folders().Under(m_folder, m_wholeTree))
        {
            query.Bind(1, info.id).Step();
            seen[info.id] = {info, std::string(query.Bytes(0)), m_store->Folders().Times(info.id).modified};
            query.Reset();
        }
        return seen;
    }

    void SeeCounters()
    {
        const std::lock_guard hold(m_store->Lock());
        Query query(m_store->Connection().Db(), "SELECT container, rows, unread FROM contents");
        while (query.Step())
        {
            const ContentsKey contents = ContentsKey::FromColumn(query.Number(0));
            const auto seen = m_seen.find(contents.Folder());
            if (seen == m_seen.end())
            {
                continue;
            }
            FolderInfo& info = seen->second.info;
            if (contents.IsAssociated())
            {
                info.associated = static_cast<ULONG>(query.Number(1));
            }
            else
            {
                info.messages = static_cast<ULONG>(query.Number(1));
                info.unread = static_cast<ULONG>(query.Number(2));
            }
        }
    }

    ULONG DepthOf(const FolderInfo& info) const
    {
        ULONG depth = 1;
        for (FolderId at = info.parent; at != m_folder && at != 0; at = m_store->Folders().Info(at).parent)
        {
            ++depth;
        }
        return depth;
    }

    std::shared_ptr<StoreFile> m_store;
    FolderId m_folder;
    bool m_wholeTree;
    std::shared_ptr<const ComputedProperties> m_computed;
    bool m_followed = false;
    bool m_countersMatter = false;
    std::map<FolderId, Seen> m_seen; // as it was at m_seenGeneration
    std::uint64_t m_seenTree = 0;
    std::uint64_t m_seenGeneration = 0;
};

} // namespace

std::shared_ptr<RowSource> MakeHierarchyRows(std::shared_ptr<StoreFile> store, FolderId folder, bool wholeTree,
                                             std::shared_ptr<const ComputedProperties> computed)
{
    store->Folders().RequireExists(folder);
    return std::make_shared<HierarchyRows>(std::move(store), folder, wholeTree, std::move(computed));
}

} // namespace zebstore
