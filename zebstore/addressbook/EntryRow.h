// One entry of the address book as a row.
#pragma once

#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/PropertySet.h"

#include <vector>

namespace zebstore
{

/// The properties that listings show.
const std::vector<ULONG>& EntryRowTags();

/// All properties of one entry that listings show. For an entry that no longer exists, or belongs to another address
/// book: only its identifier.
PropertySet RowOfEntry(const StorePtr& store, const void* id, size_t size);

} // namespace zebstore
