// Message stores.
#pragma once

#include "zebapi/objects/Folder.h"
#include "zebapi/objects/IProp.h"

/// An opened message store.
///
/// Threads: none of its own; use one object from one thread at a time.
class ZEBAPI_EXPORT CZebMsgStore : public CZebIProp
{
public:
    const GUID* GetInterfaceCIID() override;
    /// MAPI_STORE.
    ULONG GetMAPIType() override;

protected:
    /// The object's IMsgStore.
    /// @throws _com_error E_POINTER when empty, E_NOINTERFACE when the object refuses
    virtual zeb::CComPtr<IMsgStore> GetStore();

public:
    /// Shares the object of other. Never throws.
    virtual CZebMsgStore& operator=(const CZebMsgStore& other);
    /// Opens the store's root folder: OpenEntry of an identifier without bytes.
    virtual CZebFolder OpenRootFolder(ULONG flags);
    /// Opens the folder whose identifier is the store's property entryIdTag (PR_IPM_OUTBOX_ENTRYID and the like).
    virtual CZebFolder OpenSpecialFolder(ULONG entryIdTag, ULONG flags);
    /// The store's property entryIdTag.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the store has none
    virtual CZebBinary GetSpecialFolderEntryID(ULONG entryIdTag);
    /// Opens the receive folder of every message class, by IMsgStore::GetReceiveFolder.
    virtual CZebFolder OpenInboxFolder(ULONG flags);
    /// Opens the contacts folder, which the inbox (not the store) names by PR_IPM_CONTACT_ENTRYID.
    virtual CZebFolder OpenContactsFolder(ULONG flags);
    /// Opens an object by IMsgStore::OpenEntry, asking for the target's interface; the target takes this
    /// object's WAB marking.
    /// @throws CZebException* MAPI_E_INVALID_TYPE when the target does not accept the object's type; the
    /// target is
    ///         empty then
    virtual void OpenEntry(const SBinary& entryId, CZebIProp& target, ULONG flags);
    /// Deletes messages, which must all be in the folder of the first one: permanently, or by moving them to the
    /// deleted items.
    /// @param entryIds  at least one identifier
    /// @throws CZebException* MAPI_E_INVALID_PARAMETER for none; the errors of opening the first message, its folder or
    /// the deleted items; nothing is deleted in that case
    virtual void DeleteMessages(SBinaryArray* entryIds, bool hardDelete);
    /// Deletes one message.
    virtual void DeleteMessage(const SBinary& entryId, bool hardDelete);
    /// Whether item is in the store's deleted items, at any depth.
    virtual bool IsUnderDeleted(CZebSession& session, CZebIProp& item);

    /// Adds a reference on store, which may be null.
    explicit CZebMsgStore(IMAPIProp* store = nullptr);
    /// Shares the object of other.
    CZebMsgStore(const CZebMsgStore& other);
};
