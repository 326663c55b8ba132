// Computed properties of address book entries: identifiers, types, and properties derived from an address.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/AddressRows.h"

#include <memory>
#include <vector>

namespace zebstore
{

/// MAPI_MAILUSER or MAPI_DISTLIST; MAPI_ABCONT for a container.
ULONG ObjectTypeOf(AddressKind kind);
/// DT_...
ULONG DisplayTypeOf(AddressKind kind);

/// The identifying properties of an entry: the tags of all of them.
const std::vector<ULONG>& ComputedEntryTags();
/// Adds the property with the identifier of `tag` to `out`. @return false when `tag` is not one of these
bool ComputeEntry(const StoreContext& store, const AddressName& name, ULONG tag, PropertySet& out);

/// PR_ADDRTYPE, PR_EMAIL_ADDRESS, and the properties derived from them: PR_SMTP_ADDRESS, PR_SEARCH_KEY. @return false
/// when `tag` is not one of these, or the address does not have the property
bool ComputeFromAddress(const std::string& type, const std::string& address, ULONG tag, PropertySet& out);

/// For the rows of the global address list.
std::shared_ptr<const ComputedAddress> MakeComputedAddress(const StorePtr& store);

} // namespace zebstore
