// Profiles by the registry and through MAPI.
#include "zebapi/Profiles.h"

#include "tests/support/FailingNew.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/ProfileKeys.h"
#include "tests/support/doubles/RecordingProfAdmin.h"
#include "tests/zebapi/frame/LibraryFixture.h"
#include "zebapi/ZebAPI.h"
#include "zebapi/session/internal/App.h"

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using platform::RegistryKey;
using platform::RegistryRoot;

class ProfileNames : public LibraryFixture
{
protected:
    static void AddProfiles(const std::string& key, const std::vector<std::string>& names)
    {
        for (const std::string& name : names)
        {
            RegistryKey::Create(RegistryRoot::CurrentUser, key + "\\" + name);
        }
    }
    void SetDefault(const std::string& key, const std::string& name)
    {
        SetRegistry(RegistryRoot::CurrentUser, key, "DefaultProfile", name);
    }
    static std::vector<std::string> All(CZebProfileNames& profiles)
    {
        std::vector<std::string> names;
        CString name;
        while (profiles.GetNextName(name) != 0)
        {
            names.emplace_back(name);
        }
        return names;
    }
    static std::vector<std::string> All()
    {
        CZebProfileNames profiles;
        return All(profiles);
    }
};

class OutlookVersion : public ProfileNames, public ::testing::WithParamInterface<std::pair<const char*, bool>>
{
};

enum class Answer
{
    MapiFailure,
    ComError,
    Other,
    Name,
} answer;

/// Answers as the test wants. It gives its operations to the library's object, so it has no fields of its own.
class RaisingLibrary : public CZebAPI
{
public:
    CStringA GetDefaultProfileName() override
    {
        switch (answer)
        {
        case Answer::MapiFailure:
            CZebException::Throw(MAPI_E_NOT_FOUND, nullptr, 0);
        case Answer::ComError:
            RaiseComError(E_POINTER);
        case Answer::Other:
            throw 42;
        default:
            return "own";
        }
    }
};

/// Gives an object another's virtual operations for its lifetime: the table's address is the object's first field.
class OperationsScope
{
public:
    OperationsScope(CZebAPI& object, const CZebAPI& donor)
        : m_object(&object)
    {
        std::memcpy(m_table, m_object, sizeof m_table);
        std::memcpy(m_object, static_cast<const void*>(&donor), sizeof m_table);
    }
    ~OperationsScope() { std::memcpy(m_object, m_table, sizeof m_table); }
    OperationsScope(const OperationsScope&) = delete;
    OperationsScope& operator=(const OperationsScope&) = delete;

private:
    void* m_object;
    unsigned char m_table[sizeof(void*)];
};

class ProfAdmin : public LibraryFixture
{
protected:
    Journal journal;
    RowTable table{journal};
    RecordingProfAdmin admin{journal};
    MapiMemory memory;
    TableEntryPoints entryPoints;

    ProfAdmin() { admin.m_table = &table; }

    static RowData Row(const std::string& name, bool isDefault)
    {
        return {{PR_DISPLAY_NAME_A, 0, name}, {PR_DEFAULT_PROFILE, isDefault ? 1 : 0, ""}};
    }
};

} // namespace

TEST_F(ProfileNames, WithoutARegistryThereAreNone)
{
    EXPECT_THAT(All(), IsEmpty());
    EXPECT_EQ(std::string(CZebProfileNames().GetDefaultProfile()), "");
}

TEST_F(ProfileNames, AreTheSubsystemsWithoutOutlook15)
{
    AddProfiles(Subsystem, {"Alpha", "Beta"});
    AddProfiles(Outlook15Profiles, {"Gamma"});
    SetDefault(Subsystem, "Beta");
    SetDefault(Outlook15, "Gamma");
    EXPECT_THAT(All(), ElementsAre("Alpha", "Beta"));
    EXPECT_EQ(std::string(CZebProfileNames().GetDefaultProfile()), "Beta");
}

TEST_F(ProfileNames, AreOutlooksOwnWithOutlook15)
{
    SetOutlookVersion("Outlook.Application.15");
    AddProfiles(Subsystem, {"Alpha", "Beta"});
    AddProfiles(Outlook15Profiles, {"Gamma"});
    SetDefault(Subsystem, "Beta");
    SetDefault(Outlook15, "Gamma");
    SetDefault(Outlook15Profiles, "not here");
    EXPECT_THAT(All(), ElementsAre("Gamma"));
    EXPECT_EQ(std::string(CZebProfileNames().GetDefaultProfile()), "Gamma");
}

