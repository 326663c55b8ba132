#include "zebstore/objects/Access.h"

#include "zebstore/base/Error.h"

namespace zebstore
{

Access AccessFor(ULONG flags, Access most)
{
    if ((flags & MAPI_MODIFY) && most == Access::Read)
    {
        throw Error(MAPI_E_NO_ACCESS, "the store was opened for reading");
    }
    return flags & (MAPI_MODIFY | MAPI_BEST_ACCESS) ? most : Access::Read;
}

} // namespace zebstore
