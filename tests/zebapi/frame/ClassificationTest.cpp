// What makes a library a provider: CheckMAPIDll.
#include "tests/zebapi/frame/ProviderFixture.h"

#include "qorth/DllLoader.h"
#include "zebapi/constants/internal/EntryPoints.h"

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

class Classification : public ProviderFixture
{
protected:
    ProviderClass Check(const std::string& path) { return CheckMAPIDll(path, ProviderEnvironment::Machine()); }
};

class MissingName : public ProviderFixture, public ::testing::WithParamInterface<int>
{
};

std::vector<std::string> Names(const char* const* list)
{
    std::vector<std::string> names;
    for (; *list != nullptr; ++list)
    {
        names.emplace_back(*list);
    }
    return names;
}

} // namespace

TEST(TestLists, Have22EntryPointsInOrder)
{
    const std::vector<std::string> decorated = Names(DecoratedTestList);
    const std::vector<std::string> undecorated = Names(UndecoratedTestList);
    ASSERT_EQ(decorated.size(), 22u);
    ASSERT_EQ(undecorated.size(), 22u);
    for (size_t i = 0; i < 22; ++i)
    {
        EXPECT_EQ(decorated[i].substr(0, decorated[i].find('@')), undecorated[i]);
    }
    EXPECT_THAT(undecorated,
                ElementsAre("MAPIInitialize", "MAPIUninitialize", "MAPILogonEx", "MAPIOpenFormMgr", "MAPIAdminProfiles",
                            "MAPIAllocateBuffer", "MAPIAllocateMore", "MAPIFreeBuffer", "CreateTable", "HrGetOneProp",
                            "HrSetOneProp", "HrValidateIPMSubtree", "UlRelease", "FreeProws", "HrQueryAllRows",
                            "FBinFromHex", "HexFromBin", "ScBinFromHexBounded", "ScCopyNotifications", "OpenIMsgOnIStg",
                            "OpenStreamOnFile", "RTFSync"));
}

TEST(TestLists, DecoratedNamesCarryTheirArgumentsSize)
{
    const std::vector<std::string> names = Names(DecoratedTestList);
    EXPECT_THAT(std::vector<std::string>(names.begin() + 8, names.end()),
                ElementsAre("CreateTable@36", "HrGetOneProp@12", "HrSetOneProp@8", "HrValidateIPMSubtree@20",
                            "UlRelease@4", "FreeProws@4", "HrQueryAllRows@24", "FBinFromHex@8", "HexFromBin@12",
                            "ScBinFromHexBounded@12", "ScCopyNotifications@16", "OpenIMsgOnIStg@44", "OpenStreamOnFile",
                            "RTFSync@12"));
}

TEST_F(Classification, AllDecoratedNamesAre32Bit)
{
    const std::string path = Library("MAPI32.DLL", ProviderFile::Decorated());
    const ProviderClass found = Check(path);
    EXPECT_EQ(found.bitness, OfficeBitness32);
    EXPECT_TRUE(found.loaded);
    EXPECT_EQ(found.missingDecorated, nullptr);
    EXPECT_EQ(found.missingUndecorated, nullptr);
    EXPECT_THAT(log.Lines(), ElementsAre(Plain("Checking '" + path + "'"),
                                         Plain("'" + path + "' is correct and MAPI is for 32-bit Office.")));
    EXPECT_EQ(provider.loads, 1);
    EXPECT_EQ(provider.unloads, 1) << "the library is only looked at";
}

TEST_F(Classification, AllUndecoratedNamesAre64Bit)
{
    const std::string path = Library("MAPI32.DLL", ProviderFile::Undecorated());
    const ProviderClass found = Check(path);
    EXPECT_EQ(found.bitness, OfficeBitness64);
    EXPECT_STREQ(found.missingDecorated, "CreateTable@36");
    EXPECT_EQ(found.missingUndecorated, nullptr);
    EXPECT_THAT(log.Lines(),
                ElementsAre(Plain("Checking '" + path + "'"), Plain("Dll does not contains 'CreateTable@36'"),
                            Plain("'" + path + "' is correct and MAPI is for 64-bit Office.")));
    EXPECT_EQ(provider.unloads, 1);
}

TEST_F(Classification, DecoratedGoesBeforeUndecorated)
{
    const std::string path = Library("MAPI32.DLL", ProviderFile::Both());
    EXPECT_EQ(Check(path).bitness, OfficeBitness32);
    EXPECT_THAT(log.Lines(), ElementsAre(Plain("Checking '" + path + "'"),
                                         Plain("'" + path + "' is correct and MAPI is for 32-bit Office.")));
}

