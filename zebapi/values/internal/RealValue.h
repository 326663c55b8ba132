// Internal: the definition of a real value.
#pragma once

#include "platform/mapi.h"

namespace zeb
{

/// Whether a property of this tag has a value: not PT_UNSPECIFIED, PT_NULL, PT_ERROR, and not null or empty text.
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

/// The index of the first of `count` values with the property identifier of `tag`, whatever its type; -1 for none.
inline int FindPropID(const SPropValue* values, ULONG count, ULONG tag)
{
    const ULONG id = PROP_ID(tag);
    const auto has = [=](ULONG i) { return PROP_ID(values[i].ulPropTag) == id; };
    ULONG i = 0;
    // Four at a time: arrays are built by one such search, or two, for each of their values.
    while (count - i >= 4 && !has(i) && !has(i + 1) && !has(i + 2) && !has(i + 3))
    {
        i += 4;
    }
    for (; i < count; ++i)
    {
        if (has(i))
        {
            return static_cast<int>(i);
        }
    }
    return -1;
}

} // namespace zeb
