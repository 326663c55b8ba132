// The tasks on MAPI's interfaces. docs/from-mapi.md shows what is between the marks.
#include "tests/documents/Tasks.h"

namespace raw
{

// [start]
HRESULT WithSession(HRESULT (*use)(IMAPISession* session))
{
    MAPIINIT_0 init = {MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    HRESULT result = MAPIInitialize(&init);
    if (FAILED(result))
    {
        return result;
    }
    IMAPISession* session = nullptr;
    result = MAPILogonEx(0, nullptr, nullptr, MAPI_EXTENDED | MAPI_USE_DEFAULT, &session);
    if (SUCCEEDED(result))
    {
        result = use(session);
        session->Logoff(0, 0, 0);
        session->Release();
    }
    MAPIUninitialize();
    return result;
}
// [/start]

// [inbox]
HRESULT OpenInbox(IMAPISession* session, IMAPIFolder** inbox)
{
    SizedSPropTagArray(1, columns) = {1, {PR_ENTRYID}};
    SPropValue yes = {};
    yes.ulPropTag = PR_DEFAULT_STORE;
    yes.Value.b = TRUE;
    SRestriction isDefault = {};
    isDefault.rt = RES_PROPERTY;
    isDefault.res.resProperty = {RELOP_EQ, PR_DEFAULT_STORE, &yes};

    IMAPITable* stores = nullptr;
    SRowSet* rows = nullptr;
    IMsgStore* store = nullptr;
    ULONG size = 0, type = 0;
    ENTRYID* id = nullptr;
    HRESULT result = session->GetMsgStoresTable(0, &stores);
    if (SUCCEEDED(result))
    {
        result = HrQueryAllRows(stores, reinterpret_cast<SPropTagArray*>(&columns), &isDefault, nullptr, 0, &rows);
    }
    if (SUCCEEDED(result) && rows->cRows == 0)
    {
        result = MAPI_E_NOT_FOUND;
    }
    if (SUCCEEDED(result))
    {
        const SBinary& bin = rows->aRow[0].lpProps[0].Value.bin;
        result =
            session->OpenMsgStore(0, bin.cb, reinterpret_cast<ENTRYID*>(bin.lpb), nullptr, MAPI_BEST_ACCESS, &store);
    }
    if (SUCCEEDED(result))
    {
        result = store->GetReceiveFolder(nullptr, 0, &size, &id, nullptr);
    }
    if (SUCCEEDED(result))
    {
        result =
            store->OpenEntry(size, id, &IID_IMAPIFolder, MAPI_BEST_ACCESS, &type, reinterpret_cast<IUnknown**>(inbox));
    }
    MAPIFreeBuffer(id);
    FreeProws(rows);
    UlRelease(store);
    UlRelease(stores);
    return result;
}
// [/inbox]

// [rows]
HRESULT ReadSubjects(IMAPITable* contents, std::vector<Text>& subjects)
{
    SizedSPropTagArray(1, columns) = {1, {PR_SUBJECT_W}};
    HRESULT result = contents->SetColumns(reinterpret_cast<SPropTagArray*>(&columns), 0);
    bool more = true;
    while (SUCCEEDED(result) && more)
    {
        SRowSet* rows = nullptr;
        result = contents->QueryRows(50, 0, &rows);
        if (FAILED(result))
        {
            break;
        }
        more = rows->cRows > 0;
        for (ULONG i = 0; i < rows->cRows; ++i)
        {
            const SPropValue& subject = rows->aRow[i].lpProps[0];
            subjects.push_back(PROP_TYPE(subject.ulPropTag) == PT_UNICODE ? subject.Value.lpszW : Text());
        }
        FreeProws(rows);
    }
    return result;
}
// [/rows]

// [search]
HRESULT RestrictToUnread(IMAPITable* contents, const WCHAR* word)
{
    SPropValue text = {};
    text.ulPropTag = PR_SUBJECT_W;
    text.Value.lpszW = const_cast<WCHAR*>(word);
    SRestriction conditions[2] = {};
    conditions[0].rt = RES_CONTENT;
    conditions[0].res.resContent = {FL_SUBSTRING | FL_IGNORECASE, PR_SUBJECT_W, &text};
    conditions[1].rt = RES_BITMASK;
    conditions[1].res.resBitMask = {BMR_EQZ, PR_MESSAGE_FLAGS, MSGFLAG_READ};
    SRestriction both = {};
    both.rt = RES_AND;
    both.res.resAnd = {2, conditions};
    return contents->Restrict(&both, 0);
}
// [/search]

// [body]
HRESULT ReadBody(IMessage* message, Text& body)
{
    IStream* stream = nullptr;
    HRESULT result = message->OpenProperty(PR_BODY_W, &IID_IStream, 0, 0, reinterpret_cast<IUnknown**>(&stream));
    if (FAILED(result))
    {
        return result;
    }
    WCHAR buffer[1024];
    ULONG bytes = 0;
    do
    {
        result = stream->Read(buffer, sizeof buffer, &bytes);
        if (SUCCEEDED(result))
        {
            body.append(buffer, bytes / sizeof(WCHAR));
        }
    } while (SUCCEEDED(result) && bytes > 0);
    stream->Release();
    body.resize(body.find_last_not_of(WCHAR(0)) + 1); // some providers write the terminator too
    return result;
}
// [/body]

// [create]
HRESULT CreateMessage(IMAPIFolder* folder, const WCHAR* subject, const WCHAR* address, IMessage** created)
{
    SPropValue property = {};
    property.ulPropTag = PR_SUBJECT_W;
    property.Value.lpszW = const_cast<WCHAR*>(subject);
    SPropValue recipient[4] = {};
    recipient[0].ulPropTag = PR_RECIPIENT_TYPE;
    recipient[0].Value.l = MAPI_TO;
    recipient[1].ulPropTag = PR_DISPLAY_NAME_W;
    recipient[1].Value.lpszW = const_cast<WCHAR*>(address);
    recipient[2].ulPropTag = PR_ADDRTYPE_W;
    recipient[2].Value.lpszW = const_cast<WCHAR*>(ZEBW("SMTP"));
    recipient[3].ulPropTag = PR_EMAIL_ADDRESS_W;
    recipient[3].Value.lpszW = const_cast<WCHAR*>(address);
    SizedADRLIST(1, list) = {1, {{0, 4, recipient}}};

    IMessage* message = nullptr;
    HRESULT result = folder->CreateMessage(nullptr, 0, &message);
    if (FAILED(result))
    {
        return result;
    }
    result = message->SetProps(1, &property, nullptr);
    if (SUCCEEDED(result))
    {
        // Not resolved: for that the host builds a one-off entry identifier and a search key too.
        result = message->ModifyRecipients(MODRECIP_ADD, reinterpret_cast<ADRLIST*>(&list));
    }
    if (SUCCEEDED(result))
    {
        result = message->SaveChanges(KEEP_OPEN_READWRITE);
    }
    if (FAILED(result))
    {
        message->Release();
        message = nullptr;
    }
    *created = message;
    return result;
}
// [/create]

// [named]
HRESULT WriteStars(IMessage* message, LONG stars)
{
    GUID set = TaskSet;
    MAPINAMEID name = {};
    name.lpguid = &set;
    name.ulKind = MNID_STRING;
    name.Kind.lpwstrName = const_cast<WCHAR*>(ZEBW("Stars"));
    MAPINAMEID* names[] = {&name};
    SPropTagArray* tags = nullptr;
    HRESULT result = message->GetIDsFromNames(1, names, MAPI_CREATE, &tags);
    if (SUCCEEDED(result) && PROP_TYPE(tags->aulPropTag[0]) == PT_ERROR)
    {
        result = MAPI_E_NOT_FOUND; // MAPI_W_ERRORS_RETURNED is a success
    }
    if (SUCCEEDED(result))
    {
        SPropValue value = {};
        value.ulPropTag = CHANGE_PROP_TYPE(tags->aulPropTag[0], PT_LONG);
        value.Value.l = stars;
        result = message->SetProps(1, &value, nullptr);
    }
    MAPIFreeBuffer(tags);
    return SUCCEEDED(result) ? message->SaveChanges(KEEP_OPEN_READWRITE) : result;
}
// [/named]

// [failure]
HRESULT DeleteFolder(IMAPIFolder* parent, const SBinary& folder, std::string& failure)
{
    const HRESULT result = parent->DeleteFolder(folder.cb, reinterpret_cast<ENTRYID*>(folder.lpb), 0, nullptr, 0);
    if (FAILED(result))
    {
        MAPIERROR* error = nullptr;
        if (SUCCEEDED(parent->GetLastError(result, 0, &error)) && error != nullptr && error->lpszError != nullptr)
        {
            failure = reinterpret_cast<const char*>(error->lpszError);
        }
        MAPIFreeBuffer(error);
    }
    return result;
}
// [/failure]

} // namespace raw
