#include "platform/module.h"
#include "platform/registry.h"

#include "tests/support/RegistryScope.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

using zeb::platform::OwnFolder;
using zeb::platform::RegistryError;
using zeb::platform::RegistryKey;
using zeb::platform::RegistryRoot;
namespace fs = std::filesystem;

namespace
{

class RegistryFile : public ::testing::Test
{
protected:
    static fs::path File() { return std::getenv("ZEBAPI_REGISTRY"); }

    static void Fill(const std::string& text) { std::ofstream(File(), std::ios::binary) << text; }

    static std::string Content()
    {
        std::ifstream file(File(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    static std::string ErrorOf(void (*action)())
    {
        try
        {
            action();
        }
        catch (const RegistryError& error)
        {
            return error.what();
        }
        return "no error";
    }

    RegistryScope m_scope;
};

TEST_F(RegistryFile, AMissingFileReadsAsEmpty)
{
    EXPECT_FALSE(RegistryKey::Open(RegistryRoot::CurrentUser, "K").has_value());
    RegistryKey::DeleteTree(RegistryRoot::CurrentUser, "K");
    EXPECT_FALSE(fs::exists(File()));
}

TEST_F(RegistryFile, ASyntaxErrorNamesItsLine)
{
    const std::string broken = "REGEDIT4\n\n[HKEY_CURRENT_USER\\K]\n\"a\"=\"C:\\mail\"\n";
    Fill(broken);
    const std::string wanted = "the registry file '" + File().string() +
                               "' has an error in line 4: a backslash inside quotes must be written as \\\\";
    EXPECT_EQ(ErrorOf([] { RegistryKey::Open(RegistryRoot::CurrentUser, "K"); }), wanted);
    EXPECT_EQ(ErrorOf([] { RegistryKey::Create(RegistryRoot::CurrentUser, "L"); }), wanted);
    EXPECT_EQ(ErrorOf([] { RegistryKey::DeleteTree(RegistryRoot::CurrentUser, "K"); }), wanted);
    EXPECT_EQ(Content(), broken);
}

TEST_F(RegistryFile, AnUnreadableFileIsNamed)
{
    fs::create_directory(File());
    EXPECT_EQ(ErrorOf([] { RegistryKey::Open(RegistryRoot::CurrentUser, "K"); }),
              "cannot read the registry file '" + File().string() + "': Is a directory");
}

TEST_F(RegistryFile, FailedWritesKeepTheOldFile)
{
    // The writer runs without the limit first: a build that counts what is reached has made its file of counters then.
    const std::string writer = "\"" + OwnFolder() + "registry_writer\" ";
    ASSERT_EQ(std::system((writer + "K 1").c_str()), 0);
    const std::string before = Content();
    // A limit on the size of files makes the write fail half-way.
    const std::string command = "bash -c 'ulimit -f 1; trap \"\" XFSZ; exec " + writer + std::string(100, 'x') +
                                " 40' 2>" + (File().string() + ".errors");
    EXPECT_NE(std::system(command.c_str()), 0);
    std::ifstream errors(File().string() + ".errors");
    std::string line;
    std::getline(errors, line);
    EXPECT_EQ(line, "cannot write the registry file '" + File().string() + "': File too large");
    EXPECT_NO_THROW(RegistryKey::Open(RegistryRoot::CurrentUser, "K"));
    EXPECT_EQ(Content().substr(0, before.size() - 2), before.substr(0, before.size() - 2));
    for (const auto& entry : fs::directory_iterator(File().parent_path()))
    {
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(name == "registry.reg" || name == "registry.reg.lock" || name == "registry.reg.errors") << name;
    }
}

TEST_F(RegistryFile, AnImpossibleFolderIsNamed)
{
    Fill("");
    const std::string below = File().string() + "/deeper/registry.reg";
    setenv("ZEBAPI_REGISTRY", below.c_str(), 1);
    EXPECT_EQ(ErrorOf([] { RegistryKey::Create(RegistryRoot::CurrentUser, "K"); }),
              "cannot write the registry file '" + below + "': Not a directory");
}

TEST_F(RegistryFile, FoldersAreMadeAndFilesPrivate)
{
    setenv("ZEBAPI_REGISTRY", (File().parent_path() / "a/b/registry.reg").c_str(), 1);
    RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    struct stat status = {};
    ASSERT_EQ(stat(File().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    chmod(File().c_str(), 0640);
    RegistryKey::Create(RegistryRoot::CurrentUser, "L");
    ASSERT_EQ(stat(File().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640u) << "a file keeps its permissions";
}

TEST_F(RegistryFile, ALinkStaysALink)
{
    const fs::path real = File().parent_path() / "real.reg";
    std::ofstream(real) << "REGEDIT4\n";
    fs::create_symlink(real, File());
    RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    EXPECT_TRUE(fs::is_symlink(File()));
    EXPECT_GT(fs::file_size(real), 30u);
}

TEST_F(RegistryFile, UnchangedContentIsNotRewritten)
{
    const std::string text = "REGEDIT4\n\n; a comment\n[HKEY_CURRENT_USER\\K]\n\"a\"=\"b\"\n";
    Fill(text);
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "k");
    key.SetStringValue("A", "b");
    key.DeleteValue("c");
    EXPECT_EQ(Content(), text);
}

TEST_F(RegistryFile, UnknownValuesSurviveAWrite)
{
    Fill("Windows Registry Editor Version "
         "5.00\n\n[HKEY_CURRENT_USER\\K]\n\"a\"=hexa:01,02\n\"b\"=odd(1):zz\n"
         "[HKEY_USERS\\S-1]\n\"c\"=dword:1\n");
    RegistryKey::Create(RegistryRoot::CurrentUser, "L");
    const std::string content = Content();
    EXPECT_NE(content.find("\"a\"=hexa:01,02\r\n\"b\"=odd(1):zz\r\n"), std::string::npos) << content;
    EXPECT_NE(content.find("[HKEY_USERS\\S-1]\r\n\"c\"=dword:00000001\r\n"), std::string::npos) << content;
}

TEST_F(RegistryFile, NamesWithControlCharactersAreRefused)
{
    EXPECT_THROW(RegistryKey::Create(RegistryRoot::CurrentUser, "a\nb"), RegistryError);
    auto key = RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    EXPECT_THROW(key.SetStringValue("a\nb", "x"), RegistryError);
    EXPECT_THROW(key.SetBinaryValue("a\rb", {1}), RegistryError);
}

TEST_F(RegistryFile, ThreadsWritingDifferentKeysLoseNothing)
{
    constexpr int count = 20;
    const auto write = [](const std::string& name)
    {
        for (int i = 0; i < count; ++i)
        {
            RegistryKey::Create(RegistryRoot::CurrentUser, name + "\\" + std::to_string(i)).SetStringValue("by", name);
        }
    };
    std::thread first(write, "first");
    std::thread second(write, "second");
    first.join();
    second.join();
    for (const std::string name : {"first", "second"})
    {
        for (int i = 0; i < count; ++i)
        {
            const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, name + "\\" + std::to_string(i));
            ASSERT_TRUE(key.has_value()) << name << i;
            EXPECT_EQ(key->StringValue("by"), name);
        }
    }
}

TEST_F(RegistryFile, ProcessesWritingDifferentKeysLoseNothing)
{
    const std::string writer = OwnFolder() + "registry_writer";
    const std::string command =
        writer + " one 20 & first=$!; " + writer + " two 20; second=$?; wait $first && exit $second";
    ASSERT_EQ(std::system(command.c_str()), 0);
    for (const std::string name : {"one", "two"})
    {
        for (int i = 0; i < 20; ++i)
        {
            const auto key = RegistryKey::Open(RegistryRoot::CurrentUser, name + "\\" + std::to_string(i));
            ASSERT_TRUE(key.has_value()) << name << i;
            EXPECT_EQ(key->StringValue("by"), name);
        }
    }
}

TEST_F(RegistryFile, ByDefaultIsInUsersConfiguration)
{
    const fs::path home = File().parent_path();
    const std::string oldHome = std::getenv("HOME") == nullptr ? "/" : std::getenv("HOME");
    unsetenv("ZEBAPI_REGISTRY");
    setenv("HOME", home.c_str(), 1);
    const char* config = std::getenv("XDG_CONFIG_HOME");
    const std::string oldConfig = config == nullptr ? "" : config;
    unsetenv("XDG_CONFIG_HOME");
    RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    EXPECT_TRUE(fs::exists(home / ".config/zebapi/registry.reg"));
    setenv("XDG_CONFIG_HOME", (home / "config").c_str(), 1);
    RegistryKey::Create(RegistryRoot::CurrentUser, "K");
    EXPECT_TRUE(fs::exists(home / "config/zebapi/registry.reg"));
    unsetenv("XDG_CONFIG_HOME");
    unsetenv("HOME");
    EXPECT_THROW(RegistryKey::Create(RegistryRoot::CurrentUser, "K"), RegistryError);
    setenv("HOME", oldHome.c_str(), 1);
    if (!oldConfig.empty())
    {
        setenv("XDG_CONFIG_HOME", oldConfig.c_str(), 1);
    }
}

} // namespace
