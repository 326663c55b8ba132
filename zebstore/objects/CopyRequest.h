// The arguments of IMAPIProp::CopyTo and CopyProps.
#pragma once

#include "platform/mapi.h"

namespace zebstore
{

/// What one call copies from one object to another.
struct CopyRequest
{
    IMAPIProp* source;
    IMAPIProp* target;
    const SPropTagArray* include; ///< null: all
    const SPropTagArray* exclude; ///< may be null
    ULONG flags;                  ///< MAPI_NOREPLACE, MAPI_MOVE
    bool parts;                   ///< false: only values; the interface of the parts is excluded
    IMAPIProgress* progress;      ///< may be null
};

/// True when the request covers the property with the identifier of `tag`.
bool Covers(const CopyRequest& request, ULONG tag);

} // namespace zebstore
