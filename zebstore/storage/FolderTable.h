// The table `folder`: the folder tree.
#pragma once

#include "zebstore/storage/MessageTable.h"

#include <string_view>
#include <vector>

namespace zebstore
{

struct FolderInfo
{
    FolderId id = 0;
    FolderId parent = 0; ///< 0 for the root
    ULONG type = FOLDER_GENERIC;
    ULONG messages = 0; ///< normal ones
    ULONG unread = 0;   ///< of these
    ULONG associated = 0;
    ULONG subfolders = 0; ///< direct ones
    ULONG depth = 0;      ///< only from Under: 1 for a direct subfolder
};

/// As FILETIMEs; 0 where the file does not have them.
struct FolderTimes
{
    std::int64_t created = 0;
    std::int64_t modified = 0; ///< when its properties or its parent were last saved; rises with every save
};

/// Each public call that writes is one transaction, or a part of the caller's. Threads: any; the connection's lock is
/// taken inside. MAPI_E_NOT_FOUND for a folder that does not exist (any more).
class FolderTable
{
public:
    FolderTable(StoreConnection& connection, ContentsTable& contents, MessageTable& messages)
        : m_connection(connection)
        , m_contents(contents)
        , m_messages(messages)
    {
    }

    FolderInfo Info(FolderId folder);
    bool Exists(FolderId folder);
    /// @throws Error MAPI_E_NOT_FOUND
    void RequireExists(FolderId folder);
    PropertySet Properties(FolderId folder);
    FolderTimes Times(FolderId folder);
    /// Direct subfolders, or the whole tree below in depth-first order, siblings by name.
    std::vector<FolderInfo> Under(FolderId folder, bool wholeTree);
    /// Compares without case. @return 0 when there is none.
    FolderId Find(FolderId parent, std::string_view utf8Name);
    /// True when `folder` is `ancestor` or a folder below it.
    bool IsWithin(FolderId folder, FolderId ancestor);

    /// @param properties hold PR_DISPLAY_NAME
    /// @throws Error MAPI_E_COLLISION when the parent has a folder of this name, MAPI_E_INVALID_PARAMETER without a
    ///   name, MAPI_E_TOO_COMPLEX beyond 500 levels
    /// REQUIRES: with large values of another store, that the locks of both are held, taken at once.
    FolderId Create(FolderId parent, const PropertySet& properties, ULONG type = FOLDER_GENERIC);
    /// In the caller's transaction and without checks. @param id 0 takes the next one; @param parent 0 for the root
    FolderId Insert(FolderId id, FolderId parent, const PropertySet& properties, ULONG type);
    /// @throws Error MAPI_E_COLLISION when the new name is taken
    void SaveProperties(FolderId folder, const PropertySet& properties);
    /// @throws Error MAPI_E_HAS_FOLDERS, MAPI_E_HAS_MESSAGES when it has content that is not to be deleted with it,
    ///   MAPI_E_NO_ACCESS for a standard folder
    void Delete(FolderId folder, bool withMessages, bool withFolders);
    /// @throws Error MAPI_E_FOLDER_CYCLE, MAPI_E_COLLISION, MAPI_E_NO_ACCESS for a standard folder
    void Move(FolderId folder, FolderId newParent, std::string_view newUtf8Name);
    /// Deletes all messages and subfolders; standard folders below it are emptied and kept.
    void Empty(FolderId folder, bool withAssociated);

private:
    [[noreturn]] void ThrowGone(FolderId folder) const;
    /// @param isNew whether the folder is met for the first time on a way through the tree
    void RequireNoCycle(bool isNew, FolderId folder) const;
    void RefuseStandard(FolderId folder, const char* what) const;
    FolderId ParentOf(FolderId folder);
    void RequireNameIsFree(FolderId parent, std::string_view name, FolderId self);
    void RequireRoomBelow(FolderId parent);
    void ClearContents(FolderId folder);
    void DeleteRow(FolderId folder);

    StoreConnection& m_connection;
    ContentsTable& m_contents;
    MessageTable& m_messages;
};

} // namespace zebstore
