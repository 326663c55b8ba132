// Functions that create the store's COM objects.
#pragma once

#include "zebstore/objects/PropBase.h"

namespace zebstore
{

/// IMsgStore over an opened store.
Ref<IMsgStore> NewStore(const StorePtr& store, Access access);

/// IMAPIFolder. @throws Error MAPI_E_NOT_FOUND when the folder no longer exists
Ref<IMAPIFolder> OpenFolder(const StorePtr& store, FolderId folder, Access access);

/// IMessage over a stored message. @throws Error MAPI_E_NOT_FOUND
Ref<IMessage> OpenMessage(const StorePtr& store, MessageId message, Access access);
/// A message that is stored when it is saved.
Ref<IMessage> NewMessage(const StorePtr& store, FolderId folder, bool associated);

/// Opens a folder or message by its identifier (empty: the root folder), as IMsgStore::OpenEntry does.
/// @param iid null: the object's own interface
/// @param most the access that MAPI_BEST_ACCESS grants
/// @return the interface, owned by the caller
IUnknown* OpenItem(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                   ULONG* objectType);

/// The result of IMAPIFolder::OpenEntry and the other OpenEntry methods: the requested interface of `object`; null: its
/// own interface.
/// @throws Error MAPI_E_INTERFACE_NOT_SUPPORTED
IUnknown* Answer(IUnknown* object, const IID* iid);

/// Bytes in MAPI memory, for results that are a size and a pointer.
void GiveBytes(const void* bytes, size_t size, ULONG* sizeOut, ENTRYID** bytesOut);

/// True when both identifiers name the same object; identifiers of other providers are compared byte by byte.
bool SameEntry(ULONG sizeA, const void* a, ULONG sizeB, const void* b);

/// A table over rows in memory.
IMAPITable* NewMemoryTable(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns, ULONG flags);

} // namespace zebstore
