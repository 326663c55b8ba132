// The messages of a folder as rows.
#pragma once

#include "zebstore/storage/ComputedProperties.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/StoreFile.h"

namespace zebstore
{

/// The messages of one folder. @throws Error MAPI_E_NOT_FOUND
std::shared_ptr<RowSource> MakeContentsRows(std::shared_ptr<StoreFile> store, ContentsKey contents,
                                            std::shared_ptr<const ComputedProperties> computed);

} // namespace zebstore
