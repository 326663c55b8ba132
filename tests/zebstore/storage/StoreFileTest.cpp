#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/Database.h"
#include "zebstore/storage/Schema.h"

#include <filesystem>
#include <fstream>

namespace zebstore::test
{
namespace
{

namespace fs = std::filesystem;

class StoreFileTest : public StorageTest
{
protected:
    HRESULT OpenCode(const std::string& path, std::string* text = nullptr)
    {
        std::string own;
        std::string& sentence = text ? *text : own;
        const HRESULT code = CodeOf([&] { StoreFile::Open(path, {}); }, &sentence);
        EXPECT_NE(sentence.find("'" + path + "'"), std::string::npos) << sentence;
        EXPECT_EQ(sentence.substr(0, 15), "the store file ");
        EXPECT_NE(sentence.back(), '.');
        return code;
    }
    void Write(const std::string& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }
    std::string Read(const std::string& path)
    {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }
    void Spoil(const std::string& sql) { m_store->Connection().Db().Execute(sql.c_str()); }
};

TEST_F(StoreFileTest, NewStoresHaveStandardFolders)
{
    EXPECT_EQ(Store().Folders().Info(IdOf(StandardFolder::Root)).parent, 0);
    EXPECT_EQ(Store().Folders().Info(IdOf(StandardFolder::Root)).type, ULONG(FOLDER_ROOT));
    for (const StandardFolder below : {StandardFolder::Inbox, StandardFolder::Outbox, StandardFolder::DeletedItems,
                                       StandardFolder::SentItems, StandardFolder::Contacts})
    {
        EXPECT_EQ(Store().Folders().Info(IdOf(below)).parent, IdOf(StandardFolder::IpmSubtree));
    }
    for (const StandardFolder below : {StandardFolder::Finder, StandardFolder::Views, StandardFolder::CommonViews})
    {
        EXPECT_EQ(Store().Folders().Info(IdOf(below)).parent, IdOf(StandardFolder::Root));
    }
    EXPECT_EQ(Store().Folders().Properties(Inbox).Text(PR_DISPLAY_NAME_W), "Inbox");
    EXPECT_EQ(Store().Properties().Text(PR_DISPLAY_NAME_W), "Test");
}

TEST_F(StoreFileTest, ItsIdentityIsStableAndUnique)
{
    const GUID uid = Store().Uid();
    Reopen();
    EXPECT_TRUE(IsEqualGUID(uid, Store().Uid()));
    const auto other = StoreFile::Create(Path("other.zeb"), "Other", {});
    EXPECT_FALSE(IsEqualGUID(uid, other->Uid()));
}

TEST_F(StoreFileTest, Utf8PathsNameTheFile)
{
    const std::string path = m_folder.Path() + "/Gr\xC3\xB6\xC3\x9F"
                                               "e \xE6\x97\xA5.zeb";
    StoreFile::Create(path, "Name", {});
    EXPECT_TRUE(fs::exists(fs::u8path(path)));
    EXPECT_EQ(StoreFile::Open(path, {})->Properties().Text(PR_DISPLAY_NAME_W), "Name");
    EXPECT_TRUE(StoreFile::Exists(path));
}

TEST_F(StoreFileTest, AMissingFileIsNotMade)
{
    EXPECT_EQ(OpenCode(Path("missing.zeb")), MAPI_E_NOT_FOUND);
    EXPECT_FALSE(fs::exists(Path("missing.zeb")));
}

TEST_F(StoreFileTest, ANonDatabaseIsRefused)
{
    Write(Path("text.zeb"), std::string(5000, 'x'));
    EXPECT_EQ(OpenCode(Path("text.zeb")), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(Read(Path("text.zeb")), std::string(5000, 'x'));
}

TEST_F(StoreFileTest, AnEmptyFileIsRefused)
{
    Write(Path("empty.zeb"), "");
    EXPECT_EQ(OpenCode(Path("empty.zeb")), MAPI_E_CORRUPT_STORE);
}

TEST_F(StoreFileTest, AFolderIsRefused)
{
    EXPECT_EQ(OpenCode(m_folder.Path()), MAPI_E_CORRUPT_STORE);
}

TEST_F(StoreFileTest, ATruncatedFileIsRefused)
{
    for (int i = 0; i < 200; ++i)
    {
        Store().Messages().Create({Inbox, false}, Mail(std::string(300, 'a')));
    }
    m_store.reset();
    const std::string whole = Read(Path("test.zeb"));
    for (const size_t left : {size_t(10), size_t(100), size_t(2000), size_t(4096), whole.size() / 2, whole.size() - 1})
    {
        Write(Path("cut.zeb"), whole.substr(0, left));
        EXPECT_EQ(OpenCode(Path("cut.zeb")), MAPI_E_CORRUPT_STORE) << left;
    }
}

TEST_F(StoreFileTest, AnotherProgramsDatabaseIsRefused)
{
    {
        Database other(Path("other.db"), Database::Mode::Create);
        other.Execute("CREATE TABLE message(id INTEGER PRIMARY KEY)");
    }
    EXPECT_EQ(OpenCode(Path("other.db")), MAPI_E_CORRUPT_STORE);
}

TEST_F(StoreFileTest, NewerSchemasAreRefused)
{
    Spoil("PRAGMA user_version=" + std::to_string(SchemaVersion + 1));
    m_store.reset();
    std::string text;
    EXPECT_EQ(OpenCode(Path("test.zeb"), &text), MAPI_E_VERSION);
    EXPECT_NE(text.find("version " + std::to_string(SchemaVersion + 1)), std::string::npos);
}

TEST_F(StoreFileTest, AnOlderVersionWithLaterColumnsIsDamaged)
{
    Spoil("PRAGMA user_version=3; DROP TABLE date_run");
    m_store.reset();
    std::string text;
    EXPECT_EQ(OpenCode(Path("test.zeb"), &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("test.zeb' is damaged: duplicate column name: created"), std::string::npos) << text;
}

TEST_F(StoreFileTest, TheFirstVersionIsUpgraded)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("old"));
    MakeOlder(Store(), 1);
    m_store.reset();
    StoreFile::OpenOptions readOnly;
    readOnly.readOnly = true;
    std::string text;
    EXPECT_EQ(CodeOf([&] { StoreFile::Open(Path("test.zeb"), readOnly); }, &text), MAPI_E_VERSION);
    EXPECT_NE(text.find("opened for writing once"), std::string::npos) << text;
    m_store = StoreFile::Open(Path("test.zeb"), {});
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "old");
    Store().Messages().Create({Inbox, false}, Mail("new"));
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 2u);
    m_store.reset();
    m_store = StoreFile::Open(Path("test.zeb"), readOnly);
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 2u);
}

