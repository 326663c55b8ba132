// The shared library in a host of its own: the system's step of the search, the start line, the end of the process.
#include "platform/module.h"
#include "tests/support/Environment.h"
#include "tests/support/TempFolder.h"
#include "tests/support/providers/FakeProvider.h"
#include "tests/support/providers/ProviderFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace zeb::test
{

namespace
{

using ::testing::EndsWith;
using ::testing::HasSubstr;

/// The start's own reference on the WAB object; the binding keeps another.
constexpr char ReleasedByTheStart[] = "released\n";

std::string Contents(const std::string& path)
{
    std::ifstream file(path);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
}

/// A copy of the probe and the library in a folder of the test's own.
class Host : public ::testing::Test
{
protected:
    Host()
    {
        for (const char* file : {ZEB_PROBE_FILE, ZEB_LIBRARY_FILE})
        {
            std::filesystem::copy_file(platform::OwnFolder() + file, folder.File(file));
        }
    }

    /// Runs the probe from another folder. @return what it wrote
    std::string Run(const std::string& arguments)
    {
        const std::string output = folder.File("output.txt");
        const std::string command = folder.File(ZEB_PROBE_FILE) + " " + output + " " + arguments;
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return Contents(output);
    }
    /// The same with the host that loads the library itself; its provider is wab32.dll and MAPI32.DLL.
    std::string RunUnload(const std::string& mode)
    {
        const std::string probe = folder.File(ZEB_UNLOAD_PROBE_FILE);
        std::filesystem::copy_file(platform::OwnFolder() + ZEB_UNLOAD_PROBE_FILE, probe);
        const std::string wab = folder.File("wab32.dll");
        ProviderFile::Undecorated().Save(wab);
        ProviderFile::Undecorated().Save(folder.File("MAPI32.DLL"));
        const std::string output = folder.File("output.txt");
        const std::string command =
            probe + " " + output + " " + folder.File(ZEB_LIBRARY_FILE) + " " + wab + " " + trace + " " + mode;
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return Contents(output);
    }
    std::string Log() { return Contents(log); }

    TempFolder folder;
    std::string log = folder.File("log.txt");
    std::string trace = folder.File("trace.txt");
    EnvironmentScope traceFile{FakeProviderTraceVariable, trace};
    EnvironmentScope logFile{"ZEBAPI_LOG", log};
    EnvironmentScope registry{"ZEBAPI_REGISTRY", folder.File("registry.reg")};
};

} // namespace

TEST_F(Host, BareNamesMeanTheLibrarysFolder)
{
    ProviderFile::Both().Save(folder.File("MAPI32.DLL"));
    EXPECT_EQ(Run("stop"), "found 'MAPI32.DLL', class 1\nstarted\nallocated\nstopped\n");
    EXPECT_THAT(Log(), HasSubstr("System MAPI is correct: MAPI32.DLL"));
}

TEST_F(Host, ANonLibraryIsNoProvider)
{
    std::ofstream(folder.File("MAPI32.DLL")) << "not a library at all\n";
    EXPECT_EQ(Run("stop"), "found '', class 0\nfailed with MAPI_E_CALL_FAILED\nstopped\n");
    EXPECT_THAT(Log(), HasSubstr("Unable to load 'MAPI32.DLL'"));
}

TEST_F(Host, ABareNameIgnoresSearchPaths)
{
    const std::string elsewhere = folder.File("elsewhere/zebwab32.dll");
    ProviderFile::Undecorated().Save(elsewhere);
    const std::string onPath = std::filesystem::path(elsewhere).parent_path().string();
    const EnvironmentScope path("PATH", onPath);
    const EnvironmentScope libraries("LD_LIBRARY_PATH", onPath);
    EXPECT_EQ(Run("wab-stop zebwab32.dll"), "failed with MAPI_E_CALL_FAILED\nstopped\n");
    std::filesystem::copy_file(elsewhere, folder.File("zebwab32.dll"));
    EXPECT_EQ(Run("wab-stop zebwab32.dll"), "started\nallocated\nstopped\n");
}

TEST_F(Host, LoadingWritesTheStartLineFirst)
{
    std::ofstream(folder.File("MAPI32.DLL")) << "not a library at all\n";
    Run("stop");
    const std::string first = Log().substr(0, Log().find('\n'));
    EXPECT_THAT(first, HasSubstr("ZebAPI"));
    EXPECT_THAT(first, HasSubstr("CZebAPIApp::InitInstance started"));
}

TEST_F(Host, ProcessesMayEndWithMapiStarted)
{
    ProviderFile::Undecorated().Save(folder.File("MAPI32.DLL"));
    EXPECT_EQ(Run("leave"), "found 'MAPI32.DLL', class 2\nstarted\nallocated\n");
}

TEST_F(Host, ProcessesMayEndWithBookOpen)
{
    const std::string wab = folder.File("wab32.dll");
    ProviderFile::Undecorated().Save(wab);
    EXPECT_EQ(Run("wab-stop " + wab), "started\nallocated\nstopped\n");
    EXPECT_EQ(Run("wab-leave " + wab), "started\nallocated\n");
}

TEST_F(Host, AProcessEndReleasesNothing)
{
    const std::string wab = folder.File("wab32.dll");
    ProviderFile::Undecorated().Save(wab);
    Run("wab-leave " + wab);
    EXPECT_EQ(Contents(trace), std::string(ReleasedByTheStart) + "ended\n")
        << "what the provider gave may be gone before the library ends";
    std::filesystem::remove(trace);
    Run("wab-stop " + wab);
    EXPECT_EQ(Contents(trace), std::string(ReleasedByTheStart) + "released\nreleased\nended\n");
}

TEST_F(Host, UnloadingKeepsTheProvider)
{
    EXPECT_EQ(RunUnload("wab-unload"), "started\nunloaded\n")
        << "the provider has not ended when the library is unloaded";
    EXPECT_EQ(Contents(trace), std::string(ReleasedByTheStart) + "ended\n");
}

TEST_F(Host, FreeingLateDoesNotReachTheBook)
{
    EXPECT_EQ(RunUnload("wab-leave"), "started\nfreed\n");
    EXPECT_EQ(Contents(trace), std::string(ReleasedByTheStart) + "ended\n");
}

TEST_F(Host, FreeingLateDoesNotReachMapi)
{
    EXPECT_EQ(RunUnload("leave"), "started\nfreed\n");
    EXPECT_THAT(Contents(trace), EndsWith("ended\n"));
}

} // namespace zeb::test
