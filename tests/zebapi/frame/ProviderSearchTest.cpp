// Where a provider is looked for, and in which order.
#include "tests/support/CurrentFolder.h"
#include "tests/zebapi/frame/ProviderFixture.h"
#include "zebapi/Mapiload.h"

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using platform::RegistryRoot;

constexpr char OutlookLanguage[] = "Microsoft\\Office\\9.0\\Outlook\0LastUILanguage\0";
constexpr char OfficeLanguages[] = "Microsoft\\Office\\9.0\\Common\\LanguageResources\0UILanguage\0InstallLanguage\0";

class ProviderSearch : public ProviderFixture
{
protected:
    /// A stub in the system folder that answers FGetComponentPath.
    void InstallStub(const std::string& name = "mapistub.dll")
    {
        Library("system/" + name, ProviderFile::Undecorated().Remove("RTFSync"));
    }
    /// The lines from `text` on.
    std::vector<LogLine> LinesFrom(const std::string& text) const
    {
        const std::vector<LogLine> lines = log.Lines();
        const auto first = std::find_if(lines.begin(), lines.end(), [&text](const LogLine& line)
        { return line.text.compare(0, text.size(), text) == 0; });
        return {first, lines.end()};
    }
};

template <size_t Size>
std::string WithZeros(const char (&text)[Size])
{
    return std::string(text, Size);
}

} // namespace

TEST_F(ProviderSearch, OutlooksLibraryIsTakenFirst)
{
    const std::string path = Library("outlook.dll", ProviderFile::Undecorated());
    RegisterOutlook(path);
    Library("system/MAPI32.DLL", ProviderFile::Decorated());
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, path);
    EXPECT_EQ(report.bitness, OfficeBitness64);
    EXPECT_THAT(log.Lines(), ElementsAre(Progress("Checking Outlook MAPI..."), Plain("Checking '" + path + "'"),
                                         Plain("Dll does not contains 'CreateTable@36'"),
                                         Plain("'" + path + "' is correct and MAPI is for 64-bit Office."),
                                         Progress("Outlook MAPI is correct: " + path)));
    ASSERT_EQ(report.candidates.size(), 1u);
    EXPECT_EQ(report.candidates[0].step, ProviderStep::Outlook);
    EXPECT_EQ(report.candidates[0].origin,
              "HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook, value DLLPathEx");
    EXPECT_EQ(report.candidates[0].path, path);
    EXPECT_EQ(report.candidates[0].found.resolved, path);
}

TEST_F(ProviderSearch, TheExportGivesPathAndSpelling)
{
    RegisterOutlook(Library("outlook.dll", ProviderFile::Decorated()));
    EnumOfficeBitness bitness = OfficeBitnessNone;
    EXPECT_EQ(std::string(Zeb_GetMapiDllPath(bitness)), folder.File("outlook.dll"));
    EXPECT_EQ(bitness, OfficeBitness32);
}

TEST_F(ProviderSearch, NothingFoundGivesAnEmptyPath)
{
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, "");
    EXPECT_EQ(report.bitness, OfficeBitnessNone);
    EXPECT_THAT(log.Lines(), ElementsAre(Progress("Checking Outlook MAPI..."), Progress("Checking common MAPI: "),
                                         Progress("Check system MAPI: MAPI32.DLL"), Plain("Checking 'MAPI32.DLL'"),
                                         Plain("Unable to load 'MAPI32.DLL'")));
    ASSERT_EQ(report.candidates.size(), 3u);
    EXPECT_FALSE(report.candidates[0].examined);
    EXPECT_EQ(report.candidates[0].origin,
              "there is no HKEY_LOCAL_MACHINE\\SOFTWARE\\Clients\\Mail\\Microsoft Outlook");
    EXPECT_EQ(report.candidates[1].step, ProviderStep::Common);
    EXPECT_FALSE(report.candidates[1].examined);
    EXPECT_THAT(report.candidates[1].origin, HasSubstr("mapistub.dll does not load"));
    EXPECT_THAT(report.candidates[1].origin, HasSubstr("there is no HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\"
                                                       "CurrentVersion, value CommonFilesDir"));
    EXPECT_EQ(report.candidates[2].step, ProviderStep::System);
    EXPECT_FALSE(report.candidates[2].found.loadError.empty());
}

