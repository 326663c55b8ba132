// The containers of the address book as rows, and the rows of each.
#pragma once

#include "zebstore/addressbook/AddressId.h"
#include "zebstore/objects/StoreContext.h"
#include "zebstore/storage/RowSource.h"

#include <memory>
#include <vector>

namespace zebstore
{

/// The properties of a container as its parent's hierarchy table shows them.
PropertySet ContainerRow(const StorePtr& store, AddressKind kind, bool writable);
/// Their tags.
const std::vector<ULONG>& ContainerTags();
/// The containers below the root.
constexpr AddressKind Containers[] = {AddressKind::Directory, AddressKind::Contacts};

/// The rows of a table over one of the three containers.
std::shared_ptr<RowSource> MakeContainerRows(const StorePtr& store, AddressKind kind);

} // namespace zebstore
