// Internal: equality of property values.
#pragma once

#include "platform/mapi.h"

namespace zeb
{

/// Whether both have the same type and equal values; their identifiers may differ. Null text counts as empty.
/// False for the types that never compare equal (PT_ERROR, PT_OBJECT and the arrays that CZebOnePropVal does not take).
bool SameValue(const SPropValue& a, const SPropValue& b);

} // namespace zeb
