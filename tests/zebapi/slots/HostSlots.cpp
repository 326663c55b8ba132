#include "tests/zebapi/slots/Slots.h"
#include "zebapi/Exception.h"
#include "zebapi/Mapiload.h"
#include "zebapi/Profiles.h"
#include "zebapi/SESSION.h"

namespace zeb::test
{

SLOTS(CZebAPI, 0, 17, 6)
SLOT(CZebAPI, 0, Unload, void())
SLOT(CZebAPI, 1, InitializeWAB, void())
SLOT(CZebAPI, 2, UninitializeWAB, void())
SLOT(CZebAPI, 3, InitializeMAPI, void())
SLOT(CZebAPI, 4, UninitializeMAPI, void(CZebSession* session))
SLOT(CZebAPI, 5, GetProfAdmin, CZebProfAdmin())
SLOT(CZebAPI, 7, IsWAB, bool())
SLOT(CZebAPI, 8, Initialize, void(bool wab))
SLOT(CZebAPI, 9, Uninitialize, void(CZebSession* session))
SLOT(CZebAPI, 10, OpenSession, CZebSession(HWND parent, const char* profileName))
SLOT(CZebAPI, 11, GetDefaultProfileName, CStringA())
SLOT(CZebAPI, 12, WasInitialized, bool())
SLOT(CZebAPI, 13, WasFailed, bool())
SLOT(CZebAPI, 14, SetWasFailed, void(bool failed))
SLOT(CZebAPI, 15, GetWABAddressBook, CZebAddressBook(bool newInstance))
SLOT(CZebAPI, 16, GetGlobalMAPICriticalSection, CCriticalSection*())

SLOTS(CZebProfileNames, 0, 1, 0)

SLOTS(CZebProfAdmin, 0, 7, 1)
SLOT(CZebProfAdmin, 0, Free, void())
SLOT(CZebProfAdmin, 2, operator=, CZebProfAdmin&(const CZebProfAdmin& other))
SLOT(CZebProfAdmin, 3, IsValid, bool() const)
SLOT(CZebProfAdmin, 4, Close, void())
SLOT(CZebProfAdmin, 5, GetProfileTable, CZebTable())
SLOT(CZebProfAdmin, 6, GetDefaultProfileName, CStringA())

SLOTS(CZebSession, 0, 11, 1)
SLOT(CZebSession, 0, Free, void())
SLOT(CZebSession, 2, operator=, CZebSession&(const CZebSession& other))
SLOT(CZebSession, 3, IsValid, bool() const)
SLOT(CZebSession, 4, Logoff, void(ULONG uiParam, ULONG flags, ULONG reserved))
SLOT(CZebSession, 5, GetMsgStoresTable, CZebTable())
SLOT(CZebSession, 6, OpenEntry, void(const SBinary& entryId, CZebIProp& target, ULONG flags))
SLOT(CZebSession, 7, OpenMsgStore, CZebMsgStore(const SBinary& entryId, HWND parent, ULONG flags))
SLOT(CZebSession, 8, OpenAddressBook, CZebAddressBook(HWND parent, ULONG flags))
SLOT(CZebSession, 9, OpenDefaultMsgStore, CZebMsgStore(HWND parent, ULONG flags))
SLOT(CZebSession, 10, CompareEntryIDs, bool(const SBinary& a, const SBinary& b))

SLOTS(CZebMsgStore, 44, 55, 3)
SLOT(CZebMsgStore, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebMsgStore, 5, GetMAPIType, ULONG())
SLOT(CZebMsgStore, 44, GetStore, CComPtr<IMsgStore>())
SLOT(CZebMsgStore, 45, operator=, CZebMsgStore&(const CZebMsgStore& other))
SLOT(CZebMsgStore, 46, OpenRootFolder, CZebFolder(ULONG flags))
SLOT(CZebMsgStore, 47, OpenSpecialFolder, CZebFolder(ULONG entryIdTag, ULONG flags))
SLOT(CZebMsgStore, 48, GetSpecialFolderEntryID, CZebBinary(ULONG entryIdTag))
SLOT(CZebMsgStore, 49, OpenInboxFolder, CZebFolder(ULONG flags))
SLOT(CZebMsgStore, 50, OpenContactsFolder, CZebFolder(ULONG flags))
SLOT(CZebMsgStore, 51, OpenEntry, void(const SBinary& entryId, CZebIProp& target, ULONG flags))
SLOT(CZebMsgStore, 52, DeleteMessages, void(SBinaryArray* entryIds, bool hardDelete))
SLOT(CZebMsgStore, 53, DeleteMessage, void(const SBinary& entryId, bool hardDelete))
SLOT(CZebMsgStore, 54, IsUnderDeleted, bool(CZebSession& session, CZebIProp& item))

SLOTS(CZebAddressBook, 44, 52, 3)
SLOT(CZebAddressBook, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebAddressBook, 5, GetMAPIType, ULONG())
SLOT(CZebAddressBook, 13, Free, void())
SLOT(CZebAddressBook, 44, GetAddrBook, CComPtr<IAddrBook>())
SLOT(CZebAddressBook, 45, operator=, CZebAddressBook&(const CZebAddressBook& other))
SLOT(CZebAddressBook, 46, OpenRootContainer, CZebABContainer(ULONG flags))
SLOT(CZebAddressBook, 47, OpenContainer, CZebContainer(const SBinary& entryID, ULONG flags))
SLOT(CZebAddressBook, 48, OpenEntry, void(const SBinary& entryID, CZebIProp& target, ULONG flags))
SLOT(CZebAddressBook, 49, GetDefaultDirEntryID, CZebBinary())
SLOT(CZebAddressBook, 50, OpenMainContainer, CZebContainer(const char* entryIDHex))
SLOT(CZebAddressBook, 51, CompareEntryIDs, bool(const char* entryIDHex1, const char* entryIDHex2))

SLOTS(CZebABContainer, 53, 53, 3)
SLOT(CZebABContainer, 5, GetMAPIType, ULONG())

SLOTS(CZebABItem, 44, 51, 3)
SLOT(CZebABItem, 4, GetInterfaceCIID, const GUID*())
SLOT(CZebABItem, 5, GetMAPIType, ULONG())
SLOT(CZebABItem, 6, IsMAPITypeAcceptable, bool(unsigned int type))
SLOT(CZebABItem, 44, operator=, CZebABItem&(const CZebABItem& other))
SLOT(CZebABItem, 45, operator=, CZebABItem&(const CZebDistList& other))
SLOT(CZebABItem, 46, operator=, CZebABItem&(const CZebMailUser& other))
SLOT(CZebABItem, 47, operator=, CZebABItem&(const CZebMessage& other))
SLOT(CZebABItem, 48, operator CZebDistList, CZebDistList() const)
SLOT(CZebABItem, 49, operator CZebMailUser, CZebMailUser() const)
SLOT(CZebABItem, 50, operator CZebMessage, CZebMessage() const)

SLOTS(CZebException, 8, 9, 1)
SLOT(CZebException, 0, GetRuntimeClass, CRuntimeClass*() const)
SLOT(CZebException, 5, GetErrorMessage, BOOL(char* buffer, unsigned int maxChars, unsigned int* helpContext))
SLOT(CZebException, 8, GetResult, HRESULT())

} // namespace zeb::test
