#include "tests/zebstore/storage/Storage.h"

namespace zebstore::test
{
namespace
{

class FolderTest : public StorageTest
{
protected:
    static constexpr FolderId Top = IdOf(StandardFolder::IpmSubtree);
    FolderId Make(const std::string& name, FolderId parent = Top) { return Store().CreateFolder(parent, Named(name)); }
};

TEST_F(FolderTest, AFolderIsFoundByItsNameInAnyCase)
{
    const FolderId folder = Make("Pr\xC3\x9C"
                                 "fung");
    EXPECT_EQ(Store().FindFolder(Top, "PR\xC3\xBC"
                                      "FUNG"),
              folder);
    EXPECT_EQ(Store().FindFolder(Top, "none"), 0);
    EXPECT_EQ(Store().FindFolder(folder, "Pr\xC3\x9C"
                                         "fung"),
              0)
        << "only direct subfolders";
    EXPECT_EQ(Store().FolderProperties(folder).Text(PR_DISPLAY_NAME_W), "Pr\xC3\x9C"
                                                                        "fung");
}

TEST_F(FolderTest, ANameIsTakenOnceBelowAParent)
{
    const FolderId folder = Make("One");
    EXPECT_EQ(CodeOf([&] { Make("ONE"); }), MAPI_E_COLLISION);
    Make("One", folder);
    const FolderId other = Make("Two");
    EXPECT_EQ(CodeOf([&] { Store().SaveFolderProperties(other, Named("one")); }), MAPI_E_COLLISION);
    EXPECT_EQ(Store().FolderProperties(other).Text(PR_DISPLAY_NAME_W), "Two");
    Store().SaveFolderProperties(other, Named("TWO"));
    EXPECT_EQ(CodeOf([&] { Make(""); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(CodeOf([&] { Make("x", 4711); }), MAPI_E_NOT_FOUND);
}

TEST_F(FolderTest, TheTreeComesDepthFirstBySiblingsNames)
{
    const FolderId b = Make("b", Inbox);
    const FolderId a = Make("A", Inbox);
    const FolderId below = Make("below", a);
    const std::vector<FolderInfo> tree = Store().FoldersUnder(Inbox, true);
    ASSERT_EQ(tree.size(), 3u);
    EXPECT_EQ(tree[0].id, a);
    EXPECT_EQ(tree[1].id, below);
    EXPECT_EQ(tree[1].depth, 2u);
    EXPECT_EQ(tree[2].id, b);
    EXPECT_EQ(Store().FoldersUnder(Inbox, false).size(), 2u);
    EXPECT_EQ(Store().Folder(Inbox).subfolders, 2u);
}

TEST_F(FolderTest, ANumberIsNeverGivenAgain)
{
    const FolderId first = Make("x");
    Store().DeleteFolder(first, false, false);
    EXPECT_GT(Make("x"), first);
    EXPECT_EQ(CodeOf([&] { Store().Folder(first); }), MAPI_E_NOT_FOUND);
}

TEST_F(FolderTest, DeletingAsksForItsContent)
{
    const FolderId folder = Make("full");
    const FolderId below = Make("below", folder);
    const MessageId message = Store().CreateMessage(folder, false, Mail("m"));
    EXPECT_EQ(CodeOf([&] { Store().DeleteFolder(folder, true, false); }), MAPI_E_HAS_FOLDERS);
    EXPECT_EQ(CodeOf([&] { Store().DeleteFolder(folder, false, true); }), MAPI_E_HAS_MESSAGES);
    EXPECT_TRUE(Store().MessageExists(message));
    Store().DeleteFolder(folder, true, true);
    EXPECT_FALSE(Store().MessageExists(message));
    EXPECT_FALSE(Store().FolderExists(below));
}

TEST_F(FolderTest, StandardFoldersStay)
{
    EXPECT_EQ(CodeOf([&] { Store().DeleteFolder(Inbox, true, true); }), MAPI_E_NO_ACCESS);
    EXPECT_EQ(CodeOf([&] { Store().MoveFolder(Inbox, IdOf(StandardFolder::Root), ""); }), MAPI_E_NO_ACCESS);
    Store().CreateMessage(Inbox, false, Mail("m"));
    Make("mine");
    Store().EmptyFolder(Top, true);
    EXPECT_TRUE(Store().FolderExists(Inbox));
    EXPECT_EQ(Store().Folder(Inbox).messages, 0u);
    EXPECT_EQ(Store().FindFolder(Top, "mine"), 0);
}

TEST_F(FolderTest, EmptyingKeepsAssociatedMessagesUnlessAsked)
{
    const FolderId folder = Make("f");
    Make("below", folder);
    Store().CreateMessage(folder, false, Mail("normal"));
    Store().CreateMessage(folder, true, Mail("associated"));
    Store().EmptyFolder(folder, false);
    EXPECT_EQ(Store().Folder(folder).messages, 0u);
    EXPECT_EQ(Store().Folder(folder).associated, 1u);
    EXPECT_EQ(Store().Folder(folder).subfolders, 0u);
    Store().EmptyFolder(folder, true);
    EXPECT_EQ(Store().Folder(folder).associated, 0u);
}

TEST_F(FolderTest, AFolderMovesWithWhatItHoldsButNotBelowItself)
{
    const FolderId a = Make("a");
    const FolderId b = Make("b", a);
    const MessageId message = Store().CreateMessage(b, false, Mail("m"));
    EXPECT_EQ(CodeOf([&] { Store().MoveFolder(a, b, ""); }), MAPI_E_FOLDER_CYCLE);
    EXPECT_EQ(CodeOf([&] { Store().MoveFolder(a, a, ""); }), MAPI_E_FOLDER_CYCLE);
    Store().MoveFolder(b, Inbox, "renamed");
    EXPECT_EQ(Store().FindFolder(Inbox, "renamed"), b);
    EXPECT_TRUE(Store().MessageExists(message));
    Make("renamed", a);
    EXPECT_EQ(CodeOf([&] { Store().MoveFolder(Store().FindFolder(a, "renamed"), Inbox, ""); }), MAPI_E_COLLISION);
    EXPECT_TRUE(Store().IsWithin(b, Top));
    EXPECT_FALSE(Store().IsWithin(Top, b));
}

TEST_F(FolderTest, NestingHasAnEnd)
{
    FolderId at = Top;
    const HRESULT code = CodeOf([&]
    {
        for (int i = 0; i < 600; ++i)
        {
            at = Make("f", at);
        }
    });
    EXPECT_EQ(code, MAPI_E_TOO_COMPLEX);
    EXPECT_GT(Store().FoldersUnder(Top, true).size(), 400u);
}

TEST_F(FolderTest, TheTreesGenerationRisesWithEachChange)
{
    std::uint64_t before = Store().Generation(0, false);
    const auto risen = [&]
    {
        const std::uint64_t now = Store().Generation(0, false);
        const bool rose = now > before;
        before = now;
        return rose;
    };
    const FolderId folder = Make("x");
    EXPECT_TRUE(risen());
    Store().SaveFolderProperties(folder, Named("y"));
    EXPECT_TRUE(risen());
    Store().MoveFolder(folder, Inbox, "");
    EXPECT_TRUE(risen());
    Store().DeleteFolder(folder, false, false);
    EXPECT_TRUE(risen());
    Store().Folder(Inbox);
    EXPECT_FALSE(risen());
}

} // namespace
} // namespace zebstore::test
