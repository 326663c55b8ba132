// IMAPITable over a row source.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/storage/RowSource.h"

namespace zebstore
{

struct TableOptions
{
    /// The table was asked for with MAPI_UNICODE: text in columns that were not set, and in columns of type
    /// PT_UNSPECIFIED, is PT_UNICODE; else PT_STRING8.
    bool unicode = false;
    /// PR_OBJECT_TYPE and the like do not matter to the table; its type for GetStatus: TBLTYPE_DYNAMIC,
    /// _KEYSET, _SNAPSHOT.
    ULONG type = TBLTYPE_DYNAMIC;
};

/// A new table: all rows, natural order, cursor before the first row. Opening reads nothing.
/// The table sees changes of its source at its next call: the cursor and bookmarks stay at their rows.
Ref<IMAPITable> CreateTable(std::shared_ptr<RowSource> rows, const TableOptions& options);

} // namespace zebstore
