// Folders of the embedded provider through CZebFolder.
#include "platform/tags.h"
#include "tests/integration/Content.h"

namespace zeb::test
{
namespace
{

class Folders : public StoreHost
{
protected:
    CZebFolder m_top = m_store->OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    CZebFolder m_home = MakeFolder(m_top, "Home");

    HRESULT DeletingThrows(CZebFolder& parent, CZebFolder& folder, ULONG flags)
    {
        const CZebBinary id = folder.GetEntryID();
        return FailureOf([&] { parent.DeleteFolder(id, nullptr, flags, nullptr); }).result;
    }
    static void CopyFolder(CZebFolder& from, CZebFolder& folder, CZebFolder& to, const char* name, ULONG flags)
    {
        const CZebBinary id = folder.GetEntryID();
        const SBinary& bytes = id;
        const auto source = InterfaceOf<IMAPIFolder>(from, IID_IMAPIFolder);
        const auto target = InterfaceOf<IMAPIFolder>(to, IID_IMAPIFolder);
        ThrowIfFailed(source->CopyFolder(bytes.cb, reinterpret_cast<LPENTRYID>(bytes.lpb), &IID_IMAPIFolder,
                                         target.Get(), reinterpret_cast<LPTSTR>(const_cast<char*>(name)), 0, nullptr,
                                         flags),
                      source);
    }
};

TEST_F(Folders, ACreatedOneHasItsProperties)
{
    CZebFolder made = m_home.CreateFolder("Projects", false, true, 0, "what is running", FOLDER_GENERIC);
    EXPECT_EQ(SubfoldersOf(m_home), Names{"Projects"});
    CZebFolder opened = m_home.OpenFolderByName("Projects");
    EXPECT_EQ(opened.GetEntryID(), made.GetEntryID());
    EXPECT_EQ(opened.GetParentID(), m_home.GetEntryID());
    EXPECT_STREQ(opened.GetDisplayName(), "Projects");
    EXPECT_STREQ(opened.GetStringProp(PR_COMMENT_A), "what is running");
    EXPECT_EQ(opened.GetObjectType(), static_cast<ULONG>(MAPI_FOLDER));
    EXPECT_EQ(NumberOf(opened, PR_FOLDER_TYPE), static_cast<LONG>(FOLDER_GENERIC));
    EXPECT_FALSE(HasTrue(opened, PR_ATTR_HIDDEN));
    EXPECT_TRUE(opened.IsChildOf(*m_session, m_home.GetEntryID(), true));
}

TEST_F(Folders, AHiddenOneIsStillListed)
{
    for (const bool save : {false, true})
    {
        const char* const name = save ? "saved" : "not saved";
        m_home.CreateFolder(name, true, save, 0, nullptr, FOLDER_GENERIC);
        CZebFolder again = m_home.OpenFolderByName(name);
        EXPECT_TRUE(HasTrue(again, PR_ATTR_HIDDEN)) << name;
    }
    EXPECT_EQ(SubfoldersOf(m_home), (Names{"not saved", "saved"}));
}

TEST_F(Folders, TakenNamesAreOpenedOrRefused)
{
    CZebFolder first = m_home.CreateFolder("Projects", false, true, 0, "first", FOLDER_GENERIC);
    EXPECT_EQ(FailureOf([&] { MakeFolder(m_home, "Projects"); }).result, MAPI_E_COLLISION);
    CZebFolder existing = m_home.CreateFolder("Projects", true, true, OPEN_IF_EXISTS, "second", FOLDER_GENERIC);
    EXPECT_EQ(existing.GetEntryID(), first.GetEntryID());
    EXPECT_FALSE(HasTrue(first, PR_ATTR_HIDDEN)) << "the wrapper found it and left it alone";
    EXPECT_STREQ(first.GetStringProp(PR_COMMENT_A), "first");
    CZebFolder byProvider =
        m_home.CreateFolder("Projects", true, true, OPEN_IF_EXISTS | MAPI_DEFERRED_ERRORS, "third", FOLDER_GENERIC);
    EXPECT_EQ(byProvider.GetEntryID(), first.GetEntryID());
    EXPECT_TRUE(HasTrue(first, PR_ATTR_HIDDEN)) << "the provider opened it, and the wrapper took it for new";
    EXPECT_STREQ(first.GetStringProp(PR_COMMENT_A), "first");
    EXPECT_EQ(SubfoldersOf(m_home), Names{"Projects"});
}

TEST_F(Folders, OpenIfExistsCreatesMissingOnes)
{
    CZebFolder made = m_home.CreateFolder("new", true, true, OPEN_IF_EXISTS, nullptr, FOLDER_GENERIC);
    EXPECT_TRUE(HasTrue(made, PR_ATTR_HIDDEN));
    EXPECT_EQ(SubfoldersOf(m_home), Names{"new"});
}

TEST_F(Folders, AFailedCreationLeavesNothing)
{
    const Failure search = FailureOf([&] { m_home.CreateFolder("s", true, true, 0, nullptr, FOLDER_SEARCH); });
    EXPECT_EQ(search.result, MAPI_E_NO_SUPPORT);
    EXPECT_NE(search.text.find("search folders"), std::string::npos) << search.text;
    EXPECT_EQ(FailureOf([&] { MakeFolder(m_home, ""); }).result, MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(FailureOf([&] { MakeFolder(m_home, nullptr); }).result, MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(FailureOf([&] { m_home.CreateFolder("x", false, false, 0x40000000, nullptr, 1); }).result,
              MAPI_E_UNKNOWN_FLAGS);
    CZebFolder readOnly;
    m_store->OpenEntry(m_home.GetEntryID(), readOnly, 0);
    EXPECT_EQ(FailureOf([&] { MakeFolder(readOnly, "x"); }).result, MAPI_E_NO_ACCESS);
    EXPECT_TRUE(SubfoldersOf(m_home).empty());
}

TEST_F(Folders, AreFoundInBothWidths)
{
    CZebFolder made = MakeFolder(m_home, "to be renamed");
    made.SetDisplayNameW(ZEBW("B\u00FCro"));
    const CStringA narrow = made.GetDisplayNameA();
    EXPECT_EQ(m_home.GetFolderEntryIdByNameW(ZEBW("B\u00FCro")), made.GetEntryID());
    EXPECT_EQ(m_home.GetFolderEntryIdByNameA(narrow), made.GetEntryID());
    EXPECT_EQ(m_home.GetFolderEntryIdByName(narrow), made.GetEntryID());
    EXPECT_EQ(m_home.OpenFolderByNameW(ZEBW("B\u00FCro")).GetEntryID(), made.GetEntryID());
    EXPECT_EQ(m_home.OpenFolderByNameA(narrow).GetEntryID(), made.GetEntryID());
    EXPECT_EQ(m_home.OpenFolderByName(narrow).GetEntryID(), made.GetEntryID());
    made.SetDisplayNameW(ZEBW("\u65E5\u672C \U0001F600"));
    EXPECT_EQ(m_home.OpenFolderByNameW(ZEBW("\u65E5\u672C \U0001F600")).GetEntryID(), made.GetEntryID());
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByNameA(narrow); }).result, 1168);
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByNameW(ZEBW("B\u00FCro")); }).result, 1168);
}

