// Doubles of message stores, sessions and address books.
#pragma once

#include "tests/support/doubles/RecordingProp.h"

namespace zeb::test
{

/// An entry identifier as returned by a provider, in a separate buffer.
inline HRESULT GiveEntryID(const std::string& bytes, ULONG* count, LPENTRYID* entryID)
{
    *count = static_cast<ULONG>(bytes.size());
    *entryID = static_cast<LPENTRYID>(Zeb_MemAllocate(*count + 1, nullptr));
    std::memcpy(*entryID, bytes.data(), bytes.size());
    return S_OK;
}

inline ULONG SameBytes(ULONG count1, LPENTRYID id1, ULONG count2, LPENTRYID id2)
{
    return count1 == count2 && (count1 == 0 || std::memcmp(id1, id2, count1) == 0) ? 1 : 0;
}

class RecordingStore : public RecordingPropOf<IMsgStore>
{
public:
    explicit RecordingStore(Journal& journal, std::string name = "store")
        : RecordingPropOf<IMsgStore>(journal, std::move(name), {&IID_IUnknown, &IID_IMAPIProp, &IID_IMsgStore})
    {
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG count, LPENTRYID entryID, LPCIID iid, ULONG flags, ULONG* type,
                                        LPUNKNOWN* object) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("OpenEntry", OpenArguments(count, entryID, iid, flags, type, object),
                                      RefuseOpen(count, entryID, flags));
        return this->GivesNoObject(result) ? result : m_openable.Open(count, entryID, type, object);
    }
    HRESULT STDMETHODCALLTYPE GetReceiveFolder(LPTSTR messageClass, ULONG flags, ULONG* count, LPENTRYID* entryID,
                                               LPTSTR* explicitClass) override
    {
        const ProviderScope inside;
        EXPECT_EQ(*count, 0u);
        EXPECT_EQ(*entryID, nullptr);
        const HRESULT result =
            Called("GetReceiveFolder", Text(messageClass) + "," + Number(flags) + "," + Null(explicitClass),
                   RefuseFlags(flags, MAPI_UNICODE));
        return this->Stops(result) ? result : GiveEntryID(m_receiveFolder, count, entryID);
    }
    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*) override
    {
        return Unexpected("Advise");
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR) override { return Unexpected("Unadvise"); }
    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*) override
    {
        return Unexpected("CompareEntryIDs");
    }
    HRESULT STDMETHODCALLTYPE SetReceiveFolder(LPTSTR, ULONG, ULONG, LPENTRYID) override
    {
        return Unexpected("SetReceiveFolder");
    }
    HRESULT STDMETHODCALLTYPE GetReceiveFolderTable(ULONG, LPMAPITABLE*) override
    {
        return Unexpected("GetReceiveFolderTable");
    }
    HRESULT STDMETHODCALLTYPE StoreLogoff(ULONG*) override { return Unexpected("StoreLogoff"); }
    HRESULT STDMETHODCALLTYPE AbortSubmit(ULONG, LPENTRYID, ULONG) override { return Unexpected("AbortSubmit"); }
    HRESULT STDMETHODCALLTYPE GetOutgoingQueue(ULONG, LPMAPITABLE*) override { return Unexpected("GetOutgoingQueue"); }
    HRESULT STDMETHODCALLTYPE SetLockState(LPMESSAGE, ULONG) override { return Unexpected("SetLockState"); }
    HRESULT STDMETHODCALLTYPE FinishedMsg(ULONG, ULONG, LPENTRYID) override { return Unexpected("FinishedMsg"); }
    HRESULT STDMETHODCALLTYPE NotifyNewMail(LPNOTIFICATION) override { return Unexpected("NotifyNewMail"); }

    Openable m_openable;
    /// The bytes of the receive folder's identifier.
    std::string m_receiveFolder;
};

