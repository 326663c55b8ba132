// Entry identifiers as callers give and get them.
#pragma once

#include "platform/mapi.h"

#include <cstddef>

namespace zebstore
{

/// Bytes in MAPI memory, for results that are a size and a pointer.
void GiveBytes(const void* bytes, size_t size, ULONG* sizeOut, ENTRYID** bytesOut);

/// True when both identifiers name the same object; identifiers of other providers are compared byte by byte.
bool SameEntry(ULONG sizeA, const void* a, ULONG sizeB, const void* b);

} // namespace zebstore
