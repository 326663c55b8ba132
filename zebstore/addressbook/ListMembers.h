// The members of distribution lists.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/AddressStorage.h"

#include <vector>

namespace zebstore
{

/// The identifiers of the members of a list, of the global address list or among the contacts.
std::vector<AddressEntryId> MembersOf(const StorePtr& store, const AddressName& list);

/// A list's member by its identifier. @throws Error MAPI_E_INVALID_ENTRYID for an identifier that cannot be a member
ListMember MemberOf(const StorePtr& store, const SBinary& id);

} // namespace zebstore
