// Read or write access to an object.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// Whether an object may be changed through an interface that was given to a client.
enum class Access
{
    Read,
    Write,
};

/// The access that the flags of an open ask for (MAPI_MODIFY, MAPI_BEST_ACCESS), at most `most`.
/// @throws Error MAPI_E_NO_ACCESS when MAPI_MODIFY asks for more
Access AccessFor(ULONG flags, Access most);

} // namespace zebstore
