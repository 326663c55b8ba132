// The COM objects of the address book, as they are made.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/objects/Objects.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/RowSource.h"

#include <vector>

namespace zebstore
{

/// IAddrBook over the address book of a store.
Ref<IAddrBook> NewAddressBook(const StorePtr& store, Access access);

/// Opens anything of the address book by its identifier (no bytes: the root container).
/// @param iid null: the object's own interface
/// @param most what MAPI_BEST_ACCESS gives
/// @return the interface, for the caller
/// @throws Error MAPI_E_INVALID_ENTRYID, MAPI_E_NOT_FOUND, MAPI_E_NO_ACCESS
IUnknown* OpenAddress(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                      ULONG* objectType);

/// IABContainer over one of the three containers.
Ref<IABContainer> NewAddressContainer(const StorePtr& store, AddressKind kind, Access access);

/// What a new object of IABContainer::CreateEntry does when it is saved.
struct NewEntry
{
    AddressId list = 0; ///< the list that it becomes a member of; 0: none
    ULONG flags = 0;    ///< CREATE_CHECK_DUP_STRICT, CREATE_CHECK_DUP_LOOSE, CREATE_REPLACE
};

/// IMailUser or IDistList over an entry. User or List with the key 0: a new one, stored when it is saved.
/// @throws Error MAPI_E_NOT_FOUND
IMAPIProp* NewAddressEntry(const StorePtr& store, const AddressName& name, Access access, const NewEntry& entry = {});

/// Answers IABContainer::CreateEntry and IDistList::CreateEntry: an object for a template, or for an entry that is
/// copied (into the global address list) or becomes a member (of a list).
/// @param entry its list: 0 for the global address list
IMAPIProp* CreateAddressEntry(const StorePtr& store, const NewEntry& entry, ULONG size, const void* id);

/// Everything that is asked of entries in listings, of one entry. An entry that is not there any more, or of a foreign
/// address book, gives its identifier alone.
PropertySet RowOfEntry(const StorePtr& store, const void* id, size_t size);

/// The properties of an entry that others copy: all that is stored, and its address.
PropertySet ContentOfEntry(const StorePtr& store, const AddressName& name);

/// The identifiers of the members of a list, of the global address list or among the contacts.
std::vector<AddressEntryId> MembersOf(const StorePtr& store, const AddressName& list);

/// A list's member by its identifier. @throws Error MAPI_E_INVALID_ENTRYID for what can be no member
ListMember MemberOf(const StorePtr& store, const SBinary& id);

/// The rows of a table over one of the three containers, or over the members of a list.
std::shared_ptr<RowSource> MakeContainerRows(const StorePtr& store, AddressKind kind);
std::shared_ptr<RowSource> MakeMemberRows(const StorePtr& store, const AddressName& list);

/// The properties of a container as its parent's hierarchy table shows them.
PropertySet ContainerRow(const StorePtr& store, AddressKind kind, bool writable);
/// Their tags.
const std::vector<ULONG>& ContainerTags();
/// The containers below the root.
constexpr AddressKind Containers[] = {AddressKind::Directory, AddressKind::Contacts};

/// The entries that answer to a name.
struct NameMatches
{
    size_t count = 0;
    PropertySet entry; ///< when there is one alone
};
/// When several answer to `name` and it is the whole name of one alone, that one is meant.
/// @param columns of the entry; null: what is usual for recipients
NameMatches FindByName(RowSource& rows, const std::string& name, const SPropTagArray* columns);

/// Recipients, as callers hand them over: whether there is an identifier, the name that was typed (UTF-8), and the
/// properties of what was found, which replace those that were there.
bool IsResolved(const ADRENTRY& entry);
std::string NameToResolve(const ADRENTRY& entry);
void GiveProperties(ADRENTRY& entry, const PropertySet& found, bool unicode);

/// IABContainer::ResolveNames: gives each unresolved entry of `list` the properties of the one entry among `rows` that
/// answers to its PR_DISPLAY_NAME, and sets its flag.
/// @param columns null: what is usual for recipients
void ResolveNamesIn(RowSource& rows, const SPropTagArray* columns, ULONG flags, ADRLIST* list, FlagList* found);

} // namespace zebstore