TEST_F(ProviderSearch, OutlooksUnloadableLibraryIsSkipped)
{
    const std::string path = TextFile("outlook.dll");
    RegisterOutlook(path);
    Library("system/MAPI32.DLL", ProviderFile::Undecorated());
    EXPECT_EQ(Search().path, "MAPI32.DLL");
    const std::vector<LogLine> lines = log.Lines();
    EXPECT_THAT(std::vector<LogLine>(lines.begin(), lines.begin() + 4),
                ElementsAre(Progress("Checking Outlook MAPI..."), Plain("Checking '" + path + "'"),
                            Plain("Unable to load '" + path + "'"), Progress("Checking common MAPI: ")));
}

TEST_F(ProviderSearch, OutlooksRelativeLibraryIsSkipped)
{
    Library("sub/outlook.dll", ProviderFile::Undecorated());
    const CurrentFolder here(folder.Path());
    RegisterOutlook("sub\\outlook.dll");
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, "");
    EXPECT_FALSE(report.candidates[0].found.loaded);
    EXPECT_EQ(report.candidates[0].found.loadError,
              "sub\\outlook.dll: is neither a bare file name nor an absolute path");
    EXPECT_EQ(report.candidates[0].found.resolved, "");
    EXPECT_EQ(provider.loads, 0);
    EXPECT_EQ(log.CountBeginning("Unable to load 'sub\\outlook.dll'"), 1u);
}

TEST_F(ProviderSearch, ARelativeCommonFolderIsSkipped)
{
    Library("System/Mapi/1033/MAPI32.DLL", ProviderFile::Undecorated());
    const CurrentFolder here(folder.Path());
    RegisterCommonFiles(".\\");
    EXPECT_EQ(Search().path, "");
    EXPECT_EQ(provider.loads, 0);
}

TEST_F(ProviderSearch, VariablesInOutlooksPathAreExpanded)
{
    const std::string path = Library("outlook.dll", ProviderFile::Undecorated());
    const EnvironmentScope variable("ZEB_TEST_FILE", path);
    RegistryScope::SetExpandable(RegistryRoot::LocalMachine, OutlookClientKey, "DLLPathEx", "%ZEB_TEST_FILE%");
    EXPECT_EQ(Search().path, path);
}

TEST_F(ProviderSearch, OutlooksNonProviderIsSkipped)
{
    RegisterOutlook(Library("outlook.dll", ProviderFile::Undecorated().Remove("RTFSync")));
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, "");
    EXPECT_EQ(log.CountBeginning("Outlook MAPI is correct"), 0u);
    EXPECT_STREQ(report.candidates[0].found.missingUndecorated, "RTFSync");
}

TEST_F(ProviderSearch, OutlooksMissingPathIsEmpty)
{
    platform::RegistryKey::Create(RegistryRoot::LocalMachine, OutlookClientKey);
    const ProviderReport report = Search();
    const std::vector<LogLine> lines = log.Lines();
    EXPECT_THAT(std::vector<LogLine>(lines.begin(), lines.begin() + 4),
                ElementsAre(Progress("Checking Outlook MAPI..."), Plain("Checking ''"), Plain("Unable to load ''"),
                            Progress("Checking common MAPI: ")));
    EXPECT_TRUE(report.candidates[0].examined);
    EXPECT_EQ(report.candidates[0].path, "");
}

