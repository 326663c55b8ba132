// IABContainer.
#pragma once

#include "zebstore/addressbook/AddressFactory.h"
#include "zebstore/addressbook/AddressId.h"
#include "zebstore/base/Object.h"

namespace zebstore
{

/// IABContainer over one of the three containers: the root, the global address list, the contacts.
/// @param factory opens and creates the entries; it must outlive the container
Ref<IABContainer> NewAddressContainer(const StorePtr& store, AddressKind kind, Access access,
                                      const AddressFactory& factory);

} // namespace zebstore
