#include "platform/posix/regfile.h"

#include "platform/mapi.h"
#include "platform/text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace zeb::platform;

namespace
{

const std::string place = "Software\\ZebAPI-Tests\\import";

std::vector<unsigned char> Query(const char* key, const WCHAR* name, DWORD& type)
{
    HKEY opened = nullptr;
    std::vector<unsigned char> bytes(1024);
    DWORD size = static_cast<DWORD>(bytes.size());
    type = 0;
    if (RegOpenKeyExA(HKEY_CURRENT_USER, (place + key).c_str(), 0, KEY_READ, &opened) != ERROR_SUCCESS)
    {
        return {};
    }
    const LSTATUS status = RegQueryValueExW(opened, name, nullptr, &type, bytes.data(), &size);
    RegCloseKey(opened);
    bytes.resize(status == ERROR_SUCCESS ? size : 0);
    return bytes;
}

std::string QueryText(const char* key, const WCHAR* name)
{
    DWORD type = 0;
    const std::vector<unsigned char> bytes = Query(key, name, type);
    EXPECT_EQ(type, DWORD{REG_SZ});
    return bytes.size() < 2 ? "" : Utf8FromWide(reinterpret_cast<const WCHAR*>(bytes.data()), bytes.size() / 2 - 1);
}

/// Writes the tree to a file and has the system's own tool import it.
int Import(const regfile::Key& tree)
{
    const std::string file = (std::filesystem::temp_directory_path() / "zeb-import-test.reg").string();
    const std::string bytes = regfile::Write(tree);
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    const int result = std::system(("reg import \"" + file + "\" >nul 2>nul").c_str());
    std::filesystem::remove(file);
    return result;
}

class RegImport : public ::testing::Test
{
protected:
    ~RegImport() override { RegDeleteTreeA(HKEY_CURRENT_USER, place.c_str()); }
};

TEST_F(RegImport, TheSystemReadsTheWritersOutput)
{
    const std::string path = "HKEY_CURRENT_USER\\" + place;
    std::vector<unsigned char> bytes(200);
    for (size_t i = 0; i < bytes.size(); ++i)
    {
        bytes[i] = static_cast<unsigned char>(i);
    }
    regfile::Key tree;
    tree.Make(path).SetValue(regfile::TextValue("", "the default"));
    tree.Make(path + "\\Sub").SetValue(regfile::TextValue("path", "C:\\mail\\\"x\";y"));
    tree.Make(path + "\\Sub").SetValue(regfile::TextValue("lines", "a\r\nb"));
    tree.Make(path + "\\Sub").SetValue(regfile::BinaryValue("bytes", bytes));
    ASSERT_EQ(Import(tree), 0);

    EXPECT_EQ(QueryText("", L""), "the default");
    EXPECT_EQ(QueryText("\\Sub", L"path"), "C:\\mail\\\"x\";y");
    EXPECT_EQ(QueryText("\\Sub", L"lines"), "a\r\nb");
    DWORD type = 0;
    EXPECT_EQ(Query("\\Sub", L"bytes", type), bytes);
    EXPECT_EQ(type, DWORD{REG_BINARY});
}

TEST_F(RegImport, TheSystemReadsTextOutsideAscii)
{
    regfile::Key tree;
    tree.Make("HKEY_CURRENT_USER\\" + place)
        .SetValue(regfile::TextValue("n\xC3\xA4me", "\xE2\x82\xAC\xF0\x9F\x93\xA7"));
    ASSERT_EQ(Import(tree), 0);
    EXPECT_EQ(QueryText("", L"n\u00E4me"), "\xE2\x82\xAC\xF0\x9F\x93\xA7");
}

} // namespace
