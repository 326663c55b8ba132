#include "tests/zebstore/provider/ProviderFixture.h"

#include <filesystem>
#include <fstream>

namespace zebstore
{
namespace
{

class Sessions : public Provider
{
protected:
    HRESULT LogonCode(const char* profile, ULONG flags)
    {
        IMAPISession* session = nullptr;
        const HRESULT code = MAPILogonEx(0, Text(profile), nullptr, flags, &session);
        EXPECT_EQ(session != nullptr, SUCCEEDED(code));
        if (session)
        {
            session->Release();
        }
        return code;
    }

    std::string SessionErrorText(HRESULT code)
    {
        MAPIERROR* error = nullptr;
        EXPECT_EQ(Session().GetLastError(code, 0, &error), S_OK);
        const Buffer<MAPIERROR> owner(error);
        return error ? reinterpret_cast<const char*>(error->lpszError) : "";
    }
};

TEST_F(Sessions, OpenByNameAndByDefault)
{
    EXPECT_EQ(LogonCode("Main", 0x8023), S_OK);
    EXPECT_EQ(LogonCode("main", 0x8023), S_OK);
    EXPECT_EQ(LogonCode(nullptr, 0x8069), S_OK);
    EXPECT_EQ(LogonCode(nullptr, 0), S_OK);
    EXPECT_EQ(
        MAPILogonEx(0, reinterpret_cast<LPTSTR>(const_cast<WCHAR*>(ZEBW("Nobody"))), nullptr, MAPI_UNICODE, nullptr),
        MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(LogonCode("Nobody", 0x8023), MAPI_E_LOGON_FAILED);
    EXPECT_EQ(LogonCode("Main\\x", 0x8023), MAPI_E_LOGON_FAILED);
}

TEST_F(Sessions, NeedANameOrADefault)
{
    EXPECT_EQ(Admin()->DeleteProfile(Text("Main"), 0), S_OK);
    EXPECT_EQ(LogonCode(nullptr, 0x8069), MAPI_E_LOGON_FAILED);
}

TEST_F(Sessions, NeedAStartedProvider)
{
    MAPIUninitialize();
    EXPECT_EQ(LogonCode("Main", 0), MAPI_E_NOT_INITIALIZED);
    IProfAdmin* admin = nullptr;
    EXPECT_EQ(MAPIAdminProfiles(0, &admin), MAPI_E_NOT_INITIALIZED);
    MAPIINIT_0 wrong = {7, 0};
    EXPECT_EQ(MAPIInitialize(&wrong), MAPI_E_VERSION);
    MAPIINIT_0 right = {0, MAPI_MULTITHREAD_NOTIFICATIONS};
    EXPECT_EQ(MAPIInitialize(&right), S_OK);
}

TEST_F(Sessions, ListTheStoreAsDefault)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Session().GetMsgStoresTable(0, &table), S_OK);
    const Rows rows(table, {PR_DEFAULT_STORE, PR_DISPLAY_NAME_A, PR_PROVIDER_DISPLAY_A, PR_RESOURCE_TYPE, PR_RECORD_KEY,
                            PR_MDB_PROVIDER});
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_TRUE(rows.Cell(0, 0).Value.b);
    EXPECT_EQ(rows.TextCell(0, 1), "Mail of Main");
    EXPECT_EQ(rows.TextCell(0, 2), "zebstore");
    EXPECT_EQ(rows.Cell(0, 3).Value.l, LONG(MAPI_STORE_PROVIDER));
    EXPECT_EQ(rows.BytesCell(0, 4).size(), 16u);
    EXPECT_EQ(rows.BytesCell(0, 5).size(), 16u);
}

TEST_F(Sessions, StoreTablesBeginWithTheDefault)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Session().GetMsgStoresTable(0, &table), S_OK);
    const Rows rows(table);
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_EQ(rows.Cell(0, 0).ulPropTag, PR_DEFAULT_STORE);
    EXPECT_EQ(rows.Cell(0, 1).ulPropTag, PR_ENTRYID);
}

TEST_F(Sessions, SayWhichFileIsMissing)
{
    Session();
    std::filesystem::remove(m_path);
    IMAPITable* table = nullptr;
    const HRESULT code = Session().GetMsgStoresTable(0, &table);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
    EXPECT_NE(SessionErrorText(code).find("main.zeb"), std::string::npos) << SessionErrorText(code);
}

TEST_F(Sessions, SayWhichFileIsNoStore)
{
    std::filesystem::remove(m_path);
    std::ofstream(m_path) << std::string(5000, 'x');
    IMAPITable* table = nullptr;
    const HRESULT code = Session().GetMsgStoresTable(0, &table);
    EXPECT_EQ(code, MAPI_E_CORRUPT_STORE);
    EXPECT_NE(SessionErrorText(code).find("main.zeb"), std::string::npos) << SessionErrorText(code);
}

TEST_F(Sessions, OpenAnyIdentifierWithItsType)
{
    const auto typeOf = [&](const Bytes& id)
    {
        ULONG type = 0;
        IUnknown* object = nullptr;
        EXPECT_EQ(Session().OpenEntry(static_cast<ULONG>(id.size()), Id(id), &IID_IMAPIProp, MAPI_BEST_ACCESS, &type,
                                      &object),
                  S_OK);
        if (object)
        {
            object->Release();
        }
        return type;
    };
    EXPECT_EQ(typeOf(StoreId()), MAPI_STORE);
    EXPECT_EQ(typeOf(InboxId()), MAPI_FOLDER);
    EXPECT_EQ(typeOf(SaveMessage(*Inbox())), MAPI_MESSAGE);
}

