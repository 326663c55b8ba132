// MAPIOpenFormMgr, which the provider does not support.
#include "zebstore/base/Guard.h"

#include <mapiform.h>

using zebstore::Error;
using zebstore::Guarded;

HRESULT WINAPI MAPIOpenFormMgr(LPMAPISESSION, LPMAPIFORMMGR*)
{
    return Guarded("MAPIOpenFormMgr", [] { throw Error(MAPI_E_NO_SUPPORT, "forms are not supported"); });
}
