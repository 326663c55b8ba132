// The contacts as rows of a table.
#pragma once

#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/RowSource.h"

#include <memory>

namespace zebstore
{

/// The contacts as rows, in the order in which their messages were created.
std::shared_ptr<RowSource> MakeContactRows(const StorePtr& store);

} // namespace zebstore