TEST_F(ProviderSearch, TheCommonFolderWritesNoLine)
{
    const std::string common = folder.Path() + "\\";
    RegisterCommonFiles(common);
    Library("System/Mapi/1033/MAPI32.DLL", ProviderFile::Undecorated());
    const std::string path = common + "System\\Mapi\\1033\\MAPI32.DLL";
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, path);
    EXPECT_EQ(report.bitness, OfficeBitness64);
    EXPECT_THAT(log.Lines(),
                ElementsAre(Progress("Checking Outlook MAPI..."),
                            Progress("Checking common MAPI: " + common + "System\\Mapi\\1033\\"),
                            Plain("Checking '" + path + "'"), Plain("Dll does not contains 'CreateTable@36'"),
                            Plain("'" + path + "' is correct and MAPI is for 64-bit Office.")));
    EXPECT_EQ(report.candidates.back().origin,
              "HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion, value CommonFilesDir");
}

TEST_F(ProviderSearch, TheExportFindsTheCommonFolder)
{
    const std::string common = folder.Path() + "\\";
    RegisterCommonFiles(common);
    Library("System/Mapi/1033/NT/MAPI32.DLL", ProviderFile::Decorated());
    EnumOfficeBitness bitness = OfficeBitnessNone;
    EXPECT_EQ(std::string(Zeb_GetMapiDllPath(bitness)), common + "System\\Mapi\\1033\\NT\\MAPI32.DLL");
    EXPECT_EQ(bitness, OfficeBitness32);
}

TEST_F(ProviderSearch, TheNtFolderComesNext)
{
    const std::string common = folder.Path() + "\\";
    RegisterCommonFiles(common);
    TextFile("System/Mapi/1033/MAPI32.DLL");
    Library("System/Mapi/1033/NT/MAPI32.DLL", ProviderFile::Decorated());
    const std::string first = common + "System\\Mapi\\1033\\MAPI32.DLL";
    const std::string nested = common + "System\\Mapi\\1033\\NT\\MAPI32.DLL";
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, nested);
    EXPECT_EQ(report.bitness, OfficeBitness32);
    EXPECT_THAT(LinesFrom("Checking '"),
                ElementsAre(Plain("Checking '" + first + "'"), Plain("Unable to load '" + first + "'"),
                            Plain("Checking '" + nested + "'"),
                            Plain("'" + nested + "' is correct and MAPI is for 32-bit Office."),
                            Progress("Common MAPI is correct: " + nested)));
    ASSERT_EQ(report.candidates.size(), 3u);
    EXPECT_EQ(report.candidates[2].step, ProviderStep::CommonSubfolder);
}

TEST_F(ProviderSearch, OlderSystemsHaveA95Folder)
{
    isNT = false;
    RegisterCommonFiles(folder.Path() + "\\");
    Library("System/Mapi/1033/NT/MAPI32.DLL", ProviderFile::Decorated());
    EXPECT_EQ(Search().path, "");
    Library("System/Mapi/1033/95/MAPI32.DLL", ProviderFile::Decorated());
    EXPECT_EQ(Search().path, folder.Path() + "\\System\\Mapi\\1033\\95\\MAPI32.DLL");
}

TEST_F(ProviderSearch, CommonFilesIsJoinedUnchanged)
{
    RegisterCommonFiles(folder.Path());
    Library("System/Mapi/1033/MAPI32.DLL", ProviderFile::Undecorated());
    Library("system/MAPI32.DLL", ProviderFile::Decorated());
    const std::string path = folder.Path() + "System\\Mapi\\1033\\MAPI32.DLL";
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, "MAPI32.DLL");
    EXPECT_EQ(report.bitness, OfficeBitness32) << "the last classification counts";
    EXPECT_EQ(log.CountBeginning("Checking common MAPI: " + folder.Path() + "System\\Mapi\\1033\\"), 1u);
    EXPECT_EQ(log.CountBeginning("Unable to load '" + path + "'"), 1u);
}