TEST_P(OutlookVersion, Is15WhereTextContains15)
{
    const auto [version, is15] = GetParam();
    SetOutlookVersion(version);
    AddProfiles(Subsystem, {"subsystem"});
    AddProfiles(Outlook15Profiles, {"outlook"});
    SetDefault(Subsystem, "subsystem");
    SetDefault(Outlook15, "outlook");
    EXPECT_THAT(All(), ElementsAre(is15 ? "outlook" : "subsystem"));
    EXPECT_EQ(std::string(CZebProfileNames().GetDefaultProfile()), is15 ? "outlook" : "subsystem");
}

INSTANTIATE_TEST_SUITE_P(Text, OutlookVersion,
                         ::testing::Values(std::pair{"Outlook.Application.15", true},
                                           std::pair{"Outlook.Application.16", false},
                                           std::pair{"Outlook.Application.14", false},
                                           std::pair{"Outlook.Application.150", true}, std::pair{"15", true},
                                           std::pair{"15.Outlook", true}, std::pair{"Outlook.15.Application", true},
                                           std::pair{"Outlook.Application.51", false}, std::pair{"1.5", false},
                                           std::pair{"1 5", false}, std::pair{"1", false}, std::pair{"", false}));

TEST_F(ProfileNames, ConstructionDecidesTheVersionsKey)
{
    AddProfiles(Subsystem, {"Alpha", "Beta"});
    AddProfiles(Outlook15Profiles, {"Gamma"});
    CZebProfileNames profiles;
    EXPECT_EQ(std::string(CZebProfileNames::GetProfilesKey()), Subsystem);
    SetOutlookVersion("Outlook.Application.15");
    EXPECT_EQ(std::string(CZebProfileNames::GetProfilesKey()), Outlook15Profiles);
    EXPECT_THAT(All(profiles), ElementsAre("Alpha", "Beta"));
    EXPECT_THAT(All(), ElementsAre("Gamma"));
}

TEST_F(ProfileNames, AVersionMustBeText)
{
    RegistryKey::Create(RegistryRoot::ClassesRoot, "Outlook.Application\\CurVer").SetBinaryValue("", {'1', '5', 0});
    AddProfiles(Subsystem, {"subsystem"});
    AddProfiles(Outlook15Profiles, {"outlook"});
    EXPECT_THAT(All(), ElementsAre("subsystem"));
    SetRegistry(RegistryRoot::ClassesRoot, "Outlook.Application", "", "Outlook.Application.15");
    SetRegistry(RegistryRoot::CurrentUser, "Outlook.Application\\CurVer", "", "Outlook.Application.15");
    EXPECT_THAT(All(), ElementsAre("subsystem")) << "only CurVer of the classes' root counts";
}

TEST_F(ProfileNames, ADefaultMustBeText)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, Subsystem).SetBinaryValue("DefaultProfile", {'x', 0});
    EXPECT_EQ(std::string(CZebProfileNames().GetDefaultProfile()), "");
    SetRegistry(RegistryRoot::CurrentUser, Subsystem, "", "the key's own value");
    EXPECT_EQ(std::string(CZebProfileNames().GetDefaultProfile()), "");
}

TEST_F(ProfileNames, AreSubKeysInRegistryOrder)
{
    AddProfiles(Subsystem, {"Beta", "Alpha\\inner", "Gamma"});
    SetDefault(Subsystem, "Alpha");
    const std::vector<std::string> order = RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, Subsystem);
    EXPECT_EQ(order.size(), 3u);
    EXPECT_EQ(All(), order);
}

TEST_F(ProfileNames, TheEndLastsUntilReset)
{
    AddProfiles(Subsystem, {"Alpha", "Beta"});
    CZebProfileNames profiles;
    EXPECT_THAT(All(profiles), ElementsAre("Alpha", "Beta"));
    CString name = "kept";
    EXPECT_EQ(profiles.GetNextName(name), 0);
    EXPECT_EQ(profiles.GetNextName(name), 0);
    EXPECT_EQ(std::string(name), "kept");
    profiles.Reset();
    EXPECT_EQ(profiles.GetNextName(name), 1);
    EXPECT_EQ(std::string(name), "Alpha");
}