TEST_F(Classification, UndecoratedIsTriedAfterDecorated)
{
    const std::string path = Library("MAPI32.DLL", ProviderFile::Both().Remove("RTFSync@12"));
    const ProviderClass found = Check(path);
    EXPECT_EQ(found.bitness, OfficeBitness64);
    EXPECT_STREQ(found.missingDecorated, "RTFSync@12");
    EXPECT_THAT(log.Lines(), ElementsAre(Plain("Checking '" + path + "'"), Plain("Dll does not contains 'RTFSync@12'"),
                                         Plain("'" + path + "' is correct and MAPI is for 64-bit Office.")));
}

TEST_F(Classification, ANonLibraryDoesNotLoad)
{
    const std::string path = TextFile("MAPI32.DLL");
    const ProviderClass found = Check(path);
    EXPECT_EQ(found.bitness, OfficeBitnessNone);
    EXPECT_FALSE(found.loaded);
    EXPECT_FALSE(found.loadError.empty());
    EXPECT_EQ(found.resolved, path);
    EXPECT_THAT(log.Lines(), ElementsAre(Plain("Checking '" + path + "'"), Plain("Unable to load '" + path + "'")));
}

TEST_F(Classification, AnEmptyPathDoesNotLoad)
{
    const ProviderClass found = Check("");
    EXPECT_EQ(found.bitness, OfficeBitnessNone);
    EXPECT_FALSE(found.loaded) << "the host program itself must not be opened";
    EXPECT_THAT(log.Lines(), ElementsAre(Plain("Checking ''"), Plain("Unable to load ''")));
}

TEST_F(Classification, APercentSignIsWrittenUnchanged)
{
    const std::string path = folder.File("50%s%n.dll");
    Check(path);
    EXPECT_THAT(log.Lines(), ElementsAre(Plain("Checking '" + path + "'"), Plain("Unable to load '" + path + "'")));
}

TEST_P(MissingName, OfTheUndecoratedListIsNamed)
{
    const std::string name = UndecoratedTestList[GetParam()];
    // The first eight names and OpenStreamOnFile are in both lists, so the decorated list stops there too.
    const bool shared = name == DecoratedTestList[GetParam()];
    const std::string path = Library("MAPI32.DLL", ProviderFile::Undecorated().Remove(name));
    const ProviderClass found = CheckMAPIDll(path, ProviderEnvironment::Machine());
    EXPECT_EQ(found.bitness, OfficeBitnessNone);
    EXPECT_STREQ(found.missingUndecorated, name.c_str());
    const std::string missingDecorated = shared && GetParam() < 8 ? name : "CreateTable@36";
    EXPECT_EQ(found.missingDecorated, missingDecorated);
    EXPECT_THAT(log.Lines(),
                ElementsAre(Plain("Checking '" + path + "'"), Plain("Dll does not contains '" + missingDecorated + "'"),
                            Plain("Dll does not contains '" + name + "'")));
    EXPECT_EQ(provider.unloads, 1);
}

TEST_P(MissingName, OfTheDecoratedListIsNamed)
{
    const std::string name = DecoratedTestList[GetParam()];
    const bool shared = name == UndecoratedTestList[GetParam()];
    const std::string path = Library("MAPI32.DLL", ProviderFile::Decorated().Remove(name));
    const ProviderClass found = CheckMAPIDll(path, ProviderEnvironment::Machine());
    EXPECT_EQ(found.bitness, OfficeBitnessNone);
    EXPECT_STREQ(found.missingDecorated, name.c_str());
    const std::string missingUndecorated = shared && GetParam() < 8 ? name : "CreateTable";
    EXPECT_EQ(found.missingUndecorated, missingUndecorated);
    EXPECT_THAT(log.Lines(),
                ElementsAre(Plain("Checking '" + path + "'"), Plain("Dll does not contains '" + name + "'"),
                            Plain("Dll does not contains '" + missingUndecorated + "'")));
    EXPECT_EQ(provider.unloads, 1);
}

INSTANTIATE_TEST_SUITE_P(Position, MissingName, ::testing::Range(0, 22));

TEST_F(Classification, RemovingANameLeavesTheOthers)
{
    const CDllLoader library(Library("MAPI32.DLL", ProviderFile::Both().Remove("HrGetOneProp@12")).c_str(), 20);
    ASSERT_FALSE(library.IsEmpty());
    EXPECT_EQ(library.GetProc("HrGetOneProp@12"), nullptr);
    EXPECT_NE(library.GetProc("PropCopyMore@16"), nullptr);
    for (const char* const* list : {DecoratedTestList, UndecoratedTestList})
    {
        for (const std::string& name : Names(list))
        {
            EXPECT_EQ(library.GetProc(name.c_str()) != nullptr, name != "HrGetOneProp@12") << name;
        }
    }
}

} // namespace zeb::test
