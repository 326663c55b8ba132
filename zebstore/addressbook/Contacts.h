// Maps the messages of the contacts folder to entries of the address book.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/PropertySet.h"

#include <string>
#include <vector>

namespace zebstore
{

/// A message of class IPM.Contact is a mail user for each of its e-mail addresses (three at most), and one without an
/// address when it has none; a message of class IPM.DistList is a distribution list; others are no entries.
constexpr ULONG MostContactAddresses = 3;

/// The tags of the named properties in which contacts keep their addresses, in one store; 0 for a name that the store
/// does not know.
struct ContactTags
{
    ULONG displayName[MostContactAddresses] = {};
    ULONG type[MostContactAddresses] = {};
    ULONG address[MostContactAddresses] = {};
    ULONG members = 0; ///< of an IPM.DistList
};
ContactTags ContactTagsOf(StoreFile& store);

/// The properties in which a contact's entry differs from its message: identifier, type, name and address. The tags of
/// all of them.
const std::vector<ULONG>& ComputedContactTags();

/// Adds the property with the identifier of `tag` to `out`. @param message the message's properties
/// @return false when it is not computed, or the contact has no such property
bool ComputeContact(const StoreContext& store, const ContactTags& tags, const AddressName& contact,
                    const ValueSource& message, ULONG tag, PropertySet& out);

/// The entry identifiers of the members of a list among the contacts.
std::vector<std::string> ContactListMembers(const ContactTags& tags, const PropertySet& message);

/// The entries that a message of the contacts folder yields.
std::vector<AddressName> ContactsIn(const ContactTags& tags, MessageId message, const ValueSource& values);

} // namespace zebstore
