// Opens objects by identifier; results that several interfaces share.
#include "zebstore/objects/Objects.h"
#include "zebstore/objects/OpenFlags.h"
#include "zebstore/storage/MemoryRows.h"
#include "zebstore/tables/Table.h"

#include <cstring>

namespace zebstore
{

IUnknown* Answer(IUnknown* object, const IID* iid)
{
    if (!iid)
    {
        object->AddRef();
        return object;
    }
    void* asked = nullptr;
    if (FAILED(object->QueryInterface(*iid, &asked)))
    {
        throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "the object does not support the requested interface");
    }
    return static_cast<IUnknown*>(asked);
}

IUnknown* OpenItem(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                   ULONG* objectType)
{
    RequireFlags(flags, OpenEntryFlags | ShowSoftDeletes);
    const ItemId item = store->Parse(id, size);
    const Access access = AccessFor(flags, most);
    IUnknown* answer = nullptr;
    if (item.objectType == MAPI_FOLDER)
    {
        answer = Answer(OpenFolder(store, item.key, access).Get(), iid);
    }
    else
    {
        answer = Answer(OpenMessage(store, item.key, access).Get(), iid);
    }
    if (objectType)
    {
        *objectType = item.objectType;
    }
    return answer;
}

void GiveBytes(const void* bytes, size_t size, ULONG* sizeOut, ENTRYID** bytesOut)
{
    Require(sizeOut && bytesOut, "the output pointer is null");
    *bytesOut = static_cast<ENTRYID*>(CopyBytes(bytes, size, nullptr));
    *sizeOut = static_cast<ULONG>(size);
}

bool SameEntry(ULONG sizeA, const void* a, ULONG sizeB, const void* b)
{
    if ((sizeA && !a) || (sizeB && !b))
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

IMAPITable* NewMemoryTable(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns, ULONG flags)
{
    TableOptions options;
    options.unicode = (flags & MAPI_UNICODE) != 0;
    options.type = TBLTYPE_SNAPSHOT;
    auto source = std::make_shared<MemoryRows>(std::move(rows), std::move(defaultColumns));
    return CreateTable(std::move(source), options).Detach();
}

} // namespace zebstore