TEST_F(Sessions, CompareIdentifiers)
{
    const auto same = [&](const Bytes& a, const Bytes& b)
    {
        ULONG result = 2;
        EXPECT_EQ(Session().CompareEntryIDs(static_cast<ULONG>(a.size()), Id(a), static_cast<ULONG>(b.size()), Id(b), 0,
                                            &result),
                  S_OK);
        return result;
    };
    const Bytes inbox = InboxId();
    const Bytes message = SaveMessage(*Inbox());
    EXPECT_EQ(same(inbox, inbox), 1u);
    EXPECT_EQ(same(inbox, message), 0u);
    EXPECT_EQ(same(StoreId(), StoreId()), 1u);
    EXPECT_EQ(same(StoreId(), inbox), 0u);
}

TEST_F(Sessions, EndWhileTheirObjectsLive)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    EXPECT_EQ(Session().Logoff(0, 0, 0), S_OK);
    IMAPITable* table = nullptr;
    EXPECT_EQ(Session().GetMsgStoresTable(0, &table), MAPI_E_END_OF_SESSION);
    EXPECT_EQ(GetLong(inbox.Get(), PR_CONTENT_COUNT), 0);
}

TEST_F(Sessions, RefuseWhatTheProviderLacks)
{
    ULONG_PTR connection = 0;
    EXPECT_EQ(Session().Advise(0, nullptr, 0, nullptr, &connection), MAPI_E_NO_SUPPORT);
    ULONG size = 0;
    ENTRYID* id = nullptr;
    EXPECT_EQ(Session().QueryIdentity(&size, &id), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Session().QueryIdentity(nullptr, &id), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Session().QueryIdentity(&size, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Session().OpenProfileSection(nullptr, nullptr, 0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(SessionErrorText(MAPI_E_NO_SUPPORT), "the provider supports only stores");
    EXPECT_EQ(Session().MessageOptions(0, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Session().QueryDefaultMessageOpt(nullptr, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Session().ShowForm(0, nullptr, nullptr, nullptr, 0, nullptr, 0, 0, 0, 0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Session().PrepareForm(nullptr, nullptr, nullptr), MAPI_E_NO_SUPPORT);
}

TEST_F(Sessions, HaveAnEmptyStatusTable)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Session().GetStatusTable(0, &table), S_OK);
    EXPECT_EQ(Rows(table).Count(), 0u);
    EXPECT_EQ(Session().GetStatusTable(0, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Session().GetStatusTable(1, &table), MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(Sessions, KnowNoAddressTypes)
{
    ULONG count = 7;
    LPTSTR* types = reinterpret_cast<LPTSTR*>(&count);
    EXPECT_EQ(Session().EnumAdrTypes(0, &count, &types), S_OK);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(types, nullptr);
    EXPECT_EQ(Session().EnumAdrTypes(0, nullptr, &types), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Session().EnumAdrTypes(0, &count, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Sessions, TheOnlyStoreIsTheDefault)
{
    const Bytes store = StoreId();
    EXPECT_EQ(Session().SetDefaultStore(0, static_cast<ULONG>(store.size()), Id(store)), S_OK);
    const Bytes inbox = InboxId();
    EXPECT_TRUE(FAILED(Session().SetDefaultStore(0, static_cast<ULONG>(inbox.size()), Id(inbox))));
}

TEST_F(Sessions, AdministerTheServicesOfTheirProfile)
{
    IMsgServiceAdmin* admin = nullptr;
    ASSERT_EQ(Session().AdminServices(0, &admin), S_OK);
    const Ref<IMsgServiceAdmin> services = Ref<IMsgServiceAdmin>::Adopt(admin);
    IMAPITable* table = nullptr;
    ASSERT_EQ(services->GetMsgServiceTable(0, &table), S_OK);
    EXPECT_EQ(Rows(table, {PR_DISPLAY_NAME_A}).TextCell(0, 0), "Mail of Main");
    EXPECT_EQ(Session().AdminServices(0, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Session().AdminServices(1, &admin), MAPI_E_UNKNOWN_FLAGS);
    EXPECT_EQ(Session().Logoff(0, 0, 0), S_OK);
    EXPECT_EQ(Session().AdminServices(0, &admin), MAPI_E_END_OF_SESSION);
    EXPECT_EQ(admin, nullptr);
}

TEST_F(Sessions, OfAProfileWithoutAStoreOpenNone)
{
    ASSERT_EQ(Admin()->CreateProfile(Text("Bare"), nullptr, 0, 0), S_OK);
    IMAPISession* session = nullptr;
    ASSERT_EQ(MAPILogonEx(0, Text("Bare"), nullptr, MAPI_EXTENDED | MAPI_NEW_SESSION, &session), S_OK);
    const Ref<IMAPISession> owner = Ref<IMAPISession>::Adopt(session);
    IAddrBook* book = nullptr;
    EXPECT_EQ(session->OpenAddressBook(0, nullptr, 0, &book), MAPI_E_NOT_FOUND);
    EXPECT_EQ(book, nullptr);
}

} // namespace
} // namespace zebstore
