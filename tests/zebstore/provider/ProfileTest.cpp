#include "tests/zebstore/provider/ProviderFixture.h"

#include "platform/registry.h"
#include "zebstore/storage/StoreFile.h"

#include <fstream>

namespace zebstore
{
namespace
{

using zeb::platform::RegistryKey;
using zeb::platform::RegistryRoot;

constexpr char ClassicProfiles[] =
    "Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging Subsystem\\Profiles";

class Profiles : public Provider
{
protected:
    static Texts Names()
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(Admin()->GetProfileTable(0, &table), S_OK);
        const Rows rows(table, {PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE});
        Texts names;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            names.push_back(rows.TextCell(i, 0) + (rows.Cell(i, 1).Value.b ? "*" : ""));
        }
        return names;
    }

    static MAPIUID ServiceUid(IMsgServiceAdmin& services)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(services.GetMsgServiceTable(0, &table), S_OK);
        const Rows rows(table, {PR_SERVICE_UID});
        MAPIUID uid;
        std::copy_n(rows.BytesCell(0, 0).data(), sizeof(uid.ab), uid.ab);
        return uid;
    }
};

TEST_F(Profiles, AreWhereMapiKeepsThem)
{
    EXPECT_TRUE(RegistryKey::Open(RegistryRoot::CurrentUser, std::string(ClassicProfiles) + "\\Main"));
    const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, ClassicProfiles);
    ASSERT_TRUE(key);
    EXPECT_EQ(key->StringValue("DefaultProfile"), "Main");
}

TEST_F(Profiles, OfOutlook15HaveTheirPlace)
{
    RegistryKey::Create(RegistryRoot::ClassesRoot, "Outlook.Application\\CurVer")
        .SetStringValue("", "Outlook.Application.15");
    EXPECT_EQ(Names(), Texts());
    ASSERT_EQ(Admin()->CreateProfile(Text("Other"), nullptr, 0, 0), S_OK);
    EXPECT_TRUE(
        RegistryKey::Open(RegistryRoot::CurrentUser, "Software\\Microsoft\\Office\\15.0\\Outlook\\Profiles\\Other"));
    const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, "Software\\Microsoft\\Office\\15.0\\Outlook");
    ASSERT_TRUE(key);
    EXPECT_EQ(key->StringValue("DefaultProfile"), "Other");
}

TEST_F(Profiles, AreCreatedListedAndDeleted)
{
    EXPECT_EQ(Names(), Texts({"Main*"}));
    EXPECT_EQ(Admin()->CreateProfile(Text("Second"), nullptr, 0, 0), S_OK);
    EXPECT_EQ(Names(), Texts({"Main*", "Second"}));
    EXPECT_EQ(Admin()->CreateProfile(Text("second"), nullptr, 0, 0), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Admin()->SetDefaultProfile(Text("Second"), 0), S_OK);
    EXPECT_EQ(Names(), Texts({"Main", "Second*"}));
    EXPECT_EQ(Admin()->DeleteProfile(Text("Second"), 0), S_OK);
    EXPECT_EQ(Names(), Texts({"Main"}));
    EXPECT_EQ(Admin()->DeleteProfile(Text("Second"), 0), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Admin()->SetDefaultProfile(Text("Second"), 0), MAPI_E_NOT_FOUND);
    for (const char* bad : {"", "a\\b", " x"})
    {
        EXPECT_EQ(Admin()->CreateProfile(Text(bad), nullptr, 0, 0), MAPI_E_INVALID_PARAMETER) << bad;
    }
}

TEST_F(Profiles, ThatAreRenamedKeepTheirStore)
{
    EXPECT_EQ(Admin()->RenameProfile(Text("Main"), nullptr, Text("Work"), 0, 0), S_OK);
    EXPECT_EQ(Names(), Texts({"Work*"}));
    IMAPISession* session = nullptr;
    ASSERT_EQ(MAPILogonEx(0, Text("Work"), nullptr, 0, &session), S_OK);
    m_session = Ref<IMAPISession>::Adopt(session);
    EXPECT_FALSE(StoreId().empty());
}

TEST_F(Profiles, HaveOneStore)
{
    const Ref<IMsgServiceAdmin> services = Services("Main");
    EXPECT_EQ(services->CreateMsgService(Text("zebstore"), Text("x"), 0, 0), MAPI_E_NO_ACCESS);
    EXPECT_EQ(services->CreateMsgService(Text("other"), Text("x"), 0, 0), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Admin()->AdminServices(Text("None"), nullptr, 0, 0, nullptr), MAPI_E_INVALID_PARAMETER);
    IMsgServiceAdmin* none = nullptr;
    EXPECT_EQ(Admin()->AdminServices(Text("None"), nullptr, 0, 0, &none), MAPI_E_NOT_FOUND);
}

TEST_F(Profiles, ShowTheirStoreAsAService)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Services("Main")->GetMsgServiceTable(0, &table), S_OK);
    const Rows rows(table, {PR_SERVICE_NAME_A, PR_DISPLAY_NAME_A, PR_ZEBSTORE_PATH_A, PR_ZEBSTORE_DURABILITY_A});
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_EQ(rows.TextCell(0, 0), "zebstore");
    EXPECT_EQ(rows.TextCell(0, 1), "Mail of Main");
    EXPECT_EQ(rows.TextCell(0, 2), m_path);
    EXPECT_EQ(rows.TextCell(0, 3), "normal");
}

