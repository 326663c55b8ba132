// Profiles of the embedded provider, read from the registry and through MAPI.
#include "tests/integration/Content.h"
#include "tests/support/ProfileKeys.h"

#include "platform/text.h"

#include <utility>

namespace zeb::test
{
namespace
{

using platform::RegistryKey;
using platform::RegistryRoot;

class Profiles : public Host
{
protected:
    static Names InRegistry()
    {
        CZebProfileNames reader;
        Names names;
        CString name;
        while (reader.GetNextName(name))
        {
            names.emplace_back(name.GetString());
        }
        return names;
    }
    static Names ThroughMapi()
    {
        CZebProfAdmin admin = CZebProfAdmin::Open();
        return Column(admin.GetProfileTable(), PR_DISPLAY_NAME_A);
    }
    static std::string DefaultInRegistry() { return CZebProfileNames().GetDefaultProfile().GetString(); }
    static std::string DefaultThroughMapi() { return CZebProfAdmin::Open().GetDefaultProfileName().GetString(); }
    static Names SubKeys(const char* path) { return RegistryKey::SubKeyNames(RegistryRoot::CurrentUser, path); }
    static std::string DefaultValue(const char* path)
    {
        const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, path);
        return key ? key->StringValue("DefaultProfile").value_or("") : "";
    }
    /// Runs one call of MAPI's profile administration.
    template <class Call>
    static void Administer(Call call)
    {
        CZebProfAdmin admin = CZebProfAdmin::Open();
        const CComPtr<IProfAdmin> profiles = admin.GetInterface();
        ThrowIfFailed(call(*profiles.Get()), profiles);
    }
    static LPTSTR Text(const char* text) { return reinterpret_cast<LPTSTR>(const_cast<char*>(text)); }
};

class ProfilesByVersion : public Profiles, public testing::WithParamInterface<std::pair<const char*, bool>>
{
};

TEST_F(Profiles, AreEqualInRegistryAndMapi)
{
    Start();
    for (const char* name : {"beta", "Alpha", "gamma"})
    {
        CreateProfile(name, File(std::string(name) + ".zeb"), false);
    }
    EXPECT_EQ(InRegistry().size(), 3u);
    EXPECT_EQ(InRegistry(), ThroughMapi());
    EXPECT_EQ(InRegistry(), SubKeys(Subsystem)) << "in the registry's order";
    EXPECT_EQ(DefaultInRegistry(), "beta") << "the first one made";
    EXPECT_EQ(DefaultThroughMapi(), "beta");
    Administer([](IProfAdmin& admin) { return admin.SetDefaultProfile(Text("gamma"), 0); });
    EXPECT_EQ(DefaultInRegistry(), "gamma");
    EXPECT_EQ(DefaultThroughMapi(), "gamma");
}

TEST_F(Profiles, AreReadWithoutMapi)
{
    Start();
    CreateProfile("mine", File("mine.zeb"));
    CreateProfile("other", File("other.zeb"), false);
    const Names before = InRegistry();
    Stop();
    ASSERT_FALSE(Zeb_GetMAPI().WasInitialized());
    EXPECT_EQ(InRegistry(), before);
    EXPECT_EQ(before.size(), 2u);
    EXPECT_EQ(DefaultInRegistry(), "mine");
    EXPECT_TRUE(Zeb_HasDefaultProfile());
    EXPECT_FALSE(Zeb_GetMAPI().WasInitialized()) << "it was not started";
    EXPECT_EQ(FailureOf([] { CZebProfAdmin::Open(); }).result, MAPI_E_CALL_FAILED);
}

TEST_P(ProfilesByVersion, AreWhereTheOutlookVersionSays)
{
    const auto [version, own] = GetParam();
    SetOutlookVersion(version);
    Start();
    CreateProfile("mine", File("mine.zeb"));
    EXPECT_EQ(SubKeys(own ? Outlook15Profiles : Subsystem), Names{"mine"});
    EXPECT_TRUE(SubKeys(own ? Subsystem : Outlook15Profiles).empty());
    EXPECT_EQ(DefaultValue(own ? Outlook15 : Subsystem), "mine");
    EXPECT_EQ(DefaultValue(Outlook15Profiles), "");
    EXPECT_STREQ(CZebProfileNames::GetProfilesKey(), own ? Outlook15Profiles : Subsystem);
    EXPECT_EQ(InRegistry(), Names{"mine"});
    EXPECT_EQ(ThroughMapi(), Names{"mine"});
    EXPECT_EQ(DefaultInRegistry(), "mine");
    EXPECT_EQ(DefaultThroughMapi(), "mine");
    CZebSession session = LogOn();
    EXPECT_TRUE(session.IsValid());
    session.Logoff(0, 0, 0);
    // Outlook is removed: both use the other key from now on.
    SetOutlookVersion(own ? "Outlook.Application.16" : "Outlook.Application.15");
    EXPECT_TRUE(InRegistry().empty());
    EXPECT_TRUE(ThroughMapi().empty());
    EXPECT_EQ(DefaultInRegistry(), "");
    EXPECT_EQ(FailureOf([] { DefaultThroughMapi(); }).result, MAPI_E_NOT_FOUND);
}

INSTANTIATE_TEST_SUITE_P(CurVer, ProfilesByVersion,
                         testing::Values(std::pair{"Outlook.Application.14", false},
                                         std::pair{"Outlook.Application.15", true},
                                         std::pair{"Outlook.Application.16", false},
                                         std::pair{"Outlook.Application.150", true}));

TEST_F(Profiles, WithoutADefaultOnlyMapiFails)
{
    Start();
    EXPECT_EQ(DefaultInRegistry(), "");
    EXPECT_EQ(FailureOf([] { DefaultThroughMapi(); }).result, MAPI_E_NOT_FOUND);
    EXPECT_TRUE(ThroughMapi().empty());
    CreateProfile("mine", File("mine.zeb"));
    CreateProfile("other", File("other.zeb"), false);
    Administer([](IProfAdmin& admin) { return admin.SetDefaultProfile(Text(""), 0); });
    EXPECT_EQ(InRegistry(), ThroughMapi());
    EXPECT_EQ(DefaultInRegistry(), "");
    EXPECT_FALSE(Zeb_HasDefaultProfile());
    EXPECT_EQ(FailureOf([] { DefaultThroughMapi(); }).result, MAPI_E_NOT_FOUND);
    const Failure logon = FailureOf([this] { LogOn(); });
    EXPECT_TRUE(FAILED(logon.result));
    EXPECT_FALSE(logon.text.empty());
}

TEST_F(Profiles, ADeletedDefaultIsNone)
{
    Start();
    CreateProfile("mine", File("mine.zeb"));
    CreateProfile("other", File("other.zeb"), false);
    Administer([](IProfAdmin& admin) { return admin.DeleteProfile(Text("mine"), 0); });
    EXPECT_EQ(InRegistry(), Names{"other"});
    EXPECT_EQ(ThroughMapi(), Names{"other"});
    EXPECT_EQ(DefaultInRegistry(), "");
    EXPECT_EQ(FailureOf([] { DefaultThroughMapi(); }).result, MAPI_E_NOT_FOUND);
}

TEST_F(Profiles, OnlyTheRegistryNamesMissingDefaults)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, Subsystem).SetStringValue("DefaultProfile", "ghost");
    Start();
    EXPECT_EQ(DefaultInRegistry(), "ghost");
    EXPECT_EQ(FailureOf([] { DefaultThroughMapi(); }).result, MAPI_E_NOT_FOUND);
    EXPECT_TRUE(InRegistry().empty());
}