TEST_F(StoreFileTest, AMissingTableIsRefused)
{
    Spoil("DROP TABLE chunk");
    m_store.reset();
    std::string text;
    EXPECT_EQ(OpenCode(Path("test.zeb"), &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("'chunk'"), std::string::npos);
}

TEST_F(StoreFileTest, ReadOnlyFilesNeedReadingMode)
{
    m_store.reset();
    fs::permissions(Path("test.zeb"), fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                    fs::perm_options::remove);
    EXPECT_EQ(OpenCode(Path("test.zeb")), MAPI_E_NO_ACCESS);
    fs::permissions(Path("test.zeb"), fs::perms::owner_write, fs::perm_options::add);
}

TEST_F(StoreFileTest, AReadOnlyStoreRefusesWrites)
{
    Store().Messages().Create({Inbox, false}, Mail("kept"));
    m_store.reset();
    StoreFile::OpenOptions options;
    options.readOnly = true;
    m_store = StoreFile::Open(Path("test.zeb"), options);
    EXPECT_TRUE(Store().IsReadOnly());
    EXPECT_EQ(CodeOf([&] { Store().Messages().Create({Inbox, false}, Mail("no")); }), MAPI_E_NO_ACCESS);
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 1u);
}

TEST_F(StoreFileTest, CreatingOverAFileIsRefused)
{
    Write(Path("mine.txt"), "mine");
    EXPECT_EQ(CodeOf([&] { StoreFile::Create(Path("mine.txt"), "x", {}); }), MAPI_E_COLLISION);
    EXPECT_EQ(Read(Path("mine.txt")), "mine");
}

TEST_F(StoreFileTest, FailedCreationLeavesNothing)
{
    EXPECT_EQ(CodeOf([&] { StoreFile::Create(m_folder.Path() + "/no/such/folder.zeb", "x", {}); }), MAPI_E_NO_ACCESS);
}