class RecordingSession : public Counted<IMAPISession>
{
public:
    explicit RecordingSession(Journal& journal, std::string name = "session")
        : Counted<IMAPISession>(journal, std::move(name), {&IID_IUnknown, &IID_IMAPISession})
    {
    }
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override
    {
        const ProviderScope inside;
        return LastError(result, flags, error);
    }
    HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG flags, LPMAPITABLE* table) override
    {
        const ProviderScope inside;
        *table = nullptr;
        const HRESULT result = Called("GetMsgStoresTable", Number(flags), RefuseFlags(flags, MAPI_UNICODE));
        return this->GivesNoObject(result) ? result : HandOut(m_stores, table);
    }
    HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR window, ULONG count, LPENTRYID entryID, LPCIID iid, ULONG flags,
                                           LPMDB* store) override
    {
        const ProviderScope inside;
        *store = nullptr;
        constexpr ULONG Online = 0x100;
        const HRESULT result =
            Called("OpenMsgStore", Number(window) + "," + Hex(entryID, count) + "," + Name(iid) + "," + Number(flags),
                   FirstOf({RefuseFlags(flags, MDB_NO_DIALOG | MDB_WRITE | MDB_TEMPORARY | MDB_NO_MAIL | Online |
                                                   MAPI_BEST_ACCESS | MAPI_DEFERRED_ERRORS),
                            Require(count != 0 && entryID != nullptr, MAPI_E_INVALID_ENTRYID)}));
        return this->GivesNoObject(result) ? result : HandOut(m_store, store);
    }
    HRESULT STDMETHODCALLTYPE OpenAddressBook(ULONG_PTR window, LPCIID iid, ULONG flags, LPADRBOOK* book) override
    {
        const ProviderScope inside;
        *book = nullptr;
        const HRESULT result = Called("OpenAddressBook", Number(window) + "," + Name(iid) + "," + Number(flags),
                                      RefuseFlags(flags, AB_NO_DIALOG));
        return this->GivesNoObject(result) ? result : HandOut(m_addressBook, book);
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG count, LPENTRYID entryID, LPCIID iid, ULONG flags, ULONG* type,
                                        LPUNKNOWN* object) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("OpenEntry", OpenArguments(count, entryID, iid, flags, type, object),
                                      RefuseOpen(count, entryID, flags));
        return this->GivesNoObject(result) ? result : m_openable.Open(count, entryID, type, object);
    }
    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG count1, LPENTRYID id1, ULONG count2, LPENTRYID id2, ULONG flags,
                                              ULONG* equal) override
    {
        const ProviderScope inside;
        const HRESULT result =
            Called("CompareEntryIDs", Hex(id1, count1) + "," + Hex(id2, count2) + "," + Number(flags),
                   FirstOf({RefuseFlags(flags, 0), RequireBytes(count1, id1), RequireBytes(count2, id2)}));
        if (this->Stops(result))
        {
            return result;
        }
        *equal = SameBytes(count1, id1, count2, id2);
        return result;
    }
    HRESULT STDMETHODCALLTYPE Logoff(ULONG_PTR window, ULONG flags, ULONG reserved) override
    {
        const ProviderScope inside;
        return Called("Logoff", Number(window) + "," + Number(flags) + "," + Number(reserved),
                      FirstOf({RefuseFlags(flags, MAPI_LOGOFF_SHARED | MAPI_LOGOFF_UI), Require(reserved == 0)}));
    }
    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID, LPCIID, ULONG, LPPROFSECT*) override
    {
        return Unexpected("OpenProfileSection");
    }
    HRESULT STDMETHODCALLTYPE GetStatusTable(ULONG, LPMAPITABLE*) override { return Unexpected("GetStatusTable"); }
    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*) override
    {
        return Unexpected("Advise");
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR) override { return Unexpected("Unadvise"); }
    HRESULT STDMETHODCALLTYPE MessageOptions(ULONG_PTR, ULONG, LPTSTR, LPMESSAGE) override
    {
        return Unexpected("MessageOptions");
    }
    HRESULT STDMETHODCALLTYPE QueryDefaultMessageOpt(LPTSTR, ULONG, ULONG*, LPSPropValue*) override
    {
        return Unexpected("QueryDefaultMessageOpt");
    }
    HRESULT STDMETHODCALLTYPE EnumAdrTypes(ULONG, ULONG*, LPTSTR**) override { return Unexpected("EnumAdrTypes"); }
    HRESULT STDMETHODCALLTYPE QueryIdentity(ULONG*, LPENTRYID*) override { return Unexpected("QueryIdentity"); }
    HRESULT STDMETHODCALLTYPE SetDefaultStore(ULONG, ULONG, LPENTRYID) override
    {
        return Unexpected("SetDefaultStore");
    }
    HRESULT STDMETHODCALLTYPE AdminServices(ULONG, LPSERVICEADMIN*) override { return Unexpected("AdminServices"); }
    HRESULT STDMETHODCALLTYPE ShowForm(ULONG_PTR, LPMDB, LPMAPIFOLDER, LPCIID, ULONG_PTR, LPMESSAGE, ULONG, ULONG,
                                       ULONG, ULONG, LPSTR) override
    {
        return Unexpected("ShowForm");
    }
    HRESULT STDMETHODCALLTYPE PrepareForm(LPCIID, LPMESSAGE, ULONG_PTR*) override { return Unexpected("PrepareForm"); }

    Openable m_openable;
    /// Returned by the methods of these names.
    IMAPITable* m_stores = nullptr;
    IMsgStore* m_store = nullptr;
    IAddrBook* m_addressBook = nullptr;
};

