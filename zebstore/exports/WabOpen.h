// The provider's Windows Address Book interface.
#pragma once

#include "zebstore/base/Object.h"

namespace zebstore
{

/// The IWABObject of WABOpen: allocates memory for its host; freed by the same object or by MAPIFreeBuffer.
Ref<IWABObject> NewWabObject();

/// The address book of a store's file, or of the default profile's store when `file` is empty (UTF-8).
/// @throws Error MAPI_E_NOT_FOUND when the file does not exist, or no default profile with a store
Ref<IAddrBook> OpenWabAddressBook(const std::string& file);

} // namespace zebstore