TEST_F(ProviderSearch, TheSystemsLibraryComesLast)
{
    Library("system/MAPI32.DLL", ProviderFile::Decorated());
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, "MAPI32.DLL");
    EXPECT_EQ(report.bitness, OfficeBitness32);
    EXPECT_THAT(LinesFrom("Check system"),
                ElementsAre(Progress("Check system MAPI: MAPI32.DLL"), Plain("Checking 'MAPI32.DLL'"),
                            Plain("'MAPI32.DLL' is correct and MAPI is for 32-bit Office."),
                            Progress("System MAPI is correct: MAPI32.DLL")));
}

TEST_F(ProviderSearch, TheFirstQualifierNamesTheFolder)
{
    InstallStub();
    const std::string office = Library("office/mapi.dll", ProviderFile::Undecorated());
    Library("office/MAPI32.DLL", ProviderFile::Undecorated());
    provider.componentPaths[0] = office.c_str();
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, folder.File("office") + "\\MAPI32.DLL");
    EXPECT_EQ(provider.componentCalls, 1);
    EXPECT_STREQ(provider.componentIds[0], "{FF1D0740-D227-11D1-A4B0-006008AF820E}");
    EXPECT_EQ(std::string(provider.componentQualifiers[0], sizeof OutlookLanguage), WithZeros(OutlookLanguage));
    EXPECT_EQ(provider.componentSizes[0], 260u);
    EXPECT_EQ(provider.componentInstalls[0], TRUE);
    EXPECT_EQ(report.candidates.back().origin, "FGetComponentPath of " + System() + "mapistub.dll");
}

TEST_F(ProviderSearch, TheSecondQualifierIsAskedNext)
{
    InstallStub();
    const std::string office = folder.File("office/mapi.dll");
    Library("office/MAPI32.DLL", ProviderFile::Undecorated());
    provider.componentPaths[1] = office.c_str();
    EXPECT_EQ(Search().path, folder.File("office") + "\\MAPI32.DLL");
    EXPECT_EQ(provider.componentCalls, 2);
    EXPECT_STREQ(provider.componentIds[1], "{FF1D0740-D227-11D1-A4B0-006008AF820E}");
    EXPECT_EQ(std::string(provider.componentQualifiers[1], sizeof OfficeLanguages), WithZeros(OfficeLanguages));
    EXPECT_EQ(provider.componentSizes[1], 260u);
}

TEST_F(ProviderSearch, NoQualifierIsAskedLast)
{
    InstallStub();
    const std::string office = folder.File("office/mapi.dll");
    Library("office/MAPI32.DLL", ProviderFile::Undecorated());
    provider.componentPaths[2] = office.c_str();
    EXPECT_EQ(Search().path, folder.File("office") + "\\MAPI32.DLL");
    EXPECT_EQ(provider.componentCalls, 3);
    EXPECT_STREQ(provider.componentQualifiers[2], "(null)");
}

TEST_F(ProviderSearch, OfficesFolderPrecedesCommonFiles)
{
    InstallStub();
    RegisterCommonFiles(folder.Path() + "\\");
    Library("System/Mapi/1033/MAPI32.DLL", ProviderFile::Undecorated());
    const std::string office = folder.File("office/mapi.dll");
    provider.componentPaths[0] = office.c_str();
    EXPECT_EQ(Search().path, "") << "the common files are not looked at once Office names a folder";
    EXPECT_EQ(log.CountBeginning("Checking common MAPI: " + folder.File("office") + "\\"), 1u);
}

TEST_F(ProviderSearch, ThreeRefusalsLeadToCommonFiles)
{
    InstallStub();
    RegisterCommonFiles(folder.Path() + "\\");
    Library("System/Mapi/1033/MAPI32.DLL", ProviderFile::Undecorated());
    EXPECT_EQ(Search().path, folder.Path() + "\\System\\Mapi\\1033\\MAPI32.DLL");
    EXPECT_EQ(provider.componentCalls, 3);
}