TEST_F(Profiles, BothSeeRenamedAndCopiedOnes)
{
    Start();
    CreateProfile("mine", File("mine.zeb"));
    Administer([](IProfAdmin& admin) { return admin.CopyProfile(Text("mine"), nullptr, Text("copy"), 0, 0); });
    Administer([](IProfAdmin& admin) { return admin.RenameProfile(Text("mine"), nullptr, Text("new"), 0, 0); });
    EXPECT_EQ(InRegistry().size(), 2u);
    EXPECT_EQ(InRegistry(), ThroughMapi());
    EXPECT_EQ(DefaultInRegistry(), "new");
    EXPECT_EQ(DefaultThroughMapi(), "new");
}

TEST_F(Profiles, MapiListsTheRegistrysOwnToo)
{
    RegistryKey::Create(RegistryRoot::CurrentUser, std::string(Subsystem) + "\\by hand");
    Start();
    EXPECT_EQ(InRegistry(), Names{"by hand"});
    EXPECT_EQ(ThroughMapi(), Names{"by hand"});
    CreateProfile(platform::NarrowFromWide(ZEBW("B\u00FCro"), 4), File("office.zeb"), false);
    EXPECT_EQ(InRegistry(), ThroughMapi());
    EXPECT_EQ(InRegistry().size(), 2u);
}

TEST_F(Profiles, AProfileTableOutlivesItsAdministration)
{
    Start();
    CreateProfile("mine", File("mine.zeb"));
    CZebTable table;
    {
        CZebProfAdmin admin = CZebProfAdmin::Open();
        CZebProfAdmin copy(admin);
        admin.Close();
        table = copy.GetProfileTable();
        copy.Close();
        EXPECT_THROW(copy.GetProfileTable(), _com_error);
    }
    EXPECT_EQ(Column(table, PR_DISPLAY_NAME_A), Names{"mine"});
}

} // namespace
} // namespace zeb::test