TEST_F(Profiles, RenameAndDeleteTheirService)
{
    const Ref<IMsgServiceAdmin> services = Services("Main");
    const auto names = [&services]
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(services->GetMsgServiceTable(0, &table), S_OK);
        const Rows rows(table, {PR_DISPLAY_NAME_A});
        return rows.Count() ? rows.TextCell(0, 0) : "<none>";
    };
    MAPIUID uid = ServiceUid(*services);
    EXPECT_EQ(services->RenameMsgService(&uid, 0, Text("Archive")), S_OK);
    EXPECT_EQ(names(), "Archive");
    EXPECT_EQ(services->RenameMsgService(&uid, 1, Text("x")), MAPI_E_UNKNOWN_FLAGS);
    EXPECT_EQ(services->RenameMsgService(nullptr, 0, Text("x")), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(services->DeleteMsgService(nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(names(), "Archive");
    EXPECT_EQ(services->DeleteMsgService(&uid), S_OK);
    EXPECT_EQ(names(), "<none>");
    EXPECT_EQ(services->RenameMsgService(&uid, 0, Text("x")), MAPI_E_NOT_FOUND);
    EXPECT_TRUE(StoreFile::Exists(m_path)) << "the file stays";
}

TEST_F(Profiles, RefuseWhatOneServiceDoesNotNeed)
{
    const Ref<IMsgServiceAdmin> services = Services("Main");
    MAPIUID uid = ServiceUid(*services);
    EXPECT_EQ(services->CopyMsgService(&uid, nullptr, nullptr, nullptr, nullptr, 0, 0), MAPI_E_NO_SUPPORT);
    MAPIERROR* error = nullptr;
    EXPECT_EQ(services->GetLastError(MAPI_E_NO_SUPPORT, 0, &error), S_OK);
    const Buffer<MAPIERROR> owner(error);
    ASSERT_NE(error, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char*>(error->lpszError), "a profile supports only one store service");
    EXPECT_EQ(services->OpenProfileSection(&uid, nullptr, 0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(services->MsgServiceTransportOrder(0, nullptr, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(services->AdminProviders(&uid, 0, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(services->SetPrimaryIdentity(&uid, 0), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(services->GetProviderTable(0, nullptr), MAPI_E_NO_SUPPORT);
    void* same = nullptr;
    ASSERT_EQ(services->QueryInterface(IID_IMsgServiceAdmin, &same), S_OK);
    static_cast<IUnknown*>(same)->Release();
    EXPECT_EQ(services->QueryInterface(IID_IMsgStore, &same), E_NOINTERFACE);
}

TEST_F(Profiles, SettingsOfTextNeedText)
{
    const Ref<IMsgServiceAdmin> services = Services("Main");
    MAPIUID uid = ServiceUid(*services);
    SPropValue path = LongValue(CHANGE_PROP_TYPE(PR_ZEBSTORE_PATH_A, PT_LONG), 1);
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, 0, 1, &path), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, 0, 1, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Profiles, RefuseAMissingFile)
{
    const std::string path = m_folder.File("none.zeb");
    EXPECT_EQ(MakeProfile("Second", path, false), MAPI_E_NOT_FOUND);
    EXPECT_NE(LastErrorText(MAPI_E_NOT_FOUND).find(path), std::string::npos);
    EXPECT_FALSE(StoreFile::Exists(path));
}

TEST_F(Profiles, RefuseAFileWithoutAStore)
{
    const std::string path = m_folder.File("text.zeb");
    std::ofstream(path) << "this is no database";
    EXPECT_TRUE(FAILED(MakeProfile("Second", path)));
}

TEST_F(Profiles, AreNotConfiguredWithWrongSettings)
{
    const Ref<IMsgServiceAdmin> services = Services("Main");
    MAPIUID uid = ServiceUid(*services);
    SPropValue durability = NarrowValue(PR_ZEBSTORE_DURABILITY_A, "sometimes");
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, 0, 1, &durability), MAPI_E_INVALID_PARAMETER);
    durability = NarrowValue(PR_ZEBSTORE_DURABILITY_A, "full");
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, 0, 1, &durability), S_OK);
    SPropValue other = LongValue(PROP_TAG(PT_LONG, 0x6700), 1);
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, 0, 1, &other), MAPI_E_INVALID_PARAMETER);
    uid.ab[0] ^= 1;
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, 0, 0, nullptr), MAPI_E_NOT_FOUND);
}

TEST_F(Profiles, SwitchTheTextIndexOfTheirStore)
{
    const Ref<IMsgServiceAdmin> services = Services("Main");
    IMAPITable* table = nullptr;
    ASSERT_EQ(services->GetMsgServiceTable(0, &table), S_OK);
    const Rows rows(table, {PR_SERVICE_UID});
    MAPIUID uid;
    std::copy_n(rows.BytesCell(0, 0).data(), sizeof(uid.ab), uid.ab);
    const auto configure = [&](const char* index)
    {
        SPropValue setting = NarrowValue(PR_ZEBSTORE_INDEX_A, index);
        return services->ConfigureMsgService(&uid, 0, 0, 1, &setting);
    };
    const auto isOn = [&] { return StoreFile::Open(m_path, {})->Texts().IsOn(); };
    EXPECT_FALSE(isOn());
    EXPECT_EQ(configure("on"), S_OK);
    EXPECT_TRUE(isOn());
    EXPECT_EQ(services->ConfigureMsgService(&uid, 0, 0, 0, nullptr), S_OK);
    EXPECT_TRUE(isOn());
    EXPECT_EQ(configure("maybe"), MAPI_E_INVALID_PARAMETER);
    EXPECT_NE(LastErrorText(MAPI_E_INVALID_PARAMETER).find("the text index must be 'off' or 'on', not 'maybe'"),
              std::string::npos);
    EXPECT_EQ(configure("off"), S_OK);
    EXPECT_FALSE(isOn());
}

} // namespace
} // namespace zebstore
