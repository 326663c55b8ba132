// What happens to the folders and messages of a whole store.
#pragma once

#include "zebstore/storage/StoreFile.h"

#include <map>
#include <unordered_map>

namespace zebstore
{

/// Something that happened to a folder or a message.
struct StoreEvent
{
    enum class What
    {
        Created,
        Deleted,
        Modified,
        Moved, ///< folders only: a message that is moved is deleted and created
    };
    What what = What::Modified;
    bool isFolder = false;
    std::int64_t id = 0; ///< FolderId or MessageId
    FolderId parent = 0;
    FolderId oldParent = 0; ///< of what was moved
};

/// Remembers a store's state and reports how it has changed since. Events of one folder's messages come in the order of
/// their commits; where there are too many to be listed, the folder is Modified instead. The messages of a deleted
/// folder are not reported. Threads: one at a time.
class StoreChanges
{
public:
    /// Remembers the state as it is now.
    explicit StoreChanges(std::shared_ptr<StoreFile> store);

    /// What has happened since the last call.
    std::vector<StoreEvent> Next();

private:
    struct SeenFolder
    {
        FolderId parent = 0;
        std::string properties;
    };

    void LookAtFolders(std::vector<StoreEvent>& events);
    void LookAtContents(std::vector<StoreEvent>& events);
    static void List(std::vector<StoreEvent>& events, ContentsKey contents, FolderId parent, std::int64_t count,
                     std::string_view recent);

    const std::shared_ptr<StoreFile> m_store;
    std::uint64_t m_stamp = 0;
    std::uint64_t m_tree = 0;
    std::map<FolderId, SeenFolder> m_folders;
    std::unordered_map<std::int64_t, std::int64_t> m_changes; // change number by ContentsKey::Column
};

} // namespace zebstore
