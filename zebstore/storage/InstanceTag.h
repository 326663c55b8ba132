// Tags for the single values of multi-valued properties.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// True for the tag of a column or sort key that asks for the single values of a multi-valued property.
constexpr bool IsInstanceTag(ULONG tag)
{
    return (PROP_TYPE(tag) & (MV_FLAG | MV_INSTANCE)) == (MV_FLAG | MV_INSTANCE);
}

} // namespace zebstore
