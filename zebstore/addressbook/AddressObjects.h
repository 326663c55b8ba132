// Opens and creates the objects of the address book.
#pragma once

#include "zebstore/objects/Access.h"
#include "zebstore/objects/StoreContext.h"

namespace zebstore
{

/// Opens any object of the address book by its identifier (no bytes: the root container).
/// @param iid null: the object's own interface
/// @param most the access that MAPI_BEST_ACCESS grants
/// @return the interface, owned by the caller
/// @throws Error MAPI_E_INVALID_ENTRYID, MAPI_E_NOT_FOUND, MAPI_E_NO_ACCESS
IUnknown* OpenAddress(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                      ULONG* objectType);

} // namespace zebstore
