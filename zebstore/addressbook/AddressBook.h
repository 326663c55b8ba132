// IAddrBook.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/objects/Access.h"
#include "zebstore/objects/StoreContext.h"

namespace zebstore
{

/// IAddrBook over the address book of a store.
Ref<IAddrBook> NewAddressBook(const StorePtr& store, Access access);

} // namespace zebstore
