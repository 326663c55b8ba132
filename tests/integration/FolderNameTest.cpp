// Folder names with every character that separates, ends or escapes something elsewhere, and of any length.
#include "tests/integration/Content.h"

namespace zeb::test
{
namespace
{

class FolderNames : public StoreHost
{
protected:
    CZebFolder m_home = Inbox();

    /// Creates, finds in both widths, opens and deletes a folder of this name among others.
    void LivesAs(const CStringA& name)
    {
        SCOPED_TRACE("name: " + std::string(name.GetString()).substr(0, 60));
        CZebFolder made = m_home.CreateFolder(name, false, true, 0, nullptr, FOLDER_GENERIC);
        // A stream returns the complete name, whatever its length.
        const CStringW wide = made.GetLongStringW(PR_DISPLAY_NAME_W);
        EXPECT_EQ(std::string(made.GetLongStringA(PR_DISPLAY_NAME_A)), std::string(name));
        EXPECT_EQ(wide.GetLength(), name.GetLength());
        EXPECT_EQ(m_home.GetFolderEntryIdByNameA(name), made.GetEntryID());
        EXPECT_EQ(m_home.GetFolderEntryIdByNameW(wide), made.GetEntryID());
        CZebFolder existing = m_home.CreateFolder(name, true, true, OPEN_IF_EXISTS, nullptr, FOLDER_GENERIC);
        EXPECT_EQ(existing.GetEntryID(), made.GetEntryID());
        EXPECT_EQ(FailureOf([&] { m_home.CreateFolder(name, false, true, 0, nullptr, 1); }).result, MAPI_E_COLLISION);
        const bool tooLong = name.GetLength() > 32 * 1024 / 2;
        EXPECT_EQ(SubfoldersOf(m_home), Names{tooLong ? "<error>" : name.GetString()});
        m_home.DeleteFolder(made.GetEntryID(), nullptr, 0, nullptr);
        EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByNameA(name); }).result, 1168);
    }
};

TEST_F(FolderNames, HoldAnyAsciiCharacterAnywhere)
{
    for (int code = 1; code < 0x80; ++code)
    {
        const char character = static_cast<char>(code);
        const char text[] = {'a', character, 'b', 0};
        LivesAs(text);
    }
}

TEST_F(FolderNames, HoldSeparatorsAtEndsAndAlone)
{
    for (const char* name : {"\\",
                             "/",
                             "\\\\",
                             "//",
                             "a/b\\c",
                             "\\a\\",
                             "/a/",
                             ":",
                             "*",
                             "?",
                             "\"",
                             "'",
                             "<",
                             ">",
                             "|",
                             ";",
                             ",",
                             "&",
                             "%",
                             "%s%n",
                             "%%",
                             ".",
                             "..",
                             "../..",
                             "~",
                             "$",
                             "#",
                             "[a]",
                             "{a}",
                             "(a)",
                             "a=b",
                             "@",
                             "`",
                             "^",
                             " ",
                             "  ",
                             " a",
                             "a ",
                             "\t",
                             "\r\n",
                             "--",
                             "-",
                             "_",
                             "C:\\a",
                             "CON",
                             "NUL",
                             "a;DROP TABLE folder;--"})
    {
        LivesAs(name);
    }
}

TEST_F(FolderNames, MayHaveAnyLength)
{
    for (const int length : {255, 256, 1024, 32766, 32767})
    {
        std::string name(static_cast<size_t>(length), 'n');
        name.back() = '\\';
        LivesAs(name.c_str());
    }
}

TEST_F(FolderNames, LongOnesDifferInLastCharacter)
{
    std::string name(32767, 'n');
    CZebFolder one = MakeFolder(m_home, name.c_str());
    name.back() = 'm';
    CZebFolder two = MakeFolder(m_home, name.c_str());
    EXPECT_EQ(m_home.GetFolderEntryIdByName(name.c_str()), two.GetEntryID());
    name.pop_back();
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByName(name.c_str()); }).result, 1168);
    name += 'n';
    EXPECT_EQ(m_home.GetFolderEntryIdByName(name.c_str()), one.GetEntryID());
    EXPECT_EQ(m_home.GetHierarchyTable(0).GetRowCount(), 2u);
}

TEST_F(FolderNames, OfWideTextAreAsLong)
{
    CStringW wide;
    for (int i = 0; i < 32767; ++i)
    {
        wide += static_cast<WCHAR>(i % 3 == 0 ? 0x65E5 : i % 3 == 1 ? '/' : 0x00FC);
    }
    CZebFolder made = MakeFolder(m_home, "to be renamed");
    made.SetDisplayNameW(wide);
    EXPECT_EQ(m_home.OpenFolderByNameW(wide).GetEntryID(), made.GetEntryID());
    const CStringW kept = m_home.OpenFolderByNameW(wide).GetLongStringW(PR_DISPLAY_NAME_W);
    EXPECT_EQ(kept.GetLength(), 32767);
    EXPECT_TRUE(kept == wide);
}

} // namespace
} // namespace zeb::test
