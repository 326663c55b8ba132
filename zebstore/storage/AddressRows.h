// The entries of the address book as rows.
#pragma once

#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/RowSource.h"

#include <memory>
#include <vector>

namespace zebstore
{

/// What an entry has beyond its stored properties: entry identifier, object type ... A computed property
/// hides a stored one of the same identifier. Threads: any.
class ComputedAddress
{
public:
    virtual ~ComputedAddress() = default;
    /// Adds the property with the identifier of `tag` to `out`. @return false when it is not computed
    virtual bool OfEntry(ULONG tag, AddressId address, ULONG type, PropertySet& out) const = 0;
    /// The tags of all that is computed.
    virtual const std::vector<ULONG>& Tags() const = 0;
};

/// The entries as rows; their natural order is that of their names.
std::shared_ptr<RowSource> MakeAddressRows(const AddressStorage& addresses,
                                           std::shared_ptr<const ComputedAddress> computed);

} // namespace zebstore
