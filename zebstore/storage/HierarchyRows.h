// The folders below a folder as rows.
#pragma once

#include "zebstore/storage/ComputedProperties.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/StoreFile.h"

namespace zebstore
{

/// The folders below one folder; with `wholeTree` (CONVENIENT_DEPTH) those further down too, PR_DEPTH from 1. Gives
/// PR_DEPTH, PR_CONTENT_COUNT, PR_CONTENT_UNREAD, PR_ASSOC_CONTENT_COUNT, PR_SUBFOLDERS, PR_FOLDER_TYPE.
std::shared_ptr<RowSource> MakeHierarchyRows(std::shared_ptr<StoreFile> store, FolderId folder, bool wholeTree,
                                             std::shared_ptr<const ComputedProperties> computed);

} // namespace zebstore