class RecordingAddrBook : public RecordingPropOf<IAddrBook>
{
public:
    explicit RecordingAddrBook(Journal& journal, std::string name = "book")
        : RecordingPropOf<IAddrBook>(journal, std::move(name), {&IID_IUnknown, &IID_IMAPIProp, &IID_IAddrBook})
    {
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG count, LPENTRYID entryID, LPCIID iid, ULONG flags, ULONG* type,
                                        LPUNKNOWN* object) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("OpenEntry", OpenArguments(count, entryID, iid, flags, type, object),
                                      RefuseOpen(count, entryID, flags));
        return this->GivesNoObject(result) ? result : m_openable.Open(count, entryID, type, object);
    }
    HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG* count, LPENTRYID* entryID) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("GetDefaultDir", "");
        return this->Stops(result) ? result : GiveEntryID(m_defaultDir, count, entryID);
    }
    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG, ULONG*) override
    {
        return Unexpected("CompareEntryIDs");
    }
    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*) override
    {
        return Unexpected("Advise");
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR) override { return Unexpected("Unadvise"); }
    HRESULT STDMETHODCALLTYPE CreateOneOff(LPTSTR, LPTSTR, LPTSTR, ULONG, ULONG*, LPENTRYID*) override
    {
        return Unexpected("CreateOneOff");
    }
    HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG*,
                                       LPENTRYID*) override
    {
        return Unexpected("NewEntry");
    }
    HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG, LPTSTR, LPADRLIST) override
    {
        return Unexpected("ResolveName");
    }
    HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override { return Unexpected("Address"); }
    HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID, LPTSTR,
                                      ULONG) override
    {
        return Unexpected("Details");
    }
    HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override { return Unexpected("RecipOptions"); }
    HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPTSTR, ULONG, ULONG*, LPSPropValue*) override
    {
        return Unexpected("QueryDefaultRecipOpt");
    }
    HRESULT STDMETHODCALLTYPE GetPAB(ULONG*, LPENTRYID*) override { return Unexpected("GetPAB"); }
    HRESULT STDMETHODCALLTYPE SetPAB(ULONG, LPENTRYID) override { return Unexpected("SetPAB"); }
    HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG, LPENTRYID) override { return Unexpected("SetDefaultDir"); }
    HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG, LPSRowSet*) override { return Unexpected("GetSearchPath"); }
    HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG, LPSRowSet) override { return Unexpected("SetSearchPath"); }
    HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray, LPADRLIST) override
    {
        return Unexpected("PrepareRecips");
    }

    Openable m_openable;
    /// The bytes of the default directory's identifier.
    std::string m_defaultDir;
};

} // namespace zeb::test
