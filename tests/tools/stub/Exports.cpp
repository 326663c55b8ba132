// The exports that identify a library as a MAPI provider; they are never called. This file includes no MAPI header, so
// that they need no parameters.
#include "platform/export.h"

#define EXPORT(name)                                                                                                   \
    extern "C" ZEBAPI_EXPORT int name()                                                                                \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }

EXPORT(MAPIInitialize)
EXPORT(MAPIUninitialize)
EXPORT(MAPILogonEx)
EXPORT(MAPIOpenFormMgr)
EXPORT(MAPIAdminProfiles)
EXPORT(MAPIAllocateBuffer)
EXPORT(MAPIAllocateMore)
EXPORT(MAPIFreeBuffer)
EXPORT(CreateTable)
EXPORT(HrGetOneProp)
EXPORT(HrSetOneProp)
EXPORT(HrValidateIPMSubtree)
EXPORT(UlRelease)
EXPORT(FreeProws)
EXPORT(HrQueryAllRows)
EXPORT(FBinFromHex)
EXPORT(HexFromBin)
EXPORT(ScBinFromHexBounded)
EXPORT(ScCopyNotifications)
EXPORT(OpenIMsgOnIStg)
EXPORT(OpenStreamOnFile)
EXPORT(RTFSync)
