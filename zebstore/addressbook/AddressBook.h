// Functions that create the COM objects of the address book.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/objects/PropBase.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/RowSource.h"

#include <vector>

namespace zebstore
{

/// IAddrBook over the address book of a store.
Ref<IAddrBook> NewAddressBook(const StorePtr& store, Access access);

/// Opens any object of the address book by its identifier (no bytes: the root container).
/// @param iid null: the object's own interface
/// @param most the access that MAPI_BEST_ACCESS grants
/// @return the interface, owned by the caller
/// @throws Error MAPI_E_INVALID_ENTRYID, MAPI_E_NOT_FOUND, MAPI_E_NO_ACCESS
IUnknown* OpenAddress(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                      ULONG* objectType);

/// IABContainer over one of the three containers.
Ref<IABContainer> NewAddressContainer(const StorePtr& store, AddressKind kind, Access access);

/// What saving a new object of IABContainer::CreateEntry does.
struct NewEntry
{
    AddressId list = 0; ///< the list that it becomes a member of; 0: none
    ULONG flags = 0;    ///< CREATE_CHECK_DUP_STRICT, CREATE_CHECK_DUP_LOOSE, CREATE_REPLACE
};

/// IMailUser or IDistList over an entry. User or List with the key 0: a new one, stored when it is saved.
/// @throws Error MAPI_E_NOT_FOUND
IMAPIProp* NewAddressEntry(const StorePtr& store, const AddressName& name, Access access, const NewEntry& entry = {});

/// Implements IABContainer::CreateEntry and IDistList::CreateEntry: an object for a template, or for an entry that is
/// copied into the global address list or becomes a member of a list.
/// @param entry its list: 0 for the global address list
IMAPIProp* CreateAddressEntry(const StorePtr& store, const NewEntry& entry, ULONG size, const void* id);

/// All properties of one entry that listings show. For an entry that no longer exists, or belongs to another address
/// book: only its identifier.
PropertySet RowOfEntry(const StorePtr& store, const void* id, size_t size);

/// The properties of an entry that copies take over: all stored properties, and its address.
PropertySet ContentOfEntry(const StorePtr& store, const AddressName& name);

/// The identifiers of the members of a list, of the global address list or among the contacts.
std::vector<AddressEntryId> MembersOf(const StorePtr& store, const AddressName& list);

/// A list's member by its identifier. @throws Error MAPI_E_INVALID_ENTRYID for an identifier that cannot be a member
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

/// The entries that match a name.
struct NameMatches
{
    size_t count = 0;
    PropertySet entry; ///< when exactly one matches
};
/// When several entries match `name` and it is the full name of exactly one, that entry is the result.
/// @param columns of the entry; null: the default columns of recipients
NameMatches FindByName(RowSource& rows, const std::string& name, const SPropTagArray* columns);

/// Helpers for a caller's recipients: whether one has an identifier, the typed name (UTF-8), and its properties after
/// resolution, which replace the earlier ones.
bool IsResolved(const ADRENTRY& entry);
std::string NameToResolve(const ADRENTRY& entry);
void GiveProperties(ADRENTRY& entry, const PropertySet& found, bool unicode);

/// IABContainer::ResolveNames: gives each unresolved entry of `list` the properties of the one entry among `rows` that
/// matches its PR_DISPLAY_NAME, and sets its flag.
/// @param columns null: the default columns of recipients
void ResolveNamesIn(RowSource& rows, const SPropTagArray* columns, ULONG flags, ADRLIST* list, FlagList* found);

} // namespace zebstore
