#include "zebstore/objects/EntryIdBytes.h"

#include "zebstore/base/EntryId.h"
#include "zebstore/base/Memory.h"

#include <cstring>

namespace zebstore
{

void GiveBytes(const void* bytes, size_t size, ULONG* sizeOut, ENTRYID** bytesOut)
{
    Require(sizeOut != nullptr && bytesOut != nullptr, "the output pointer is null");
    *bytesOut = static_cast<ENTRYID*>(CopyBytes(bytes, size, nullptr));
    *sizeOut = static_cast<ULONG>(size);
}

bool SameEntry(ULONG sizeA, const void* a, ULONG sizeB, const void* b)
{
    if ((sizeA && a == nullptr) || (sizeB && b == nullptr))
    {
        throw Error(MAPI_E_INVALID_ENTRYID, "the entry identifier has no bytes");
    }
    // A store is the same wherever its file is: the path does not count.
    if (LooksLikeStoreEntryId(a, sizeA) && LooksLikeStoreEntryId(b, sizeB))
    {
        const StoreId first = ParseStoreEntryId(a, sizeA);
        const StoreId second = ParseStoreEntryId(b, sizeB);
        return std::memcmp(first.uid.ab, second.uid.ab, sizeof(MAPIUID)) == 0;
    }
    return sizeA == sizeB && (sizeA == 0 || std::memcmp(a, b, sizeA) == 0);
}

} // namespace zebstore
