// Internal: what counts as a value.
#pragma once

#include "platform/mapi.h"

namespace zeb
{

/// Whether a property of this tag has a value: not PT_UNSPECIFIED, PT_NULL, PT_ERROR, and not null or empty
/// text.
inline bool HasRealValue(ULONG tag, const SPropValue& value)
{
    switch (PROP_TYPE(tag))
    {
    case PT_UNSPECIFIED:
    case PT_NULL:
    case PT_ERROR:
        return false;
    case PT_STRING8:
        return value.Value.lpszA != nullptr && *value.Value.lpszA != 0;
    case PT_UNICODE:
        return value.Value.lpszW != nullptr && *value.Value.lpszW != 0;
    default:
        return true;
    }
}

/// The index of the first of `count` values with the property identifier of `tag`, whatever its type; -1 for
/// none.
inline int FindPropID(const SPropValue* values, ULONG count, ULONG tag)
{
    for (ULONG i = 0; i < count; ++i)
    {
        if (((values[i].ulPropTag ^ tag) >> 16) == 0)
        {
            return static_cast<int>(i);
        }
    }
    return -1;
}

} // namespace zeb
