// Internal: values received from MAPI objects, whose counts may be set without elements.
#pragma once

#include "platform/mapi.h"

#include <cstring>

namespace zeb
{

/// The number of elements: 0 when the pointer is null, whatever the count is.
inline ULONG CountOf(const void* elements, ULONG count)
{
    return elements != nullptr ? count : 0;
}

/// The binary, with a count of 0 when it has no bytes; the bytes are borrowed.
inline SBinary Received(const SBinary& binary)
{
    return {CountOf(binary.lpb, binary.cb), binary.lpb};
}

/// Whether the value has a pointer type and the pointer is null: no data to copy.
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
