// Exports of the test provider that only have to exist. This file knows no MAPI header, so that they need no
// parameters.
#include "platform/export.h"

#define EXPORT(name)                                                                                                   \
    extern "C" ZEBAPI_EXPORT int name()                                                                                \
    {                                                                                                                  \
        return 0;                                                                                                      \
    }
#define EXPORT_BOTH(name, suffix) EXPORT(name) EXPORT(name##_##suffix)

EXPORT(MAPIOpenFormMgr)
EXPORT(OpenStreamOnFile)
EXPORT_BOTH(CreateTable, 36)
EXPORT_BOTH(UlRelease, 4)
EXPORT_BOTH(FBinFromHex, 8)
EXPORT_BOTH(HexFromBin, 12)
EXPORT_BOTH(ScBinFromHexBounded, 12)
EXPORT_BOTH(ScCopyNotifications, 16)
EXPORT_BOTH(OpenIMsgOnIStg, 44)
EXPORT_BOTH(RTFSync, 12)
