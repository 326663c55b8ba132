#include "platform/module.h"

#include "tests/support/Environment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

using namespace zeb::platform;
namespace fs = std::filesystem;

namespace
{

constexpr long Classification = ModuleQuiet | ModuleOwnFolderDeps;
const char* const PathSeparator = fs::path::preferred_separator == '/' ? ":" : ";";

std::string ModulesFolder()
{
    return (fs::path(OwnFolder()) / ZEB_MODULES_FROM_BIN).lexically_normal().string();
}

int Answer(ModuleHandle module, const char* name)
{
    const auto function = reinterpret_cast<int (*)()>(FindExport(module, name));
    return function == nullptr ? -1 : function();
}

/// A new folder that is the current one during the test.
class CurrentFolder
{
public:
    CurrentFolder()
        : m_before(fs::current_path())
        , m_folder(fs::path(OwnFolder()) / "module_test_folder")
    {
        fs::create_directories(m_folder);
        fs::current_path(m_folder);
    }
    ~CurrentFolder()
    {
        fs::current_path(m_before);
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    fs::path m_before;
    fs::path m_folder;
};

TEST(Module, AnEmptyPathLoadsNothing)
{
    std::string reason;
    EXPECT_EQ(LoadModule("", ModuleQuiet, &reason), nullptr);
    EXPECT_FALSE(reason.empty());
    EXPECT_EQ(ResolveModulePath(""), "");
}

TEST(Module, AFullPathLoadsThatFile)
{
    std::string reason;
    const ModuleHandle module = LoadModule(ModulesFolder() + "/probe_inner.dll", Classification, &reason);
    ASSERT_NE(module, nullptr) << reason;
    EXPECT_EQ(reason, "");
    EXPECT_EQ(Answer(module, "ProbeAnswer"), 42);
    EXPECT_EQ(FindExport(module, "NoSuchExport"), nullptr);
    UnloadModule(module);
}

TEST(Module, BackslashesAreTakenForSlashes)
{
    std::string path = ModulesFolder() + "\\probe_inner.dll";
    const ModuleHandle module = LoadModule(path, Classification);
    ASSERT_NE(module, nullptr);
    UnloadModule(module);
}

TEST(Module, DependenciesComeFromItsOwnFolder)
{
    std::string reason;
    const ModuleHandle module = LoadModule(ModulesFolder() + "/probe_outer.dll", Classification, &reason);
    ASSERT_NE(module, nullptr) << reason;
    EXPECT_EQ(Answer(module, "OuterAnswer"), 43);
    UnloadModule(module);
}

TEST(Module, IgnoresADependencysExports)
{
    const ModuleHandle module = LoadModule(ModulesFolder() + "/probe_outer.dll", Classification);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(FindExport(module, "OuterAnswer"), nullptr);
    EXPECT_EQ(FindExport(module, "ProbeAnswer"), nullptr);
    UnloadModule(module);
}

TEST(Module, DependenciesIgnoreCurrentFolderAndPath)
{
    const CurrentFolder here;
    const fs::path alone = fs::current_path() / "alone";
    const fs::path onPath = fs::current_path() / "path";
    fs::remove("probe_inner.dll");
    for (const fs::path& folder : {alone, onPath})
    {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    fs::copy_file(ModulesFolder() + "/probe_outer.dll", alone / "probe_outer.dll");
    fs::copy_file(ModulesFolder() + "/probe_inner.dll", "probe_inner.dll");
    fs::copy_file(ModulesFolder() + "/probe_inner.dll", onPath / "probe_inner.dll");
    const char* oldPath = std::getenv("PATH");
    const zeb::test::EnvironmentScope path("PATH", onPath.string() + PathSeparator + (oldPath ? oldPath : ""));
    for (const long mode : {0L, 4L, 20L, 22L})
    {
        const ModuleHandle module = LoadModule((alone / "probe_outer.dll").string(), mode);
        EXPECT_EQ(module, nullptr) << mode;
        if (module != nullptr)
        {
            UnloadModule(module);
        }
    }
    fs::copy_file(ModulesFolder() + "/probe_inner.dll", alone / "probe_inner.dll");
    const ModuleHandle whole = LoadModule((alone / "probe_outer.dll").string(), Classification);
    EXPECT_NE(whole, nullptr);
    if (whole != nullptr)
    {
        UnloadModule(whole);
    }
}

TEST(Module, RecognizesBareAndAbsolutePaths)
{
    for (const char* bare : {"MAPI32.DLL", "mapi32", "a b.dll"})
    {
        EXPECT_TRUE(IsBareOrAbsolutePath(bare)) << bare;
    }
    EXPECT_TRUE(IsBareOrAbsolutePath(ModulesFolder() + "/probe_inner.dll"));
    for (const char* neither : {"", "sub\\mapi32.dll", "sub/mapi32.dll", ".\\mapi32.dll", "..\\mapi32.dll",
                                "%NoSuchVariable%\\mapi32.dll", "mapi32.dll\\", "C:mapi32.dll"})
    {
        EXPECT_FALSE(IsBareOrAbsolutePath(neither)) << neither;
    }
}

TEST(Module, BareNamesMeanTheBinarysFolder)
{
    for (const long mode : {0L, 4L, 20L, 22L})
    {
        std::string reason;
        const ModuleHandle module = LoadModule("probe_adjacent.dll", mode, &reason);
        ASSERT_NE(module, nullptr) << mode << ": " << reason;
        UnloadModule(module);
    }
    EXPECT_EQ(ResolveModulePath("probe_adjacent.dll"), OwnFolder() + "probe_adjacent.dll");
}

TEST(Module, ABareNameIgnoresCurrentFolder)
{
    const CurrentFolder here;
    // An earlier run may have left it, and not every standard library overwrites it.
    fs::remove("probe_current.dll");
    fs::copy_file(ModulesFolder() + "/probe_inner.dll", "probe_current.dll");
    for (const long mode : {0L, 4L, 20L, 22L})
    {
        std::string reason;
        EXPECT_EQ(LoadModule("probe_current.dll", mode, &reason), nullptr);
        EXPECT_NE(reason.find("probe_current.dll"), std::string::npos) << reason;
    }
    EXPECT_EQ(ResolveModulePath("probe_current.dll"), "");
    const ModuleHandle module = LoadModule("./probe_current.dll", ModuleQuiet);
    EXPECT_NE(module, nullptr) << "a path with a folder names that file";
    if (module != nullptr)
    {
        UnloadModule(module);
    }
}

TEST(Module, AFolderIsNoLibrary)
{
    fs::create_directories(fs::path(OwnFolder()) / "probe_folder.dll");
    EXPECT_EQ(ResolveModulePath("probe_folder.dll"), "");
    EXPECT_EQ(LoadModule("probe_folder.dll", ModuleQuiet), nullptr);
    fs::remove(fs::path(OwnFolder()) / "probe_folder.dll");
}

TEST(Module, ANonLibraryGivesTheReason)
{
    const CurrentFolder here;
    std::ofstream("broken.dll") << "this is no library";
    std::string reason;
    EXPECT_EQ(LoadModule(fs::absolute("broken.dll").string(), Classification, &reason), nullptr);
    EXPECT_NE(reason.find("broken.dll"), std::string::npos) << reason;
    EXPECT_EQ(reason.find('\n'), std::string::npos) << reason;
    EXPECT_EQ(LoadModule(fs::absolute("absent.dll").string(), Classification, &reason), nullptr);
    EXPECT_NE(reason.find("absent.dll"), std::string::npos) << reason;
}

TEST(Module, OnlyOwnFolderEndsWithSeparator)
{
    EXPECT_TRUE(fs::exists(OwnFolder() + "probe_adjacent.dll")) << OwnFolder();
    ASSERT_FALSE(SystemFolder().empty());
    EXPECT_TRUE(fs::is_directory(SystemFolder()));
    EXPECT_EQ(std::string("\\/").find(SystemFolder().back()), std::string::npos);
}

} // namespace
