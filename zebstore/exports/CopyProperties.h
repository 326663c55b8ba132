// Deep copies of property values.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// Copies `source` whole into `dest`; everything that it points to is allocated with `allocateMore` on `parent`.
/// @return MAPI_E_INVALID_TYPE for a type that is none (PT_OBJECT is copied as a number), or the allocator's code;
///         `dest` is then unchanged, what was allocated stays with `parent`.
SCODE CopyValue(SPropValue& dest, const SPropValue& source, ALLOCATEMORE* allocateMore, void* parent);

/// The same with the provider's own allocator. @throws Error
void CopyValue(SPropValue& dest, const SPropValue& source, void* parent);

/// The bytes that a value points to, without those of its SPropValue itself.
size_t SizeOfValue(const SPropValue& value);

} // namespace zebstore
