#include "zebstore/objects/CopyRequest.h"

namespace zebstore
{

bool Covers(const CopyRequest& request, ULONG tag)
{
    const auto names = [&](const SPropTagArray* tags)
    {
        for (ULONG i = 0; tags != nullptr && i < tags->cValues; ++i)
        {
            if (PROP_ID(tags->aulPropTag[i]) == PROP_ID(tag))
            {
                return true;
            }
        }
        return false;
    };
    return (request.include == nullptr || names(request.include)) && !names(request.exclude);
}

} // namespace zebstore
