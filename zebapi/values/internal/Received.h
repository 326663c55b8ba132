// Internal: values as MAPI objects give them, whose counts may come without the elements that they count.
#pragma once

#include "platform/mapi.h"

#include <cstring>

namespace zeb
{

/// The elements that there are: none where the pointer is null, whatever the count says.
inline ULONG CountOf(const void* elements, ULONG count)
{
    return elements != nullptr ? count : 0;
}

/// The binary, with a count of 0 where it has no bytes; the bytes stay the owner's.
inline SBinary Received(const SBinary& binary)
{
    return {CountOf(binary.lpb, binary.cb), binary.lpb};
}

/// Whether the value is of a type that keeps its contents elsewhere and points to none: nothing to copy with it.
inline bool PointsNowhere(const SPropValue& value)
{
    const auto& held = value.Value;
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_STRING8:
        return held.lpszA == nullptr;
    case PT_UNICODE:
        return held.lpszW == nullptr;
    case PT_CLSID:
        return held.lpguid == nullptr;
    case PT_BINARY:
        return held.bin.lpb == nullptr;
    default:
        // Every array is a count and a pointer.
        return (PROP_TYPE(value.ulPropTag) & MV_FLAG) != 0 && held.MVl.lpl == nullptr;
    }
}

} // namespace zeb
