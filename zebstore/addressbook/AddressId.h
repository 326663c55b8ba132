// Entry identifiers of the address book.
#pragma once

#include "zebstore/base/EntryId.h"

#include <string>
#include <vector>

namespace zebstore
{

/// The kinds of objects that an identifier of the address book names.
enum class AddressKind
{
    Root,
    Directory,   ///< the global address list
    NewUser,     ///< template of IABContainer::CreateEntry for a mail user
    NewList,     ///< the same for a distribution list
    User,        ///< of the global address list
    List,        ///< of the global address list
    Contacts,    ///< the container of the contacts folder
    Contact,     ///< one address of a contact
    ContactList, ///< a distribution list among the contacts
    OneOff,      ///< an address without an entry in any list
};

struct AddressName
{
    AddressKind kind = AddressKind::Root;
    std::int64_t key = 0; ///< User, List: the entry; Contacts: the folder; Contact, ContactList: the message
    ULONG index = 0;      ///< Contact: which of its addresses, from 0
    // OneOff; UTF-8.
    std::string displayName, type, address;
    bool richInfo = true;
};

/// The UIDs of the four providers that form the address book.
extern const MAPIUID RootProvider;      ///< zebstore's own
extern const MAPIUID DirectoryProvider; ///< the UID by which hosts identify an Exchange address book
extern const MAPIUID ContactProvider;
extern const MAPIUID OneOffProvider;

using AddressEntryId = std::vector<BYTE>;

/// All identifiers are long-term: their flags are zero. Sizes in bytes, numbers little-endian.
///
/// Root: flags and provider UID. Directory and its entries: flags, UID, version 1 (4), kind (4: 0 user, 1 list, 0x100
/// the directory, 0x10000 and 0x10001 the two templates), the store's UID (16), the key (8), 8 check bytes. Contacts:
/// flags, UID, version 3 (4), kind (4: 3 folder, 4 user, 5 list), index (4), the size of the rest (4), for the folder 8
/// zeros, then the folder's or message's own identifier. One-off: flags, UID, flags (4; the top bit: 16-bit text),
/// display name, address type, address, each zero-terminated.
/// @param store the UID of the store file
/// @param name the name of an object of any kind except OneOff
AddressEntryId MakeAddressId(const MAPIUID& store, const AddressName& name);

/// A one-off identifier. @param unicode true: its text is 16-bit
AddressEntryId MakeOneOffId(const AddressName& name, bool unicode);

/// True when the provider UID is one of the address book's; the rest may still be truncated. No bytes: the root.
bool IsAddressId(const void* bytes, size_t size);

/// @throws Error MAPI_E_INVALID_ENTRYID when it is truncated, damaged, of another store, or not of the address book
AddressName ParseAddressId(const MAPIUID& store, const void* bytes, size_t size);

} // namespace zebstore
