// RTFSync, which the provider does not support.
#include "zebstore/base/Guard.h"

using zebstore::Error;
using zebstore::Guarded;

HRESULT WINAPI RTFSync(LPMESSAGE, ULONG, BOOL*)
{
    return Guarded("RTFSync", [] { throw Error(MAPI_E_NO_SUPPORT, "RTF synchronization is not supported"); });
}
