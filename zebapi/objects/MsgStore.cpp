#include "zebapi/objects/MsgStore.h"

#include "platform/tags.h"
#include "zebapi/frame/Exception.h"
#include "zebapi/objects/internal/OpenEntry.h"
#include "zebapi/session/SESSION.h"
#include "zebapi/values/BinArray.h"

CZebMsgStore::CZebMsgStore(IMAPIProp* store)
    : CZebIProp(store)
{
}

CZebMsgStore::CZebMsgStore(const CZebMsgStore& other)
    : CZebIProp(nullptr)
{
    CZebMsgStore::operator=(other);
}

const GUID* CZebMsgStore::GetInterfaceCIID()
{
    return &IID_IMsgStore;
}

ULONG CZebMsgStore::GetMAPIType()
{
    return MAPI_STORE;
}

CComPtr<IMsgStore> CZebMsgStore::GetStore()
{
    return QueryFor<IMsgStore>(IID_IMsgStore);
}

CZebMsgStore& CZebMsgStore::operator=(const CZebMsgStore& other)
{
    CZebIProp::operator=(other);
    return *this;
}

CZebFolder CZebMsgStore::OpenRootFolder(ULONG flags)
{
    CZebFolder folder;
    OpenEntry(SBinary{0, nullptr}, folder, flags);
    return folder;
}

CZebFolder CZebMsgStore::OpenSpecialFolder(ULONG entryIdTag, ULONG flags)
{
    CZebFolder folder;
    OpenEntry(GetSpecialFolderEntryID(entryIdTag), folder, flags);
    return folder;
}

CZebBinary CZebMsgStore::GetSpecialFolderEntryID(ULONG entryIdTag)
{
    return GetBin(entryIdTag);
}

CZebFolder CZebMsgStore::OpenInboxFolder(ULONG flags)
{
    CComPtr<IMsgStore> store = GetStore();
    CZebEntryIDRequest inbox;
    ThrowIfFailed(store->GetReceiveFolder(nullptr, 0, inbox, inbox, nullptr), store);
    CZebFolder folder;
    OpenEntry(inbox, folder, flags);
    return folder;
}

CZebFolder CZebMsgStore::OpenContactsFolder(ULONG flags)
{
    CZebFolder inbox = OpenInboxFolder(MAPI_BEST_ACCESS);
    CZebFolder folder;
    OpenEntry(inbox.GetBin(PR_IPM_CONTACT_ENTRYID), folder, flags);
    return folder;
}

void CZebMsgStore::OpenEntry(const SBinary& entryId, CZebIProp& target, ULONG flags)
{
    CComPtr<IMsgStore> store = GetStore();
    const bool isWAB = IsWAB();
    zeb::OpenEntry(store.Checked(), entryId, target, flags);
    PassWAB(isWAB, target);
}

void CZebMsgStore::DeleteMessages(SBinaryArray* entryIds, bool hardDelete)
{
    if (entryIds == nullptr || entryIds->cValues == 0 || entryIds->lpbin == nullptr)
    {
        CZebException::Throw(MAPI_E_INVALID_PARAMETER);
    }
    CZebMessage first;
    OpenEntry(entryIds->lpbin[0], first, MAPI_BEST_ACCESS);
    CZebFolder folder;
    OpenEntry(first.GetParentID(), folder, MAPI_BEST_ACCESS);
    if (hardDelete)
    {
        folder.DeleteMessages(entryIds, nullptr, 0, nullptr);
        return;
    }
    CZebFolder deletedItems = OpenSpecialFolder(PR_IPM_WASTEBASKET_ENTRYID, MAPI_BEST_ACCESS);
    folder.MoveMessages(entryIds, deletedItems, 0, nullptr, nullptr);
}

void CZebMsgStore::DeleteMessage(const SBinary& entryId, bool hardDelete)
{
    CZebBinArray list(entryId);
    DeleteMessages(list, hardDelete);
}

bool CZebMsgStore::IsUnderDeleted(CZebSession& session, CZebIProp& item)
{
    return item.IsChildOf(session, GetSpecialFolderEntryID(PR_IPM_WASTEBASKET_ENTRYID), false);
}