TEST_F(ProfileNames, TheDefaultsVersionIsReadAgain)
{
    SetDefault(Subsystem, "subsystem");
    SetDefault(Outlook15, "outlook");
    CZebProfileNames profiles;
    EXPECT_EQ(std::string(profiles.GetDefaultProfile()), "subsystem");
    SetOutlookVersion("Outlook.Application.15");
    EXPECT_EQ(std::string(profiles.GetDefaultProfile()), "outlook");
}

TEST_F(ProfileNames, TheLibraryTakesTheirDefault)
{
    EXPECT_EQ(std::string(library.GetDefaultProfileName()), "");
    SetDefault(Subsystem, "Beta");
    EXPECT_EQ(std::string(library.GetDefaultProfileName()), "Beta");
}

TEST_F(ProfileNames, HasDefaultProfileChecksTheName)
{
    EXPECT_FALSE(Zeb_HasDefaultProfile());
    SetDefault(Subsystem, "Beta");
    EXPECT_TRUE(Zeb_HasDefaultProfile());
    SetDefault(Subsystem, "");
    EXPECT_FALSE(Zeb_HasDefaultProfile());
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ProfileNames, HasDefaultProfileLogsAnyException)
{
    SetDefault(Subsystem, "Beta");
    bool has = true;
    {
        FailingNew failing(0, true);
        has = Zeb_HasDefaultProfile();
    }
    EXPECT_FALSE(has);
    EXPECT_THAT(log.Lines(), ElementsAre(::testing::Field(
                                 &LogLine::text, StartsWith("EXCEPTION: Description: \"MAPI_E_NOT_ENOUGH_MEMORY\", "
                                                            "File: \"zebapi/ZebAPI.cpp\", Line: "))));
    EXPECT_EQ(log.Lines()[0].level, 1);
}

TEST_F(ProfileNames, HasDefaultProfileAsksVirtualOperations)
{
    const RaisingLibrary donor;
    const OperationsScope operations(library, donor);
    const std::pair<Answer, std::string> kinds[] = {
        {Answer::MapiFailure, "EXCEPTION: Description: \"MAPI_E_NOT_FOUND\", File: \"zebapi/ZebAPI.cpp\", Line: "},
        {Answer::ComError, "EXCEPTION: _com_error: 0x80004003, File: \"zebapi/ZebAPI.cpp\", Line: "},
        {Answer::Other, "EXCEPTION: Description: <Unknown>, File: \"zebapi/ZebAPI.cpp\", Line: "}};
    for (const auto& [kind, line] : kinds)
    {
        log.Clear();
        answer = kind;
        EXPECT_FALSE(Zeb_HasDefaultProfile());
        EXPECT_THAT(log.Lines(), ElementsAre(::testing::Field(&LogLine::text, StartsWith(line))));
        EXPECT_EQ(log.Lines()[0].level, 1);
    }
    log.Clear();
    answer = Answer::Name;
    EXPECT_TRUE(Zeb_HasDefaultProfile());
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ProfileNames, HasDefaultStaticProfileKeepsAnswers)
{
    SetDefault(Subsystem, "Beta");
    EXPECT_TRUE(Zeb_HasDefaultStaticProfile());
    RegistryKey::DeleteTree(RegistryRoot::CurrentUser, Subsystem);
    EXPECT_FALSE(Zeb_HasDefaultProfile());
    EXPECT_TRUE(Zeb_HasDefaultStaticProfile());
}

TEST_F(ProfAdmin, ComesFromTheStartedProvider)
{
    provider.profAdmin = &admin;
    Start(ProviderFile::Undecorated());
    CZebProfAdmin opened = CZebProfAdmin::Open();
    EXPECT_TRUE(opened.IsValid());
    EXPECT_EQ(provider.adminCalls, 1);
    EXPECT_EQ(provider.adminFlags, 0u);
    EXPECT_EQ(admin.References(), 1u) << "the wrapper's own";
    provider.admin = MAPI_E_NO_ACCESS;
    EXPECT_EQ(ThrownBy([] { CZebProfAdmin::Open(); }), MAPI_E_NO_ACCESS);
    EXPECT_FALSE(library.WasFailed());
}

TEST_F(ProfAdmin, WithoutAProviderCannotBeOpened)
{
    EXPECT_EQ(ThrownBy([] { CZebProfAdmin::Open(); }), MAPI_E_CALL_FAILED);
}

