// IWABObject.
#pragma once

#include "zebstore/base/Object.h"

namespace zebstore
{

/// The IWABObject of WABOpen: allocates memory for its host; freed by the same object or by MAPIFreeBuffer.
Ref<IWABObject> NewWabObject();

} // namespace zebstore
