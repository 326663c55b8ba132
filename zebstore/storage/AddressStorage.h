// The address book's part of a store file: mail users, distribution lists and their members.
#pragma once

#include "zebstore/storage/StoreFile.h"

#include <memory>
#include <string>
#include <vector>

namespace zebstore
{

/// Entries are numbered from 1; a number is never given twice.
using AddressId = std::int64_t;

struct StoredAddress
{
    AddressId id = 0;
    ULONG type = MAPI_MAILUSER;
    std::int64_t change = 0; ///< rises with each save of this entry
    PropertySet properties;
};

/// One member of a list: an entry of the same file, or any other by its entry identifier.
struct ListMember
{
    AddressId address = 0;
    std::string entry; ///< when there is no `address`

    bool operator==(const ListMember& other) const { return address == other.address && entry == other.entry; }
};

/// The entries of a store file. A handle: copies mean the same address book.
///
/// What StoreFile says of transactions, threads and errors holds here too. In a file of an older version that was
/// opened for reading the address book is empty. Lists may contain each other and themselves.
class AddressStorage
{
public:
    explicit AddressStorage(std::shared_ptr<StoreFile> store);

    StoreFile& File() const { return *m_store; }
    const std::shared_ptr<StoreFile>& SharedFile() const { return m_store; }

    /// Entries; does not scan.
    ULONG Count() const;
    /// Rises whenever an entry or a member may have changed, also by another process.
    std::uint64_t Generation() const;

    /// What is kept of the address book itself.
    PropertySet Properties() const;
    void SaveProperties(const PropertySet& properties) const;

    bool Exists(AddressId address) const;
    /// @throws Error MAPI_E_NOT_FOUND
    StoredAddress Load(AddressId address) const;
    /// @param type MAPI_MAILUSER or MAPI_DISTLIST
    /// @param properties hold PR_DISPLAY_NAME
    /// @param list the new entry becomes a member of it; 0: of none
    AddressId Create(ULONG type, const PropertySet& properties, AddressId list = 0) const;
    /// The entries with this display name, in any letter case.
    std::vector<AddressId> Named(std::string_view displayName) const;
    /// @param change the StoredAddress::change that the properties are based on; 0 overwrites whatever is there
    /// @return the entry's new change number
    /// @throws Error MAPI_E_OBJECT_CHANGED when it was saved in the meantime, MAPI_E_OBJECT_DELETED when it is gone
    std::int64_t Save(AddressId address, const PropertySet& properties, std::int64_t change) const;
    /// Deletes entries, and with them their membership in lists; those that are not there are passed over.
    /// @return how many were deleted
    size_t Delete(const std::vector<AddressId>& addresses) const;

    /// In the order in which they were added. @throws Error MAPI_E_NOT_FOUND
    std::vector<ListMember> Members(AddressId list) const;
    /// Those that are members already are passed over. @throws Error MAPI_E_NOT_FOUND
    void AddMembers(AddressId list, const std::vector<ListMember>& members) const;
    /// Those that are no members are passed over. @return how many were removed
    size_t RemoveMembers(AddressId list, const std::vector<ListMember>& members) const;

private:
    bool IsThere() const;
    void Touch(std::int64_t rows) const;
    void RequireList(AddressId list) const;

    std::shared_ptr<StoreFile> m_store;
};

} // namespace zebstore
