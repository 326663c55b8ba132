// OpenIMsgOnIStg, which the provider does not support.
#include "zebstore/base/Guard.h"

#include <imessage.h>

using zebstore::Error;
using zebstore::Guarded;

SCODE WINAPI OpenIMsgOnIStg(LPMSGSESS, LPALLOCATEBUFFER, LPALLOCATEMORE, LPFREEBUFFER, LPMALLOC, LPVOID, LPSTORAGE,
                            MSGCALLRELEASE*, ULONG, ULONG, LPMESSAGE*)
{
    return Guarded("OpenIMsgOnIStg", [] { throw Error(MAPI_E_NO_SUPPORT, "message files are not supported"); });
}
