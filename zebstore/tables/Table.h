// IMAPITable over a row source.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/tables/TableOptions.h"

namespace zebstore
{

/// A new table: all rows, natural order, cursor before the first row. Opening reads nothing.
/// The table sees changes of its source at its next call: the cursor and bookmarks stay at their rows.
Ref<IMAPITable> CreateTable(std::shared_ptr<RowSource> rows, const TableOptions& options);

} // namespace zebstore
