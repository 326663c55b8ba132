// The store's COM objects, as they are made.
#pragma once

#include "zebstore/objects/PropBase.h"

namespace zebstore
{

/// IMsgStore over an opened store.
Ref<IMsgStore> NewStore(const StorePtr& store, Access access);

/// IMAPIFolder. @throws Error MAPI_E_NOT_FOUND when the folder is gone
Ref<IMAPIFolder> OpenFolder(const StorePtr& store, FolderId folder, Access access);

/// IMessage over a stored message. @throws Error MAPI_E_NOT_FOUND
Ref<IMessage> OpenMessage(const StorePtr& store, MessageId message, Access access);
/// A message that is stored when it is saved.
Ref<IMessage> NewMessage(const StorePtr& store, FolderId folder, bool associated);

/// Opens a folder or message by its identifier (empty: the root folder), as IMsgStore::OpenEntry does.
/// @param iid null: the object's own interface
/// @param most what MAPI_BEST_ACCESS gives
/// @return the interface, for the caller
IUnknown* OpenItem(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                   ULONG* objectType);

/// IMAPIFolder::OpenEntry and kin answer with this: `object` by the interface asked for, null: its own.
/// @throws Error MAPI_E_INTERFACE_NOT_SUPPORTED
IUnknown* Answer(IUnknown* object, const IID* iid);

/// Bytes in MAPI memory, for results that are a size and a pointer.
void GiveBytes(const void* bytes, size_t size, ULONG* sizeOut, ENTRYID** bytesOut);

/// True when both identifiers name the same; foreign ones are compared byte by byte.
bool SameEntry(ULONG sizeA, const void* a, ULONG sizeB, const void* b);

/// A table over rows in memory.
IMAPITable* NewMemoryTable(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns, ULONG flags);

} // namespace zebstore
