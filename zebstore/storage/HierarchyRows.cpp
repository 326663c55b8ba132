// The folders below a folder as rows.
#include "zebstore/storage/RowSelect.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/StoreParts.h"

#include <deque>

namespace zebstore
{

namespace
{

constexpr ULONG InfoTags[] = {PR_DEPTH,      PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_ASSOC_CONTENT_COUNT,
                              PR_SUBFOLDERS, PR_FOLDER_TYPE};

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
            return count;
        if (m_computed)
        {
            m_made.emplace_back();
            if (m_computed->OfFolder(tag, m_info, m_made.back()))
                return m_made.back().Find(tag);
        }
        if (!m_stored)
            m_stored = m_store.FolderProperties(m_info.id);
        return m_stored->Find(tag);
    }

private:
    StoreFile& m_store;
    const ComputedProperties* m_computed;
    FolderInfo m_info;
    PropertySet m_counts;
    mutable std::optional<PropertySet> m_stored;
    mutable std::deque<PropertySet> m_made;
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
            return m_store->Folder(m_folder).subfolders;
        return static_cast<ULONG>(m_store->FoldersUnder(m_folder, true).size());
    }

    std::uint64_t Generation() override { return m_store->Generation(0, false); }

    std::vector<RowKey> Keys(const Restriction* restriction, const SortOrder* order) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        RowSelection selection(restriction, order);
        for (const FolderInfo& info : m_store->FoldersUnder(m_folder, m_wholeTree))
            selection.Add(info.id, FolderValues(*m_store, m_computed.get(), info), !restriction);
        return selection.Take();
    }

    std::vector<RowKey> KeysAfter(std::optional<RowKey> after, size_t count) override
    {
        std::vector<RowKey> keys;
        bool reached = !after;
        for (const FolderInfo& info : m_store->FoldersUnder(m_folder, m_wholeTree))
        {
            if (reached && keys.size() < count)
                keys.push_back(info.id);
            reached = reached || info.id == *after;
        }
        return keys;
    }

    void Read(const RowKey* keys, size_t count, const Visitor& visit) override
    {
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        const ReadScope moment(m_store->Connection());
        const PropertySet none;
        for (size_t i = 0; i < count; ++i)
        {
            if (!m_store->FolderExists(keys[i]))
            {
                visit(i, none);
                continue;
            }
            FolderInfo info = m_store->Folder(keys[i]);
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
        std::vector<ULONG> columns = DefaultColumns();
        const std::lock_guard<std::recursive_mutex> hold(m_store->Lock());
        for (const FolderInfo& info : m_store->FoldersUnder(m_folder, m_wholeTree))
            for (const ULONG tag : m_store->FolderProperties(info.id).Tags())
                if (std::none_of(columns.begin(), columns.end(),
                                 [&](ULONG each) { return PROP_ID(each) == PROP_ID(tag); }))
                    columns.push_back(tag);
        return columns;
    }

private:
    ULONG DepthOf(const FolderInfo& info) const
    {
        ULONG depth = 1;
        for (FolderId at = info.parent; at != m_folder && at != 0; at = m_store->Folder(at).parent)
            ++depth;
        return depth;
    }

    std::shared_ptr<StoreFile> m_store;
    FolderId m_folder;
    bool m_wholeTree;
    std::shared_ptr<const ComputedProperties> m_computed;
};

} // namespace

std::shared_ptr<RowSource> MakeHierarchyRows(std::shared_ptr<StoreFile> store, FolderId folder,
                                             bool wholeTree,
                                             std::shared_ptr<const ComputedProperties> computed)
{
    RequireFolder(*store, folder);
    return std::make_shared<HierarchyRows>(std::move(store), folder, wholeTree, std::move(computed));
}

} // namespace zebstore