TEST_F(ProfAdmin, HoldsAReferenceAndClosesIt)
{
    CZebProfAdmin profAdmin(&admin);
    EXPECT_EQ(admin.References(), 1u);
    {
        CZebProfAdmin copy(profAdmin);
        EXPECT_EQ(admin.References(), 2u);
        EXPECT_TRUE(copy.IsValid());
    }
    EXPECT_EQ(admin.References(), 1u);
    profAdmin.Close();
    EXPECT_FALSE(profAdmin.IsValid());
    EXPECT_EQ(admin.References(), 0u);
    profAdmin.Close();
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ProfAdmin, AssigningSharesTheObject)
{
    CZebProfAdmin source(&admin);
    CZebProfAdmin target;
    CZebProfAdmin& result = target = source;
    EXPECT_EQ(&result, &target);
    EXPECT_TRUE(target.IsValid());
    EXPECT_EQ(admin.References(), 2u);
    target = *&target;
    EXPECT_TRUE(target.IsValid());
    EXPECT_EQ(admin.References(), 2u);
    EXPECT_TRUE(log.Lines().empty());
}

TEST_F(ProfAdmin, AssigningAnEmptyOneLogsTwice)
{
    CZebProfAdmin target(&admin);
    target = CZebProfAdmin();
    EXPECT_FALSE(target.IsValid());
    EXPECT_EQ(admin.References(), 0u);
    EXPECT_THAT(log.Texts(), ElementsAre(StartsWith("THROW Exception 0x80004002 (MAPI_E_INTERFACE_NOT_SUPPORTED), File "
                                                    "zebapi/session/Profiles.cpp, line "),
                                         StartsWith("EXCEPTION: Description: \"MAPI_E_INTERFACE_NOT_SUPPORTED\", File: "
                                                    "\"zebapi/session/Profiles.cpp\", Line: ")));
}

TEST_F(ProfAdmin, AssigningQueriesTheOther)
{
    CZebProfAdmin source(&admin);
    admin.NoteQueries();
    CZebProfAdmin target;
    target = source;
    EXPECT_THAT(journal.Take(), ElementsAre("admin: QueryInterface(other interface)"));
    admin.RefuseInterfaces();
    target = source;
    EXPECT_FALSE(target.IsValid());
    EXPECT_EQ(admin.References(), 1u);
    EXPECT_EQ(log.CountBeginning("EXCEPTION: Description: \"MAPI_E_INTERFACE_NOT_SUPPORTED\""), 1u);
}

TEST_F(ProfAdmin, TheTableComesFromOwnOperation)
{
    class Own : public CZebProfAdmin
    {
    public:
        using CZebProfAdmin::CZebProfAdmin;
        CZebTable GetProfileTable() override { return CZebTable(m_own); }
        IMAPITable* m_own = nullptr;
    };
    table.m_rows = {Row("Own", true)};
    Own own;
    own.m_own = &table;
    CZebProfAdmin& base = own;
    EXPECT_EQ(std::string(base.GetDefaultProfileName()), "Own");
}

TEST_F(ProfAdmin, AnEmptyOneRaises)
{
    CZebProfAdmin empty;
    EXPECT_EQ(ComErrorThrownBy([&empty] { empty.GetProfileTable(); }), E_POINTER);
    EXPECT_EQ(ComErrorThrownBy([&empty] { empty.GetDefaultProfileName(); }), E_POINTER);
}

TEST_F(ProfAdmin, GivesTheProfileTable)
{
    CZebProfAdmin profAdmin(&admin);
    {
        CZebTable profiles = profAdmin.GetProfileTable();
        EXPECT_TRUE(profiles.IsValid());
        EXPECT_EQ(table.References(), 1u) << "the wrapper's own";
    }
    EXPECT_THAT(journal.Take(), ElementsAre("admin: GetProfileTable(0x0)"));
}

TEST_F(ProfAdmin, AFailureCarriesTheObjectsError)
{
    CZebProfAdmin profAdmin(&admin);
    admin.m_error = "profiles are locked";
    admin.Fail("GetProfileTable", MAPI_E_BUSY);
    EXPECT_EQ(ThrownBy([&profAdmin] { profAdmin.GetProfileTable(); }), MAPI_E_BUSY);
    EXPECT_EQ(log.CountBeginning("THROW Exception 0x8004010b (Ver:1, Error:profiles are locked, Component:admin, "
                                 "LowLewelError:2, Context:3 \n)"),
              1u);
}

