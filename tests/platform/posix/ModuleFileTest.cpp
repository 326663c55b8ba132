// Files with backslashes in their names, which exist only on this system.
#include "platform/module.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

using namespace zeb::platform;
namespace fs = std::filesystem;

namespace
{

TEST(ModuleFile, ALiteralBackslashNameGoesFirst)
{
    const fs::path folder = fs::path(OwnFolder()) / "module_file_test_folder";
    fs::create_directories(folder / "sub");
    const std::string path = (folder / "sub\\library.dll").string();
    std::ofstream(folder / "sub" / "library.dll") << "mapped";
    EXPECT_EQ(ResolveModulePath(path), (folder / "sub/library.dll").string());
    std::ofstream(path) << "literal";
    EXPECT_EQ(ResolveModulePath(path), path);
    fs::remove_all(folder);
}

} // namespace