TEST_F(ProviderSearch, AnEmptyPathIsARefusal)
{
    InstallStub();
    provider.componentPaths[0] = "";
    provider.componentPaths[1] = "";
    provider.componentPaths[2] = "";
    const ProviderReport report = Search();
    EXPECT_EQ(provider.componentCalls, 3);
    EXPECT_EQ(log.CountBeginning("Checking common MAPI: "), 1u);
    EXPECT_FALSE(report.candidates[1].examined);
    EXPECT_THAT(report.candidates[1].origin, StartsWith("FGetComponentPath of " + System() +
                                                        "mapistub.dll knows no MAPI component, and there is no"));
}

TEST_F(ProviderSearch, AComponentMayHaveNoFolder)
{
    InstallStub();
    provider.componentPaths[0] = "mapi.dll";
    RegisterCommonFiles(folder.Path() + "\\");
    Library("System/Mapi/1033/MAPI32.DLL", ProviderFile::Undecorated());
    EXPECT_EQ(Search().path, folder.Path() + "\\System\\Mapi\\1033\\MAPI32.DLL");
    EXPECT_EQ(provider.componentCalls, 1);

    provider.componentCalls = 0;
    platform::RegistryKey::DeleteTree(RegistryRoot::LocalMachine, CurrentVersionKey);
    EXPECT_THAT(Search().candidates[1].origin,
                StartsWith("FGetComponentPath of " + System() +
                           "mapistub.dll gives no folder but 'mapi.dll', and there is no HKEY_LOCAL_MACHINE"));
}

TEST_F(ProviderSearch, PathsEndWithTheBuffer)
{
    InstallStub();
    const std::string office = folder.Path() + "\\" + std::string(300, 'x');
    provider.componentPaths[0] = office.c_str();
    Library("MAPI32.DLL", ProviderFile::Undecorated());
    EXPECT_EQ(Search().path, folder.Path() + "\\MAPI32.DLL");
}

TEST_F(ProviderSearch, WithoutAStubTheSystemAnswers)
{
    InstallStub("mapi32.dll");
    const std::string office = folder.File("office/mapi.dll");
    Library("office/MAPI32.DLL", ProviderFile::Undecorated());
    provider.componentPaths[0] = office.c_str();
    const ProviderReport report = Search();
    EXPECT_EQ(report.path, folder.File("office") + "\\MAPI32.DLL");
    EXPECT_EQ(report.candidates.back().origin, "FGetComponentPath of mapi32.dll");
}

TEST_F(ProviderSearch, AStubMayLackTheFunction)
{
    Library("system/mapistub.dll", ProviderFile::Undecorated().Remove("FGetComponentPath"));
    const std::string office = folder.File("office/mapi.dll");
    provider.componentPaths[0] = office.c_str();
    const ProviderReport report = Search();
    EXPECT_EQ(provider.componentCalls, 0);
    EXPECT_EQ(report.path, "");
    EXPECT_THAT(report.candidates[1].origin, StartsWith(System() + "mapistub.dll does not export FGetComponentPath"));
}

TEST_F(ProviderSearch, TheStubIsUnloadedAgain)
{
    InstallStub();
    Search();
    EXPECT_EQ(provider.loads, provider.unloads);
    EXPECT_GT(provider.loads, 0);
}

TEST(ProviderSearchMachine, TheSystemFolderEndsInBackslash)
{
    const std::string path = GetSystemDir();
    ASSERT_GT(path.size(), 2u);
    EXPECT_EQ(path.back(), '\\');
    EXPECT_NE(path[path.size() - 2], '\\');
    EXPECT_EQ(ProviderEnvironment::Machine().systemDir(), path);
    EXPECT_EQ(ProviderEnvironment::Machine().locate("MAPI32.DLL"), "MAPI32.DLL");
    EXPECT_TRUE(ProviderEnvironment::Machine().isNT());
}

} // namespace zeb::test
