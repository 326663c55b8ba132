// Doubles of containers, folders, distribution lists and messages.
#pragma once

#include "tests/support/doubles/RecordingProp.h"

namespace zeb::test
{

/// IMAPIContainer, for any interface derived from it.
template <class Interface>
class RecordingContainerOf : public RecordingPropOf<Interface>
{
public:
    using RecordingPropOf<Interface>::RecordingPropOf;

    static constexpr ULONG SoftDeleted = 2;

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override
    {
        const ProviderScope inside;
        *table = nullptr;
        const HRESULT result =
            this->Called("GetContentsTable", Number(flags),
                         RefuseFlags(flags, MAPI_ASSOCIATED | MAPI_DEFERRED_ERRORS | MAPI_UNICODE | SoftDeleted));
        return this->GivesNoObject(result) ? result : this->HandOut(m_contents, table);
    }
    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override
    {
        const ProviderScope inside;
        *table = nullptr;
        const HRESULT result =
            this->Called("GetHierarchyTable", Number(flags),
                         RefuseFlags(flags, CONVENIENT_DEPTH | MAPI_DEFERRED_ERRORS | MAPI_UNICODE | SoftDeleted));
        return this->GivesNoObject(result) ? result : this->HandOut(m_hierarchy, table);
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG count, LPENTRYID entryID, LPCIID iid, ULONG flags, ULONG* type,
                                        LPUNKNOWN* object) override
    {
        const ProviderScope inside;
        const HRESULT result = this->Called("OpenEntry", OpenArguments(count, entryID, iid, flags, type, object),
                                            RefuseOpen(count, entryID, flags));
        return this->GivesNoObject(result) ? result : m_openable.Open(count, entryID, type, object);
    }
    HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override
    {
        return this->Unexpected("SetSearchCriteria");
    }
    HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override
    {
        return this->Unexpected("GetSearchCriteria");
    }

    Openable m_openable;
    IMAPITable* m_contents = nullptr;
    IMAPITable* m_hierarchy = nullptr;
};

class RecordingContainer : public RecordingContainerOf<IMAPIContainer>
{
public:
    explicit RecordingContainer(Journal& journal, std::string name = "container")
        : RecordingContainerOf<IMAPIContainer>(journal, std::move(name),
                                               {&IID_IUnknown, &IID_IMAPIProp, &IID_IMAPIContainer})
    {
    }
};

class RecordingDistList : public RecordingContainerOf<IDistList>
{
public:
    explicit RecordingDistList(Journal& journal, std::string name = "list")
        : RecordingContainerOf<IDistList>(journal, std::move(name),
                                          {&IID_IUnknown, &IID_IMAPIProp, &IID_IMAPIContainer, &IID_IDistList})
    {
    }
    HRESULT STDMETHODCALLTYPE CreateEntry(ULONG, LPENTRYID, ULONG, LPMAPIPROP*) override
    {
        return Unexpected("CreateEntry");
    }
    HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override
    {
        return Unexpected("CopyEntries");
    }
    HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST, ULONG) override { return Unexpected("DeleteEntries"); }
    HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray, ULONG, LPADRLIST, LPFlagList) override
    {
        return Unexpected("ResolveNames");
    }
};