TEST_F(StoreFileTest, TwoConnectionsSeeEachOthersCommits)
{
    const auto other = StoreFile::Open(Path("test.zeb"), {});
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("mine"));
    EXPECT_EQ(other->Messages().Load(message).properties.Text(PR_SUBJECT_W), "mine");
    const std::uint64_t before = Store().Contents().Generation({Inbox, false});
    other->Messages().Create({Inbox, false}, Mail("theirs"));
    EXPECT_GT(Store().Contents().Generation({Inbox, false}), before);
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 2u);
}

TEST_F(StoreFileTest, TheLongestClassDecidesTheFolder)
{
    const FolderId reports = Store().Folders().Create(IdOf(StandardFolder::IpmSubtree), Named("Reports"));
    Store().ReceiveFolders().Set("IPM.Report", reports);
    EXPECT_EQ(Store().ReceiveFolders().Of("").folder, Inbox);
    EXPECT_EQ(Store().ReceiveFolders().Of("IPM.Note").folder, Inbox);
    EXPECT_EQ(Store().ReceiveFolders().Of("ipm.report.READ").folder, reports);
    EXPECT_EQ(Store().ReceiveFolders().Of("IPM.Report.Read").messageClass, "IPM.Report");
    EXPECT_EQ(Store().ReceiveFolders().Of("IPM.Reporter").folder, Inbox);
    EXPECT_EQ(Store().ReceiveFolders().All().size(), 2u);
    Store().ReceiveFolders().Set("IPM.Report", 0);
    EXPECT_EQ(Store().ReceiveFolders().Of("IPM.Report").folder, Inbox);
    EXPECT_EQ(CodeOf([&] { Store().ReceiveFolders().Set("", 0); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(CodeOf([&] { Store().ReceiveFolders().Set("IPM.X", 999); }), MAPI_E_NOT_FOUND);
}

TEST_F(StoreFileTest, TheWholeCheckFindsFaults)
{
    MessageContent content = Mail("checked");
    content.properties.SetEncoded(PR_BODY_W, std::string(9000, 'b'));
    const MessageId message = Store().Messages().Create({Inbox, false}, content);
    EXPECT_TRUE(Store().CheckWhole().empty());
    const std::string id = std::to_string(message);
    const std::pair<std::string, const char*> damages[] = {
        {"UPDATE contents SET rows=7 WHERE container=6", "counts 7 messages and has 1"},
        {"UPDATE contents SET unread=5 WHERE container=6", "unread"},
        {"UPDATE contents SET next=1 WHERE container=6", "next number"},
        {"UPDATE message SET props=x'0100FF00' WHERE id=" + id, "properties cannot be read"},
        {"UPDATE message SET props=" + std::string(DamagedReference) + " WHERE id=" + id,
         "a reference to a large value is damaged"},
        {"DELETE FROM chunk", "not complete"},
        {"INSERT INTO large(size) VALUES(3)", "belongs to nothing"},
        {"INSERT INTO chunk(id, bytes) VALUES(99999999999, x'00')", "belong to no large value"},
        {"UPDATE message SET parts=parts|2", "does not know its recipients"},
        {"UPDATE message SET id=" + std::to_string(MessageId(4000) << 33), "belong to no folder"},
        {"PRAGMA foreign_keys=OFF; DELETE FROM contents WHERE container=6", "belong to no folder"},
    };
    for (const auto& damage : damages)
    {
        m_store->Connection().Db().Execute("BEGIN");
        Spoil(damage.first.c_str());
        std::string all;
        for (const std::string& problem : Store().CheckWhole())
        {
            all += problem + "\n";
        }
        EXPECT_NE(all.find(damage.second), std::string::npos) << damage.first << ":\n" << all;
        m_store->Connection().Db().Execute("ROLLBACK");
    }
}

TEST_F(StoreFileTest, FullDurabilityIsAConnectionSetting)
{
    StoreFile::OpenOptions options;
    options.fullDurability = true;
    const auto full = StoreFile::Open(Path("test.zeb"), options);
    Query synchronous(full->Connection().Db(), "PRAGMA synchronous");
    ASSERT_TRUE(synchronous.Step());
    EXPECT_EQ(synchronous.Number(0), 2);
}

} // namespace
} // namespace zebstore::test
