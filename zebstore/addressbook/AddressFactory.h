// Makes the objects of the address book.
#pragma once

#include "zebstore/addressbook/NewEntry.h"
#include "zebstore/objects/Access.h"
#include "zebstore/objects/StoreContext.h"

namespace zebstore
{

/// Makes the objects of the address book by their identifiers. Containers and lists, which open one another, get it
/// when they are made. Threads: any.
class AddressFactory
{
public:
    /// As OpenAddress does.
    virtual IUnknown* Open(const StorePtr& store, ULONG size, const void* id, const IID* iid, ULONG flags, Access most,
                           ULONG* objectType) const = 0;

    /// Implements IABContainer::CreateEntry and IDistList::CreateEntry: an object for a template, or for an entry that
    /// is copied into the global address list or becomes a member of a list.
    /// @param entry its list: 0 for the global address list
    virtual IMAPIProp* Create(const StorePtr& store, const NewEntry& entry, ULONG size, const void* id) const = 0;

protected:
    ~AddressFactory() = default;
};

} // namespace zebstore
