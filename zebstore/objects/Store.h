// IMsgStore.
#pragma once

#include "zebstore/objects/PropBase.h"

namespace zebstore
{

/// IMsgStore over an opened store.
Ref<IMsgStore> NewStore(const StorePtr& store, Access access);

} // namespace zebstore
