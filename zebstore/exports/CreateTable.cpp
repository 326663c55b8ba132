// CreateTable, which the provider does not support.
#include "zebstore/base/Guard.h"

using zebstore::Error;
using zebstore::Guarded;

SCODE WINAPI CreateTable(LPCIID, ALLOCATEBUFFER*, ALLOCATEMORE*, FREEBUFFER*, LPVOID, ULONG, ULONG, LPSPropTagArray,
                         LPTABLEDATA*)
{
    return Guarded("CreateTable", [] { throw Error(MAPI_E_NO_SUPPORT, "table data objects are not supported"); });
}
