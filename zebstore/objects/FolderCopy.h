// Copies and moves of folders and of messages between stores.
#pragma once

#include "zebstore/objects/StoreContext.h"

#include <string>
#include <vector>

namespace zebstore
{

/// Parameters of a folder copy or move within one store or between two stores.
struct FolderCopy
{
    StorePtr source;
    FolderId folder;
    StorePtr target;
    FolderId targetParent;
    std::string newName; ///< UTF-8; empty: the folder's own
    bool move;
    bool subfolders;
};
/// Copies or moves the folder with its messages. @throws Error MAPI_E_FOLDER_CYCLE, MAPI_E_COLLISION
void CopyFolderTree(const FolderCopy& copy);

/// Copies or moves messages to a folder of another store. @return how many did not exist
size_t CopyMessagesBetween(StoreFile& source, const std::vector<MessageId>& messages, StoreFile& target,
                           FolderId folder, bool move);

} // namespace zebstore
