// CopyTo and CopyProps for the messages and subfolders of a folder.
#pragma once

#include "zebstore/objects/StoreContext.h"

namespace zebstore
{

/// The content of one folder to copy to another one.
struct FolderContents
{
    StorePtr source;
    FolderId folder = 0;
    StorePtr target;
    FolderId into = 0;
    bool messages = false;
    bool associated = false;
    bool subfolders = false;
    bool move = false;
};
/// @throws Error MAPI_E_FOLDER_CYCLE, MAPI_E_COLLISION (a subfolder's name is taken), MAPI_E_NO_ACCESS (a standard
/// folder would be moved) when not all of it can be copied
void RequireContentsFit(const FolderContents& contents);
/// Copies or moves them in steps; on failure the finished steps stay and nothing is lost.
/// @param progress receives the steps; may be null
void CopyFolderContents(const FolderContents& contents, IMAPIProgress* progress);

} // namespace zebstore
