// IMsgStore.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/objects/Access.h"
#include "zebstore/objects/StoreContext.h"

namespace zebstore
{

/// IMsgStore over an opened store.
Ref<IMsgStore> NewStore(const StorePtr& store, Access access);

} // namespace zebstore
