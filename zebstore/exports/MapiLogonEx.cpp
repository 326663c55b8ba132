// MAPILogonEx: opens a session.
#include "zebstore/base/Guard.h"
#include "zebstore/exports/MapiInitialize.h"
#include "zebstore/session/Session.h"

using namespace zebstore;

HRESULT WINAPI MAPILogonEx(ULONG_PTR, LPTSTR profile, LPTSTR, ULONG flags, LPMAPISESSION* session)
{
    return Guarded("MAPILogonEx", [&]
    {
        Require(session != nullptr, "the output pointer is null");
        *session = nullptr;
        if (!IsInitialized())
        {
            throw Error(MAPI_E_NOT_INITIALIZED, "MAPIInitialize has not been called");
        }
        *session = Logon(profile, flags);
    });
}