class RecordingMessage : public RecordingPropOf<IMessage>
{
public:
    explicit RecordingMessage(Journal& journal, std::string name = "message")
        : RecordingPropOf<IMessage>(journal, std::move(name), {&IID_IUnknown, &IID_IMAPIProp, &IID_IMessage})
    {
    }
    HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG flags, LPMAPITABLE* table) override
    {
        const ProviderScope inside;
        *table = nullptr;
        const HRESULT result =
            Called("GetAttachmentTable", Number(flags), RefuseFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS));
        return this->GivesNoObject(result) ? result : HandOut(m_attachments, table);
    }
    HRESULT STDMETHODCALLTYPE OpenAttach(ULONG number, LPCIID iid, ULONG flags, LPATTACH* attachment) override
    {
        const ProviderScope inside;
        *attachment = nullptr;
        const HRESULT result = Called("OpenAttach", Number(number) + "," + Name(iid) + "," + Number(flags),
                                      RefuseFlags(flags, MAPI_BEST_ACCESS | MAPI_MODIFY | MAPI_DEFERRED_ERRORS));
        return this->GivesNoObject(result) ? result : HandOut(m_attachment, attachment);
    }
    HRESULT STDMETHODCALLTYPE CreateAttach(LPCIID iid, ULONG flags, ULONG* number, LPATTACH* attachment) override
    {
        const ProviderScope inside;
        *attachment = nullptr;
        const HRESULT result =
            Called("CreateAttach", Name(iid) + "," + Number(flags), RefuseFlags(flags, MAPI_DEFERRED_ERRORS));
        if (SUCCEEDED(result))
        {
            *number = 7;
        }
        return this->GivesNoObject(result) ? result : HandOut(m_attachment, attachment);
    }
    HRESULT STDMETHODCALLTYPE DeleteAttach(ULONG number, ULONG_PTR window, LPMAPIPROGRESS progress,
                                           ULONG flags) override
    {
        const ProviderScope inside;
        return Called("DeleteAttach",
                      Number(number) + "," + Number(window) + ",progress " + Null(progress) + "," + Number(flags),
                      RefuseFlags(flags, ATTACH_DIALOG));
    }
    HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG flags, LPMAPITABLE* table) override
    {
        const ProviderScope inside;
        *table = nullptr;
        const HRESULT result =
            Called("GetRecipientTable", Number(flags), RefuseFlags(flags, MAPI_UNICODE | MAPI_DEFERRED_ERRORS));
        return this->GivesNoObject(result) ? result : HandOut(m_recipients, table);
    }
    /// Takes one way of changing at a time; what is changed or removed must be named by its row.
    HRESULT STDMETHODCALLTYPE ModifyRecipients(ULONG flags, LPADRLIST list) override
    {
        const ProviderScope inside;
        std::string text;
        HRESULT refusal = FirstOf({RefuseFlags(flags, MODRECIP_ADD | MODRECIP_MODIFY | MODRECIP_REMOVE),
                                   Require((flags & (flags - 1)) == 0 && list != nullptr)});
        for (ULONG i = 0; list != nullptr && i < list->cEntries; ++i)
        {
            const ADRENTRY& entry = list->aEntries[i];
            bool hasRow = false;
            text += "[";
            for (ULONG j = 0; j < entry.cValues; ++j)
            {
                text += (j != 0 ? "," : "") + Value(entry.rgPropVals[j]);
                hasRow = hasRow || entry.rgPropVals[j].ulPropTag == PR_ROWID;
                refusal = FirstOf({refusal, RequireWritable(entry.rgPropVals[j])});
            }
            text += "]";
            const bool needsRow = (flags & (MODRECIP_MODIFY | MODRECIP_REMOVE)) != 0;
            refusal = FirstOf({refusal, Require(entry.cValues != 0 && (hasRow || !needsRow))});
        }
        return Called("ModifyRecipients", Number(flags) + "," + text, refusal);
    }
    HRESULT STDMETHODCALLTYPE SubmitMessage(ULONG) override { return Unexpected("SubmitMessage"); }
    HRESULT STDMETHODCALLTYPE SetReadFlag(ULONG flags) override
    {
        const ProviderScope inside;
        return Called("SetReadFlag", Number(flags),
                      RefuseFlags(flags, CLEAR_READ_FLAG | SUPPRESS_RECEIPT | MAPI_DEFERRED_ERRORS));
    }

    IMAPITable* m_recipients = nullptr;
    IMAPITable* m_attachments = nullptr;
    /// Handed out by OpenAttach and CreateAttach.
    IAttach* m_attachment = nullptr;
};

class RecordingAttachment : public RecordingPropOf<IAttach>
{
public:
    explicit RecordingAttachment(Journal& journal, std::string name = "attachment")
        : RecordingPropOf<IAttach>(journal, std::move(name), {&IID_IUnknown, &IID_IMAPIProp, &IID_IAttachment})
    {
    }
};

class RecordingFolder : public RecordingContainerOf<IMAPIFolder>
{
public:
    explicit RecordingFolder(Journal& journal, std::string name = "folder")
        : RecordingContainerOf<IMAPIFolder>(journal, std::move(name),
                                            {&IID_IUnknown, &IID_IMAPIProp, &IID_IMAPIContainer, &IID_IMAPIFolder})
    {
    }
    static constexpr ULONG HardDelete = 0x10;

