// Deep copies of property values.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// Makes a deep copy of `source` in `dest`; all data that it points to is allocated with `allocateMore` on `parent`.
/// @return MAPI_E_INVALID_TYPE for an unknown type (PT_OBJECT is copied as a number), or the allocator's code. On
/// failure `dest` is unchanged; memory already allocated stays with `parent`.
SCODE CopyValue(SPropValue& dest, const SPropValue& source, ALLOCATEMORE* allocateMore, void* parent);

/// The same with the provider's own allocator. @throws Error
void CopyValue(SPropValue& dest, const SPropValue& source, void* parent);

} // namespace zebstore
