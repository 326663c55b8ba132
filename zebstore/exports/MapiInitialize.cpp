// Start, stop, logon and profile administration; exports that the provider does not support.
#include "zebstore/exports/MapiInitialize.h"

#include "platform/thread.h"
#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/profiles/ProfAdmin.h"
#include "zebstore/session/Session.h"

#include <imessage.h>
#include <mapiform.h>

#include <mutex>

namespace zebstore
{
namespace
{

std::mutex g_lifeLock;
long g_users = 0;

} // namespace

bool IsInitialized()
{
    const std::lock_guard<std::mutex> hold(g_lifeLock);
    return g_users > 0;
}

} // namespace zebstore

using namespace zebstore;

HRESULT WINAPI MAPIInitialize(LPVOID init)
{
    {
        const std::lock_guard<std::mutex> hold(g_lifeLock);
        if (g_users == 0)
        {
            ApplySwitchesOfEnvironment();
        }
    }
    return Guarded("MAPIInitialize", [&]
    {
        const auto* options = static_cast<const MAPIINIT_0*>(init);
        if (options && options->ulVersion != MAPI_INIT_VERSION)
        {
            throw Error(MAPI_E_VERSION, "MAPIINIT_0 has an unknown version");
        }
        const std::lock_guard<std::mutex> hold(g_lifeLock);
        ++g_users;
    });
}

void WINAPI MAPIUninitialize()
{
    Guarded("MAPIUninitialize", [] {});
    {
        const std::lock_guard<std::mutex> hold(g_lifeLock);
        if (g_users == 0 || --g_users > 0)
        {
            return;
        }
    }
    if (zeb::platform::IsProcessEnding())
    {
        return TraceLiveCounts();
    }
    // Not under the lock: an advise sink in a call may query whether MAPI is started.
    Notifier::The().Stop();
    TraceLiveCounts();
}

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

HRESULT WINAPI MAPIAdminProfiles(ULONG flags, LPPROFADMIN* admin)
{
    return Guarded("MAPIAdminProfiles", [&]
    {
        Require(admin != nullptr, "the output pointer is null");
        *admin = nullptr;
        RequireFlags(flags, MAPI_UNICODE);
        if (!IsInitialized())
        {
            throw Error(MAPI_E_NOT_INITIALIZED, "MAPIInitialize has not been called");
        }
        *admin = NewProfAdmin();
    });
}

HRESULT WINAPI MAPIOpenFormMgr(LPMAPISESSION, LPMAPIFORMMGR*)
{
    return Guarded("MAPIOpenFormMgr", [] { throw Error(MAPI_E_NO_SUPPORT, "forms are not supported"); });
}

SCODE WINAPI CreateTable(LPCIID, ALLOCATEBUFFER*, ALLOCATEMORE*, FREEBUFFER*, LPVOID, ULONG, ULONG, LPSPropTagArray,
                         LPTABLEDATA*)
{
    return Guarded("CreateTable", [] { throw Error(MAPI_E_NO_SUPPORT, "table data objects are not supported"); });
}

SCODE WINAPI OpenIMsgOnIStg(LPMSGSESS, LPALLOCATEBUFFER, LPALLOCATEMORE, LPFREEBUFFER, LPMALLOC, LPVOID, LPSTORAGE,
                            MSGCALLRELEASE*, ULONG, ULONG, LPMESSAGE*)
{
    return Guarded("OpenIMsgOnIStg", [] { throw Error(MAPI_E_NO_SUPPORT, "message files are not supported"); });
}

HRESULT WINAPI RTFSync(LPMESSAGE, ULONG, BOOL*)
{
    return Guarded("RTFSync", [] { throw Error(MAPI_E_NO_SUPPORT, "RTF synchronization is not supported"); });
}