TEST_F(ProfAdmin, TheFirstMarkedRowIsDefault)
{
    table.m_rows = {Row("Alpha", false), Row("Beta", true), Row("Gamma", true)};
    EXPECT_EQ(std::string(CZebProfAdmin(&admin).GetDefaultProfileName()), "Beta");
    EXPECT_THAT(journal.Take(),
                ElementsAre("admin: GetProfileTable(0x0)", "table: GetRowCount(0x0)", "table: QueryRows(3,0x0)"))
        << "every row as it comes, no columns set";
}

TEST_F(ProfAdmin, RowsWithoutTheMarkAreSkipped)
{
    table.m_rows = {
        {{PR_DISPLAY_NAME_A, 0, "Alpha"}},
        {{PR_DISPLAY_NAME_A, 0, "Beta"}, {PROP_TAG(PT_ERROR, PROP_ID(PR_DEFAULT_PROFILE)), MAPI_E_NOT_FOUND, ""}},
        Row("Gamma", true)};
    EXPECT_EQ(std::string(CZebProfAdmin(&admin).GetDefaultProfileName()), "Gamma");
}

TEST_F(ProfAdmin, AnotherTypesMarkIsNone)
{
    table.m_rows = {{{PR_DISPLAY_NAME_A, 0, "Alpha"}, {PROP_TAG(PT_LONG, PROP_ID(PR_DEFAULT_PROFILE)), 1, ""}},
                    {{PR_DISPLAY_NAME_A, 0, "Beta"}, {PROP_TAG(PT_STRING8, PROP_ID(PR_DEFAULT_PROFILE)), 0, "yes"}},
                    Row("Gamma", true)};
    EXPECT_EQ(std::string(CZebProfAdmin(&admin).GetDefaultProfileName()), "Gamma");
}

TEST_F(ProfAdmin, SuccessWithoutAnObjectFails)
{
    Start(ProviderFile::Undecorated());
    EXPECT_EQ(ThrownBy([] { CZebProfAdmin::Open(); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(provider.adminCalls, 1);
    EXPECT_FALSE(library.WasFailed());
}

TEST_F(ProfAdmin, SuccessWithoutATableFails)
{
    admin.m_table = nullptr;
    EXPECT_EQ(ThrownBy([this] { CZebProfAdmin(&admin).GetProfileTable(); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(ThrownBy([this] { CZebProfAdmin(&admin).GetDefaultProfileName(); }), MAPI_E_CALL_FAILED);
}

TEST_F(ProfAdmin, RowsThatVanishAreNoDefault)
{
    table.m_rows = {Row("Alpha", false), Row("Beta", true)};
    table.m_whileReading = [this] { table.m_rows.resize(1); };
    EXPECT_EQ(ThrownBy([this] { CZebProfAdmin(&admin).GetDefaultProfileName(); }), MAPI_E_NOT_FOUND);
    table.m_whileReading = nullptr;
    table.m_rows = {Row("Beta", true)};
    table.m_givesNothing = true;
    EXPECT_EQ(ThrownBy([this] { CZebProfAdmin(&admin).GetDefaultProfileName(); }), MAPI_E_NOT_FOUND)
        << "success without rows";
}

TEST_F(ProfAdmin, AnUnreadableTableThrows)
{
    table.m_rows = {Row("Beta", true)};
    table.Fail("QueryRows", MAPI_E_BUSY);
    EXPECT_EQ(ThrownBy([this] { CZebProfAdmin(&admin).GetDefaultProfileName(); }), MAPI_E_BUSY);
}

TEST_F(ProfAdmin, WithoutADefaultIsNotFound)
{
    table.m_rows = {Row("Alpha", false)};
    EXPECT_EQ(ThrownBy([this] { CZebProfAdmin(&admin).GetDefaultProfileName(); }), MAPI_E_NOT_FOUND);
    table.m_rows = {};
    EXPECT_EQ(ThrownBy([this] { CZebProfAdmin(&admin).GetDefaultProfileName(); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(std::string(CZebProfileNames().GetDefaultProfile()), "");
}

TEST(App, LogsItsStart)
{
    LogCapture log;
    CZebAPIApp app;
    EXPECT_EQ(app.InitInstance(), TRUE);
    EXPECT_THAT(log.Lines(), ElementsAre(Line(1, "CZebAPIApp::InitInstance started")));
}

} // namespace zeb::test
