#include "tests/zebapi/slots/Slots.h"
#include "zebapi/Folder.h"
#include "zebapi/Message.h"
#include "zebapi/NAMEID.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/SESSION.h"

namespace zeb::test
{

SLOTS(CZebNameIdMap, 0, 7, 0)
SLOT(CZebNameIdMap, 1, EmptyIdMap, void())
SLOT(CZebNameIdMap, 2, GetCount, int() const)
SLOT(CZebNameIdMap, 3, SetTag, void(ULONG symbolicTag, ULONG realTag))
SLOT(CZebNameIdMap, 4, GetTag, ULONG(ULONG tag, bool mustExist) const)
SLOT(CZebNameIdMap, 5, GetName, ULONG(ULONG tag, bool mustExist) const)
SLOT(CZebNameIdMap, 6, operator=, CZebNameIdMap&(const CZebNameIdMap& other))

SLOTS(CZebNameIdHelper, 0, 5, 0)
SLOT(CZebNameIdHelper, 1, GetID, ULONG(ULONG index) const)
SLOT(CZebNameIdHelper, 2, GetTag, ULONG(ULONG index, ULONG type) const)
SLOT(CZebNameIdHelper, 3, operator MAPINAMEID**, MAPINAMEID**())
SLOT(CZebNameIdHelper, 4, operator ULONG, ULONG())

SLOTS(CZebIProp, 0, 44, 3)
SLOT(CZebIProp, 0, CheckIDsMap, void())
SLOT(CZebIProp, 1, SetWAB, void(CZebIProp& other))
SLOT(CZebIProp, 2, SetWAB, void(bool isWAB))
SLOT(CZebIProp, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebIProp, 5, GetMAPIType, ULONG())
SLOT(CZebIProp, 6, IsMAPITypeAcceptable, bool(unsigned int type))
SLOT(CZebIProp, 7, GetObjectType, ULONG() const)
SLOT(CZebIProp, 8, IsWAB, bool())
SLOT(CZebIProp, 9, operator=, CZebIProp&(const CZebIProp& other))
SLOT(CZebIProp, 10, operator&, IUnknown**())
SLOT(CZebIProp, 11, operator CZebIProp*, CZebIProp*())
SLOT(CZebIProp, 12, operator const CZebIProp*, const CZebIProp*() const)
SLOT(CZebIProp, 13, Free, void())
SLOT(CZebIProp, 14, IsValid, bool() const)
SLOT(CZebIProp, 15, GetTagsMap, CZebNameIdMap&())
SLOT(CZebIProp, 16, GetRealTag, ULONG(ULONG tag, bool flag))
SLOT(CZebIProp, 17, GetNameFromTag, ULONG(ULONG tag, bool flag))
SLOT(CZebIProp, 18, GetEntryID, CZebBinary())
SLOT(CZebIProp, 19, GetParentID, CZebBinary())
SLOT(CZebIProp, 20, GetDisplayNameA, CStringA())
SLOT(CZebIProp, 21, GetDisplayNameW, CStringW())
SLOT(CZebIProp, 22, GetDisplayName, CStringA())
SLOT(CZebIProp, 23, SetDisplayNameA, void(const char* name))
SLOT(CZebIProp, 24, SetDisplayNameW, void(const WCHAR* name))
SLOT(CZebIProp, 25, SetDisplayName, void(const char* name))
SLOT(CZebIProp, 26, GetDisplayNameTag, ULONG(bool unicode) const)
SLOT(CZebIProp, 27, GetStringPropA, CStringA(ULONG tag))
SLOT(CZebIProp, 28, GetStringPropW, CStringW(ULONG tag))
SLOT(CZebIProp, 29, GetStringProp, CStringA(ULONG tag))
SLOT(CZebIProp, 30, OpenProperty, CComPtr<IStream>(ULONG tag, ULONG flags))
SLOT(CZebIProp, 31, GetLongStringA, CStringA(ULONG tag))
SLOT(CZebIProp, 32, GetLongStringW, CStringW(ULONG tag))
SLOT(CZebIProp, 33, GetLongString, CStringA(ULONG tag))
SLOT(CZebIProp, 34, GetPropList, void(SPropTagArray** out, ULONG flags))
SLOT(CZebIProp, 35, GetAllProps, void(ULONG* count, SPropValue** values, ULONG flags))
SLOT(CZebIProp, 36, GetProps, void(CZebPropValArray& result, ULONG n, ...))
SLOT(CZebIProp, 37, GetProps, void(SPropTagArray* tags, ULONG* count, SPropValue** values, ULONG flags))
SLOT(CZebIProp, 38, SetProps, void(CZebPropValArray& values, bool save, SPropProblemArray** problems))
SLOT(CZebIProp, 39, SetProps, void(ULONG n, SPropValue* values, SPropProblemArray** problems))
SLOT(CZebIProp, 40, DeleteProps, void(SPropTagArray* tags, SPropProblemArray** problems))
SLOT(CZebIProp, 41, SaveChanges, void(ULONG flags))
SLOT(CZebIProp, 42, IsChildOf, bool(CZebSession& session, const SBinary& parentID, bool directOnly))
SLOT(CZebIProp, 43, DumpAllProps, void())

SLOTS(CZebContainer, 44, 53, 3)
SLOT(CZebContainer, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebContainer, 5, GetMAPIType, ULONG())
SLOT(CZebContainer, 44, GetContainer, CComPtr<IMAPIContainer>())
SLOT(CZebContainer, 45, operator CZebContainer*, CZebContainer*())
SLOT(CZebContainer, 46, operator const CZebContainer*, const CZebContainer*() const)
SLOT(CZebContainer, 47, operator=, CZebContainer&(const CZebContainer& other))
SLOT(CZebContainer, 48, OpenEntry, void(const SBinary& entryID, CZebIProp& target, ULONG flags))
SLOT(CZebContainer, 49, GetContentsTable, CZebTable(ULONG flags))
SLOT(CZebContainer, 50, GetHierarchyTable, CZebTable(ULONG flags))
SLOT(CZebContainer, 51, IsExchange, bool())
SLOT(CZebContainer, 52, GetABItemDisplayNameTagForContainer, ULONG(bool unicode) const)

SLOTS(CZebFolder, 53, 76, 3)
SLOT(CZebFolder, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebFolder, 5, GetMAPIType, ULONG())
SLOT(CZebFolder, 53, GetFolder, CComPtr<IMAPIFolder>())
SLOT(CZebFolder, 54, operator=, CZebFolder&(const CZebFolder& other))
SLOT(CZebFolder, 55, CreateFolder,
     CZebFolder(const char* name, bool hidden, bool save, ULONG flags, const char* comment, ULONG folderType))
SLOT(CZebFolder, 56, GetFolderEntryIdByNameA, CZebBinary(const char* name))
SLOT(CZebFolder, 57, GetFolderEntryIdByNameW, CZebBinary(const WCHAR* name))
SLOT(CZebFolder, 58, GetFolderEntryIdByName, CZebBinary(const char* name))
SLOT(CZebFolder, 59, OpenFolderByNameA, CZebFolder(const char* name))
SLOT(CZebFolder, 60, OpenFolderByNameW, CZebFolder(const WCHAR* name))
SLOT(CZebFolder, 61, OpenFolderByName, CZebFolder(const char* name))
SLOT(CZebFolder, 62, DeleteFolder,
     void(const SBinary& entryID, HWND parent, ULONG flags, IMAPIProgress* progress))
SLOT(CZebFolder, 63, DeleteMessages,
     void(SBinaryArray* list, HWND parent, ULONG flags, IMAPIProgress* progress))
SLOT(CZebFolder, 64, DeleteMessage, void(const SBinary& entryID))
SLOT(CZebFolder, 65, CopyMessages,
     void(SBinaryArray* list, CZebFolder& dest, ULONG flags, HWND parent, IMAPIProgress* progress))
SLOT(CZebFolder, 66, CopyMessage, void(const SBinary& entryID, CZebFolder& dest, ULONG flags))
SLOT(CZebFolder, 67, MoveMessages,
     void(SBinaryArray* list, CZebFolder& dest, ULONG flags, HWND parent, IMAPIProgress* progress))
SLOT(CZebFolder, 68, MoveMessage, void(const SBinary& entryID, CZebFolder& dest, ULONG flags))
SLOT(CZebFolder, 69, EmptyFolder, void(HWND parent, ULONG flags, IMAPIProgress* progress))
SLOT(CZebFolder, 70, CreateMessage, CZebMessage(CZebPropValArray& props, bool save, ULONG flags))
SLOT(CZebFolder, 71, CreateMessage, CZebMessage(ULONG flags))
SLOT(CZebFolder, 72, CreateQorInfoMessage, CZebMessage(bool openExisting, bool save))
SLOT(CZebFolder, 73, OpenQorInfoMessage, CZebMessage())
SLOT(CZebFolder, 74, GetPropsOfChild,
     void(CZebSession& session, const SBinary& childID, CZebPropValArray& result, ULONG n, ...))
SLOT(CZebFolder, 75, GetPropsOfChild,
     void(CZebSession& session, const SBinary& childID, SPropTagArray* tags, CZebPropValArray& result))

SLOTS(CZebMessage, 44, 46, 3)
SLOT(CZebMessage, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebMessage, 5, GetMAPIType, ULONG())
SLOT(CZebMessage, 44, GetMessageA, CComPtr<IMessage>())
SLOT(CZebMessage, 45, operator=, CZebMessage&(const CZebMessage& other))

SLOTS(CZebMailUser, 44, 45, 3)
SLOT(CZebMailUser, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebMailUser, 5, GetMAPIType, ULONG())
SLOT(CZebMailUser, 44, operator=, CZebMailUser&(const CZebMailUser& other))

SLOTS(CZebDistList, 53, 55, 3)
SLOT(CZebDistList, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebDistList, 5, GetMAPIType, ULONG())
SLOT(CZebDistList, 53, GetDistList, CComPtr<IDistList>())
SLOT(CZebDistList, 54, operator=, CZebDistList&(const CZebDistList& other))

SLOTS(CZebPropObj, 44, 44, 3)
SLOT(CZebPropObj, 6, IsMAPITypeAcceptable, bool(unsigned int type))

} // namespace zeb::test
