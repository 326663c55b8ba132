// How a table was asked for.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

struct TableOptions
{
    /// The table was asked for with MAPI_UNICODE: text in columns that were not set, and in columns of type
    /// PT_UNSPECIFIED, is PT_UNICODE; else PT_STRING8.
    bool unicode = false;
    /// For GetStatus: TBLTYPE_DYNAMIC, _KEYSET, _SNAPSHOT.
    ULONG type = TBLTYPE_DYNAMIC;
};

} // namespace zebstore
