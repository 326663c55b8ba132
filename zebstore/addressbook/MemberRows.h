// The members of a distribution list as rows of a table.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/RowSource.h"

#include <memory>

namespace zebstore
{

/// The rows of a table over the members of a list.
std::shared_ptr<RowSource> MakeMemberRows(const StorePtr& store, const AddressName& list);

} // namespace zebstore
