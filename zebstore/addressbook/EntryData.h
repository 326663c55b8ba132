// The content of one entry of the address book.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/addressbook/Contacts.h"
#include "zebstore/addressbook/NewEntry.h"
#include "zebstore/objects/StoreContext.h"

#include <functional>
#include <vector>

namespace zebstore
{

/// The properties of one entry from any source: the global address list, a contact's message, or the identifier itself.
/// Changes to an entry of the global address list stay here until it is saved; other entries are read-only. Threads:
/// the object's lock.
class EntryData
{
public:
    /// Loads the entry at once. @throws Error MAPI_E_NOT_FOUND
    EntryData(const StorePtr& store, AddressName name, const NewEntry& entry);

    const AddressName& Name() const { return m_name; }
    const PropertySet& Stored();
    const std::vector<ULONG>& ComputedTags() const;
    bool Compute(ULONG tag, PropertySet& out);
    void Edit(const std::function<void(PropertySet&)>& change);
    /// Stores the changes; a new entry is always stored.
    /// @throws Error MAPI_E_MISSING_REQUIRED_COLUMN without a name, MAPI_E_COLLISION, MAPI_E_OBJECT_CHANGED
    void Save(bool force);
    /// The content of a new entry.
    void Fill(PropertySet properties);

private:
    bool IsOfDirectory() const { return m_name.kind == AddressKind::User || m_name.kind == AddressKind::List; }
    void Load();
    void Complete();
    bool IsDuplicate(AddressId other);
    AddressId Duplicate();

    const StorePtr m_store;
    const AddressStorage m_addresses;
    AddressName m_name;
    NewEntry m_new;
    ContactTags m_tags;
    PropertySet m_properties;
    std::int64_t m_change = 0;
    bool m_loaded = false;
    bool m_dirty = false;
};

} // namespace zebstore
