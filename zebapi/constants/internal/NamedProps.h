// The library's named properties, in the order in which stores are asked for them.
#pragma once

#include "platform/mapi.h"

namespace zeb
{

/// A named property: the property set, and the symbolic tag, whose id is the numeric name.
struct NamedProp
{
    const GUID* set;
    ULONG tag;
};

extern const NamedProp NamedProps[];
extern const ULONG NamedPropCount;

} // namespace zeb
