// The Windows Address Book's face of the provider.
#pragma once

#include "zebstore/base/Object.h"

namespace zebstore
{

/// The IWABObject of WABOpen: memory for its host, freed by the same object or by MAPIFreeBuffer.
Ref<IWABObject> NewWabObject();

/// The address book of a store's file, or of the default profile's store when `file` is empty (UTF-8).
/// @throws Error MAPI_E_NOT_FOUND when there is no such file, or no default profile with a store
Ref<IAddrBook> OpenWabAddressBook(const std::string& file);

} // namespace zebstore