TEST_F(Folders, OnlyDirectSubfoldersAreFound)
{
    CZebFolder child = MakeFolder(m_home, "child");
    MakeFolder(child, "grandchild");
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByName("grandchild"); }).result, 1168);
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByNameW(ZEBW("grandchild")); }).result, 1168);
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByName("chil"); }).result, 1168) << "the whole name";
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByName(""); }).result, 1168);
    EXPECT_EQ(FailureOf([&] { m_home.OpenFolderByName(nullptr); }).result, MAPI_E_INVALID_PARAMETER);
    EXPECT_TRUE(child.OpenFolderByName("grandchild").IsValid());
}

TEST_F(Folders, AreOpenedByNameForWriting)
{
    MakeFolder(m_home, "child");
    CZebFolder opened = m_home.OpenFolderByName("child");
    opened.SetDisplayName("renamed");
    EXPECT_EQ(SubfoldersOf(m_home), Names{"renamed"});
    CZebFolder wide = m_home.OpenFolderByNameW(ZEBW("renamed"));
    wide.SetDisplayNameW(ZEBW("again"));
    EXPECT_EQ(SubfoldersOf(m_home), Names{"again"});
}

TEST_F(Folders, EmptyingKeepsTheAssociatedUnlessAsked)
{
    CZebFolder inner = MakeFolder(m_home, "inner");
    SaveMessage(inner, "deep");
    SaveMessage(m_home, "plain");
    SaveMessage(m_home, "associated", MAPI_ASSOCIATED);
    m_home.EmptyFolder(nullptr, 0, nullptr);
    EXPECT_TRUE(SubjectsOf(m_home).empty());
    EXPECT_TRUE(SubfoldersOf(m_home).empty());
    EXPECT_EQ(SubjectsOf(m_home, MAPI_ASSOCIATED), Names{"associated"});
    EXPECT_EQ(FailureOf([&] { inner.GetDisplayName(); }).result, MAPI_E_NOT_FOUND);
    SaveMessage(m_home, "plain");
    m_home.EmptyFolder(nullptr, DEL_ASSOCIATED, nullptr);
    EXPECT_TRUE(SubjectsOf(m_home).empty());
    EXPECT_TRUE(SubjectsOf(m_home, MAPI_ASSOCIATED).empty());
    EXPECT_EQ(FailureOf([&] { m_home.EmptyFolder(nullptr, 0x40000000, nullptr); }).result, MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(Folders, AreDeletedWithContentWhenAsked)
{
    CZebFolder parent = MakeFolder(m_home, "parent");
    CZebFolder child = MakeFolder(parent, "child");
    EXPECT_EQ(DeletingThrows(m_home, parent, 0), MAPI_E_HAS_FOLDERS);
    EXPECT_EQ(DeletingThrows(m_home, parent, DEL_MESSAGES), MAPI_E_HAS_FOLDERS);
    SaveMessage(parent, "m");
    EXPECT_EQ(DeletingThrows(m_home, parent, DEL_FOLDERS), MAPI_E_HAS_MESSAGES);
    EXPECT_EQ(SubjectsOf(parent), Names{"m"});
    EXPECT_EQ(SubfoldersOf(parent), Names{"child"});
    m_home.DeleteFolder(parent.GetEntryID(), nullptr, DEL_FOLDERS | DEL_MESSAGES, nullptr);
    EXPECT_TRUE(SubfoldersOf(m_home).empty());
    EXPECT_EQ(FailureOf([&] { child.GetEntryID(); }).result, MAPI_E_NOT_FOUND) << "still held, gone";
    CZebFolder empty = MakeFolder(m_home, "empty");
    m_home.DeleteFolder(empty.GetEntryID(), nullptr, 0, nullptr);
    EXPECT_TRUE(SubfoldersOf(m_home).empty());
}

TEST_F(Folders, OnlyTheParentDeletesAFolder)
{
    CZebFolder child = MakeFolder(m_home, "child");
    CZebFolder grandchild = MakeFolder(child, "grandchild");
    EXPECT_EQ(DeletingThrows(m_home, grandchild, DEL_FOLDERS | DEL_MESSAGES), MAPI_E_NOT_FOUND);
    CZebFolder inbox = Inbox();
    EXPECT_EQ(DeletingThrows(m_top, inbox, DEL_FOLDERS | DEL_MESSAGES), MAPI_E_NO_ACCESS);
    const CZebBinary message = SaveMessage(m_home, "m").GetEntryID();
    EXPECT_EQ(FailureOf([&] { m_home.DeleteFolder(message, nullptr, 0, nullptr); }).result, MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(SubfoldersOf(child), Names{"grandchild"});
}

TEST_F(Folders, AreCopiedWithAndWithoutSubfolders)
{
    CZebFolder source = MakeFolder(m_home, "source");
    CZebFolder inner = MakeFolder(source, "inner");
    CZebFolder target = MakeFolder(m_home, "target");
    SaveMessage(source, "s");
    SaveMessage(source, "a", MAPI_ASSOCIATED);
    SaveMessage(inner, "i");
    CopyFolder(m_home, source, target, "whole", COPY_SUBFOLDERS);
    CopyFolder(m_home, source, target, "alone", 0);
    EXPECT_EQ(SubfoldersOf(target), (Names{"alone", "whole"}));
    CZebFolder whole = target.OpenFolderByName("whole");
    EXPECT_EQ(SubjectsOf(whole), Names{"s"});
    EXPECT_EQ(SubjectsOf(whole, MAPI_ASSOCIATED), Names{"a"});
    CZebFolder copied = whole.OpenFolderByName("inner");
    EXPECT_EQ(SubjectsOf(copied), Names{"i"});
    EXPECT_NE(copied.GetEntryID(), inner.GetEntryID());
    CZebFolder alone = target.OpenFolderByName("alone");
    EXPECT_EQ(SubjectsOf(alone), Names{"s"});
    EXPECT_TRUE(SubfoldersOf(alone).empty());
    EXPECT_EQ(SubjectsOf(inner), Names{"i"}) << "the source stays";
    EXPECT_EQ(FailureOf([&] { CopyFolder(m_home, source, target, "whole", 0); }).result, MAPI_E_COLLISION);
    EXPECT_EQ(FailureOf([&] { CopyFolder(m_home, source, inner, "x", COPY_SUBFOLDERS); }).result, MAPI_E_FOLDER_CYCLE);
}

TEST_F(Folders, MovedOnesKeepIdentityAndContent)
{
    CZebFolder source = MakeFolder(m_home, "source");
    CZebFolder inner = MakeFolder(source, "inner");
    CZebFolder target = MakeFolder(m_home, "target");
    const CZebBinary message = SaveMessage(inner, "i").GetEntryID();
    EXPECT_EQ(FailureOf([&] { CopyFolder(m_home, source, inner, nullptr, FOLDER_MOVE); }).result, MAPI_E_FOLDER_CYCLE);
    CopyFolder(m_home, source, target, "moved", FOLDER_MOVE);
    EXPECT_EQ(SubfoldersOf(m_home), Names{"target"});
    EXPECT_EQ(target.OpenFolderByName("moved").GetEntryID(), source.GetEntryID());
    EXPECT_EQ(source.GetParentID(), target.GetEntryID()) << "the object that was held follows";
    CZebMessage again;
    m_store->OpenEntry(message, again, MAPI_BEST_ACCESS);
    EXPECT_TRUE(again.IsChildOf(*m_session, target.GetEntryID(), false));
    EXPECT_FALSE(again.IsChildOf(*m_session, target.GetEntryID(), true));
}

} // namespace
} // namespace zeb::test
