// MAPIAdminProfiles: administers profiles.
#include "zebstore/base/Guard.h"
#include "zebstore/exports/MapiInitialize.h"
#include "zebstore/profiles/ProfAdmin.h"

using namespace zebstore;

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
