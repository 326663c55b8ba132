#include "tests/zebstore/storage/Storage.h"

namespace zebstore::test
{
namespace
{

class FolderTest : public StorageTest
{
protected:
    static constexpr FolderId Top = IdOf(StandardFolder::IpmSubtree);
    FolderId Make(const std::string& name, FolderId parent = Top)
    {
        return Store().Folders().Create(parent, Named(name));
    }
};

TEST_F(FolderTest, NamesAreFoundInAnyCase)
{
    const FolderId folder = Make("Pr\xC3\x9C"
                                 "fung");
    EXPECT_EQ(Store().Folders().Find(Top, "PR\xC3\xBC"
                                          "FUNG"),
              folder);
    EXPECT_EQ(Store().Folders().Find(Top, "none"), 0);
    EXPECT_EQ(Store().Folders().Find(folder, "Pr\xC3\x9C"
                                             "fung"),
              0)
        << "only direct subfolders";
    EXPECT_EQ(Store().Folders().Properties(folder).Text(PR_DISPLAY_NAME_W), "Pr\xC3\x9C"
                                                                            "fung");
}

TEST_F(FolderTest, NamesBelowAParentAreUnique)
{
    const FolderId folder = Make("One");
    EXPECT_EQ(CodeOf([&] { Make("ONE"); }), MAPI_E_COLLISION);
    Make("One", folder);
    const FolderId other = Make("Two");
    EXPECT_EQ(CodeOf([&] { Store().Folders().SaveProperties(other, Named("one")); }), MAPI_E_COLLISION);
    EXPECT_EQ(Store().Folders().Properties(other).Text(PR_DISPLAY_NAME_W), "Two");
    Store().Folders().SaveProperties(other, Named("TWO"));
    EXPECT_EQ(CodeOf([&] { Make(""); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(CodeOf([&] { Make("x", 4711); }), MAPI_E_NOT_FOUND);
}

TEST_F(FolderTest, TheTreeComesDepthFirst)
{
    const FolderId b = Make("b", Inbox);
    const FolderId a = Make("A", Inbox);
    const FolderId below = Make("below", a);
    const std::vector<FolderInfo> tree = Store().Folders().Under(Inbox, true);
    ASSERT_EQ(tree.size(), 3u);
    EXPECT_EQ(tree[0].id, a);
    EXPECT_EQ(tree[1].id, below);
    EXPECT_EQ(tree[1].depth, 2u);
    EXPECT_EQ(tree[2].id, b);
    EXPECT_EQ(Store().Folders().Under(Inbox, false).size(), 2u);
    EXPECT_EQ(Store().Folders().Info(Inbox).subfolders, 2u);
}

TEST_F(FolderTest, ANumberIsNeverGivenAgain)
{
    const FolderId first = Make("x");
    Store().Folders().Delete(first, false, false);
    EXPECT_GT(Make("x"), first);
    EXPECT_EQ(CodeOf([&] { Store().Folders().Info(first); }), MAPI_E_NOT_FOUND);
}

TEST_F(FolderTest, DeletingAsksForItsContent)
{
    const FolderId folder = Make("full");
    const FolderId below = Make("below", folder);
    const MessageId message = Store().Messages().Create({folder, false}, Mail("m"));
    EXPECT_EQ(CodeOf([&] { Store().Folders().Delete(folder, true, false); }), MAPI_E_HAS_FOLDERS);
    EXPECT_EQ(CodeOf([&] { Store().Folders().Delete(folder, false, true); }), MAPI_E_HAS_MESSAGES);
    EXPECT_TRUE(Store().Messages().Exists(message));
    Store().Folders().Delete(folder, true, true);
    EXPECT_FALSE(Store().Messages().Exists(message));
    EXPECT_FALSE(Store().Folders().Exists(below));
}

TEST_F(FolderTest, StandardFoldersStay)
{
    EXPECT_EQ(CodeOf([&] { Store().Folders().Delete(Inbox, true, true); }), MAPI_E_NO_ACCESS);
    EXPECT_EQ(CodeOf([&] { Store().Folders().Move(Inbox, IdOf(StandardFolder::Root), ""); }), MAPI_E_NO_ACCESS);
    Store().Messages().Create({Inbox, false}, Mail("m"));
    Make("mine");
    Store().Folders().Empty(Top, true);
    EXPECT_TRUE(Store().Folders().Exists(Inbox));
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 0u);
    EXPECT_EQ(Store().Folders().Find(Top, "mine"), 0);
}

TEST_F(FolderTest, EmptyingKeepsAssociatedMessagesUnlessAsked)
{
    const FolderId folder = Make("f");
    Make("below", folder);
    Store().Messages().Create({folder, false}, Mail("normal"));
    Store().Messages().Create({folder, true}, Mail("associated"));
    Store().Folders().Empty(folder, false);
    EXPECT_EQ(Store().Folders().Info(folder).messages, 0u);
    EXPECT_EQ(Store().Folders().Info(folder).associated, 1u);
    EXPECT_EQ(Store().Folders().Info(folder).subfolders, 0u);
    Store().Folders().Empty(folder, true);
    EXPECT_EQ(Store().Folders().Info(folder).associated, 0u);
}

TEST_F(FolderTest, AFolderMovesWithItsContent)
{
    const FolderId a = Make("a");
    const FolderId b = Make("b", a);
    const MessageId message = Store().Messages().Create({b, false}, Mail("m"));
    EXPECT_EQ(CodeOf([&] { Store().Folders().Move(a, b, ""); }), MAPI_E_FOLDER_CYCLE);
    EXPECT_EQ(CodeOf([&] { Store().Folders().Move(a, a, ""); }), MAPI_E_FOLDER_CYCLE);
    Store().Folders().Move(b, Inbox, "renamed");
    EXPECT_EQ(Store().Folders().Find(Inbox, "renamed"), b);
    EXPECT_TRUE(Store().Messages().Exists(message));
    Make("renamed", a);
    EXPECT_EQ(CodeOf([&] { Store().Folders().Move(Store().Folders().Find(a, "renamed"), Inbox, ""); }),
              MAPI_E_COLLISION);
    EXPECT_TRUE(Store().Folders().IsWithin(b, Top));
    EXPECT_FALSE(Store().Folders().IsWithin(Top, b));
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
    EXPECT_GT(Store().Folders().Under(Top, true).size(), 400u);
}

// In a damaged file: each way through the tree ends.
TEST_F(FolderTest, AFolderBelowItselfIsDamage)
{
    const FolderId below = Store().Folders().Create(Inbox, Named("below"));
    Store().Connection().Db().Execute(("UPDATE folder SET parent=" + std::to_string(below) + " WHERE id=1").c_str());
    std::string text;
    EXPECT_EQ(CodeOf([&] { Store().Folders().Under(IdOf(StandardFolder::Root), true); }, &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("' is damaged: folder 1 is below itself"), std::string::npos) << text;
    EXPECT_EQ(CodeOf([&] { Store().Folders().IsWithin(below, IdOf(StandardFolder::Views)); }, &text),
              MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(text.substr(text.find("' is damaged")),
              "' is damaged: folder " + std::to_string(below) + " is below itself");
    Store().Connection().Db().Execute("UPDATE folder SET parent=NULL WHERE id=1");
}

TEST_F(FolderTest, EachChangeRaisesTheTreesGeneration)
{
    std::uint64_t before = Store().Contents().Generation({0, false});
    const auto risen = [&]
    {
        const std::uint64_t now = Store().Contents().Generation({0, false});
        const bool rose = now > before;
        before = now;
        return rose;
    };
    const FolderId folder = Make("x");
    EXPECT_TRUE(risen());
    Store().Folders().SaveProperties(folder, Named("y"));
    EXPECT_TRUE(risen());
    Store().Folders().Move(folder, Inbox, "");
    EXPECT_TRUE(risen());
    Store().Folders().Delete(folder, false, false);
    EXPECT_TRUE(risen());
    Store().Folders().Info(Inbox);
    EXPECT_FALSE(risen());
}

} // namespace
} // namespace zebstore::test