    HRESULT STDMETHODCALLTYPE CreateMessage(LPCIID iid, ULONG flags, LPMESSAGE* message) override
    {
        const ProviderScope inside;
        *message = nullptr;
        const HRESULT result = Called("CreateMessage", Name(iid) + "," + Number(flags),
                                      RefuseFlags(flags, MAPI_ASSOCIATED | MAPI_DEFERRED_ERRORS));
        return this->GivesNoObject(result) ? result : HandOut<IMessage>(m_message, message);
    }
    HRESULT STDMETHODCALLTYPE CopyMessages(LPENTRYLIST list, LPCIID iid, LPVOID dest, ULONG_PTR window,
                                           LPMAPIPROGRESS progress, ULONG flags) override
    {
        const ProviderScope inside;
        const auto* folder = static_cast<RecordingFolder*>(static_cast<IMAPIFolder*>(dest));
        Keep(list);
        return Called("CopyMessages",
                      List(list) + "," + Name(iid) + "," + (folder != nullptr ? folder->m_name : "null") + "," +
                          Number(window) + ",progress " + Null(progress) + "," + Number(flags),
                      FirstOf({RefuseFlags(flags, MESSAGE_MOVE | MESSAGE_DIALOG | MAPI_DECLINE_OK), RequireList(list),
                               Require(dest != nullptr)}));
    }
    HRESULT STDMETHODCALLTYPE DeleteMessages(LPENTRYLIST list, ULONG_PTR window, LPMAPIPROGRESS progress,
                                             ULONG flags) override
    {
        const ProviderScope inside;
        Keep(list);
        return Called("DeleteMessages",
                      List(list) + "," + Number(window) + ",progress " + Null(progress) + "," + Number(flags),
                      FirstOf({RefuseFlags(flags, MESSAGE_DIALOG | HardDelete), RequireList(list)}));
    }
    HRESULT STDMETHODCALLTYPE CreateFolder(ULONG type, LPTSTR name, LPTSTR comment, LPCIID iid, ULONG flags,
                                           LPMAPIFOLDER* folder) override
    {
        const ProviderScope inside;
        *folder = nullptr;
        const HRESULT result = Called("CreateFolder",
                                      Number(type) + "," + Text(name, flags) + "," + Text(comment, flags) + "," +
                                          Name(iid) + "," + Number(flags),
                                      FirstOf({RefuseFlags(flags, OPEN_IF_EXISTS | MAPI_UNICODE | MAPI_DEFERRED_ERRORS),
                                               Require(type == FOLDER_GENERIC || type == FOLDER_SEARCH),
                                               Require(name != nullptr && *name != 0)}));
        return this->GivesNoObject(result) ? result : HandOut<IMAPIFolder>(m_created, folder);
    }
    HRESULT STDMETHODCALLTYPE CopyFolder(ULONG count, LPENTRYID entryID, LPCIID iid, LPVOID dest, LPTSTR name,
                                         ULONG_PTR window, LPMAPIPROGRESS progress, ULONG flags) override
    {
        const ProviderScope inside;
        const auto* folder = static_cast<RecordingFolder*>(static_cast<IMAPIFolder*>(dest));
        return Called(
            "CopyFolder",
            Hex(entryID, count) + "," + Name(iid) + "," + (folder != nullptr ? folder->m_name : "null") + "," +
                Text(name, flags) + "," + Number(window) + ",progress " + Null(progress) + "," + Number(flags),
            FirstOf({RefuseFlags(flags, COPY_SUBFOLDERS | FOLDER_MOVE | FOLDER_DIALOG | MAPI_UNICODE | MAPI_DECLINE_OK),
                     Require(count != 0 && entryID != nullptr && dest != nullptr),
                     Require(name == nullptr || *name != 0)}));
    }
    HRESULT STDMETHODCALLTYPE DeleteFolder(ULONG count, LPENTRYID entryID, ULONG_PTR window, LPMAPIPROGRESS progress,
                                           ULONG flags) override
    {
        const ProviderScope inside;
        return Called("DeleteFolder",
                      Hex(entryID, count) + "," + Number(window) + ",progress " + Null(progress) + "," + Number(flags),
                      FirstOf({RefuseFlags(flags, DEL_MESSAGES | DEL_FOLDERS | FOLDER_DIALOG | HardDelete),
                               Require(count != 0 && entryID != nullptr)}));
    }
    HRESULT STDMETHODCALLTYPE SetReadFlags(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override
    {
        return Unexpected("SetReadFlags");
    }
    HRESULT STDMETHODCALLTYPE GetMessageStatus(ULONG, LPENTRYID, ULONG, ULONG*) override
    {
        return Unexpected("GetMessageStatus");
    }
    HRESULT STDMETHODCALLTYPE SetMessageStatus(ULONG, LPENTRYID, ULONG, ULONG, ULONG*) override
    {
        return Unexpected("SetMessageStatus");
    }
    HRESULT STDMETHODCALLTYPE SaveContentsSort(LPSSortOrderSet, ULONG) override
    {
        return Unexpected("SaveContentsSort");
    }
    HRESULT STDMETHODCALLTYPE EmptyFolder(ULONG_PTR window, LPMAPIPROGRESS progress, ULONG flags) override
    {
        const ProviderScope inside;
        return Called("EmptyFolder", Number(window) + ",progress " + Null(progress) + "," + Number(flags),
                      RefuseFlags(flags, FOLDER_DIALOG | DEL_ASSOCIATED | HardDelete));
    }

    /// An array of one identifier leaves its block of entries allocated by design; a test that passes one keeps the
    /// blocks and frees them at its end.
    void KeepLists() { m_keepsLists = true; }
    void FreeLists()
    {
        for (SBinary* block : m_blocks)
        {
            Zeb_MemFree(block);
        }
        m_blocks.clear();
    }

    /// Returned by CreateMessage and CreateFolder.
    IMessage* m_message = nullptr;
    IMAPIFolder* m_created = nullptr;

private:
    void Keep(LPENTRYLIST list)
    {
        if (m_keepsLists)
        {
            m_blocks.push_back(list->lpbin);
        }
    }

    bool m_keepsLists = false;
    std::vector<SBinary*> m_blocks;
};

} // namespace zeb::test
