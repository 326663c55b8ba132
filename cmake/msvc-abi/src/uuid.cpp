// uuid.lib: the identifiers of COM's and OLE's interfaces, defined by the headers that declare them.
#include <initguid.h> // first: from here on declarations of identifiers define them

#include <windows.h>

#include <objidl.h>

#include <oaidl.h>
#include <ocidl.h>
#include <oleidl.h>
#include <shobjidl.h>
#include <unknwn.h>

// The one that its header only declares.
DEFINE_OLEGUID(IID_IUnknown, 0, 0, 0);
