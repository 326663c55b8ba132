#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/AddressRows.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Database.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/tables/TableView.h"

#include <filesystem>

namespace zebstore::test
{
namespace
{

class AddressStorageTest : public StorageTest
{
protected:
    AddressStorage Book() { return AddressStorage(m_store); }

    /// Makes the open file one of version 1, which did not list recent changes either, and closes it.
    void MakeVeryOld()
    {
        MakeOlder(*m_store, 1);
        m_store.reset();
    }

    /// Makes the open file one of version 2, which had no address book, and closes it.
    void MakeOld()
    {
        MakeOlder(*m_store, 2);
        m_store.reset();
    }

    std::int64_t Version()
    {
        Query query(m_store->Connection().Db(), "PRAGMA user_version");
        query.Step();
        return query.Number(0);
    }
};

TEST_F(AddressStorageTest, EntriesAreCountedSavedAndDeleted)
{
    EXPECT_EQ(Book().Count(), 0u);
    const std::uint64_t before = Book().Generation();
    const AddressId ada = Book().Create(MAPI_MAILUSER, Named("Ada"));
    EXPECT_EQ(Book().Count(), 1u);
    EXPECT_GT(Book().Generation(), before);
    StoredAddress stored = Book().Load(ada);
    EXPECT_EQ(stored.type, ULONG(MAPI_MAILUSER));
    EXPECT_EQ(stored.properties.Text(PR_DISPLAY_NAME_W), "Ada");
    EXPECT_EQ(Book().Save(ada, Named("Ada B"), stored.change), stored.change + 1);
    EXPECT_EQ(CodeOf([&] { Book().Save(ada, Named("No"), stored.change); }), MAPI_E_OBJECT_CHANGED);
    EXPECT_EQ(Book().Named("ada b"), (std::vector<AddressId>{ada}));
    EXPECT_EQ(Book().Delete({ada, 77}), 1u);
    EXPECT_EQ(Book().Count(), 0u);
    std::string text;
    EXPECT_EQ(CodeOf([&] { Book().Load(ada); }, &text), MAPI_E_NOT_FOUND);
    EXPECT_NE(text.find("test.zeb"), std::string::npos);
    EXPECT_EQ(CodeOf([&] { Book().Save(ada, Named("No"), 0); }), MAPI_E_OBJECT_DELETED);
    EXPECT_GT(Book().Create(MAPI_MAILUSER, Named("Next")), ada);
}

// The order is that of names: the place of an entry that is gone is not known by its key.
TEST_F(AddressStorageTest, AViewReadsOnlyTheFirstEntries)
{
    std::vector<RowKey> all;
    {
        StoreTransaction transaction(Store().Connection());
        for (int i = 1000; i < 3000; ++i)
        {
            all.push_back(Book().Create(MAPI_MAILUSER, Named("Entry " + std::to_string(i))));
        }
        transaction.Commit();
    }
    TableView view(MakeAddressRows(Book(), nullptr));
    EXPECT_EQ(view.Take(50, true), std::vector<RowKey>(all.begin(), all.begin() + 50));
    EXPECT_LE(view.MemoryUsed(), 300 * sizeof(RowKey));
    Book().Delete({all[49]});
    view.Sync();
    EXPECT_EQ(view.Take(2, true), (std::vector<RowKey>{all[50], all[51]}));
    EXPECT_EQ(view.Position(), 51u);
}

TEST_F(AddressStorageTest, LargeValuesFollowTheirEntry)
{
    PropertySet properties = Named("Ada");
    properties.SetEncoded(PR_COMMENT_W, std::string(9000, 'c'));
    const AddressId ada = Book().Create(MAPI_MAILUSER, properties);
    EXPECT_EQ(Book().Load(ada).properties.Text(PR_COMMENT_W).size(), 9000u);
    Book().Save(ada, Book().Load(ada).properties, 0);
    EXPECT_EQ(Book().Load(ada).properties.Text(PR_COMMENT_W).size(), 9000u);
    EXPECT_TRUE(Store().CheckWhole().empty());
    properties.SetEncoded(PR_COMMENT_W, std::string(8000, 'd'));
    Book().Save(ada, properties, 0);
    EXPECT_EQ(Book().Load(ada).properties.Text(PR_COMMENT_W), std::string(8000, 'd'));
    EXPECT_TRUE(Store().CheckWhole().empty());
    Book().Delete({ada});
    Query query(Store().Connection().Db(), "SELECT count(*) FROM large");
    ASSERT_TRUE(query.Step());
    EXPECT_EQ(query.Number(0), 0);
}

TEST_F(AddressStorageTest, DeletedMembersLeaveTheirLists)
{
    const AddressId ada = Book().Create(MAPI_MAILUSER, Named("Ada"));
    const AddressId list = Book().Create(MAPI_DISTLIST, Named("Team"));
    Book().AddMembers(list, {{ada, ""}, {0, "foreign"}, {ada, ""}});
    EXPECT_EQ(Book().Members(list).size(), 2u);
    EXPECT_EQ(CodeOf([&] { Book().AddMembers(ada, {{list, ""}}); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(CodeOf([&] { Book().AddMembers(list, {{0, "x"}, {99, ""}}); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Book().Members(list).size(), 2u);
    Book().Delete({ada});
    ASSERT_EQ(Book().Members(list).size(), 1u);
    EXPECT_EQ(Book().Members(list)[0].entry, "foreign");
    EXPECT_EQ(Book().RemoveMembers(list, {{0, "foreign"}, {0, "other"}}), 1u);
    EXPECT_TRUE(Book().Members(list).empty());
}

TEST_F(AddressStorageTest, OnlyTheNamedMembersAreRemoved)
{
    const AddressId ada = Book().Create(MAPI_MAILUSER, Named("Ada"));
    const AddressId boris = Book().Create(MAPI_MAILUSER, Named("Boris"));
    const AddressId list = Book().Create(MAPI_DISTLIST, Named("Team"));
    Book().AddMembers(list, {{ada, ""}, {boris, ""}, {0, "one"}, {0, "two"}});
    const std::uint64_t before = Book().Generation();
    EXPECT_EQ(Book().RemoveMembers(list, {{ada, ""}, {0, "two"}}), 2u);
    EXPECT_GT(Book().Generation(), before);
    const std::vector<ListMember> left = Book().Members(list);
    ASSERT_EQ(left.size(), 2u);
    EXPECT_EQ(left[0].address, boris);
    EXPECT_EQ(left[1].entry, "one");
}

TEST_F(AddressStorageTest, AnotherConnectionSeesWhatWasCommitted)
{
    const auto other = StoreFile::Open(Path("test.zeb"), {});
    const AddressStorage theirs(other);
    const std::uint64_t before = theirs.Generation();
    const AddressId list = Book().Create(MAPI_DISTLIST, Named("Team"));
    EXPECT_GT(theirs.Generation(), before);
    EXPECT_EQ(theirs.Count(), 1u);
    const std::uint64_t between = theirs.Generation();
    Book().AddMembers(list, {{0, "x"}});
    EXPECT_GT(theirs.Generation(), between);
}

TEST_F(AddressStorageTest, ThePreviousVersionIsUpgraded)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("kept"));
    MakeOld();
    m_store = StoreFile::Open(Path("test.zeb"), {});
    EXPECT_EQ(Version(), SchemaVersion);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "kept");
    EXPECT_EQ(Book().Count(), 0u);
    const AddressId ada = Book().Create(MAPI_MAILUSER, Named("Ada"));
    Reopen();
    EXPECT_EQ(Book().Load(ada).properties.Text(PR_DISPLAY_NAME_W), "Ada");
}

TEST_F(AddressStorageTest, TheFirstVersionIsUpgradedDirectly)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("kept"));
    MakeVeryOld();
    StoreFile::OpenOptions reading;
    reading.readOnly = true;
    EXPECT_EQ(CodeOf([&] { StoreFile::Open(Path("test.zeb"), reading); }), MAPI_E_VERSION);
    m_store = StoreFile::Open(Path("test.zeb"), {});
    EXPECT_EQ(Version(), SchemaVersion);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "kept");
    Store().Messages().Create({Inbox, false}, Mail("new"));
    EXPECT_GT(Book().Create(MAPI_MAILUSER, Named("Ada")), 0);
}

TEST_F(AddressStorageTest, ATruncatedOldFileStays)
{
    MakeOld();
    const std::string path = Path("test.zeb");
    std::filesystem::resize_file(path, std::filesystem::file_size(path) - 4096);
    const auto before = std::filesystem::last_write_time(path);
    std::string text;
    EXPECT_EQ(CodeOf([&] { StoreFile::Open(path, {}); }, &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("truncated"), std::string::npos) << text;
    EXPECT_EQ(std::filesystem::last_write_time(path), before);
}

TEST_F(AddressStorageTest, AReadOnlyOldFileStays)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("kept"));
    MakeOld();
    StoreFile::OpenOptions options;
    options.readOnly = true;
    m_store = StoreFile::Open(Path("test.zeb"), options);
    EXPECT_EQ(Version(), 2);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "kept");
    EXPECT_EQ(Book().Count(), 0u);
    EXPECT_EQ(Book().Generation(), 0u);
    EXPECT_TRUE(Book().Named("Ada").empty());
    EXPECT_FALSE(Book().Exists(1));
    EXPECT_TRUE(Book().Properties().IsEmpty());
    EXPECT_EQ(CodeOf([&] { Book().Load(1); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(CodeOf([&] { Book().Create(MAPI_MAILUSER, Named("Ada")); }), MAPI_E_NO_ACCESS);
    EXPECT_TRUE(Store().CheckWhole().empty());
}

TEST_F(AddressStorageTest, AFailedUpgradeChangesNothing)
{
    MakeOld();
    {
        // A table in the way of one that the upgrade makes last.
        Database database(Path("test.zeb"), Database::Mode::ReadWrite);
        database.Execute("CREATE TABLE directory(x)");
    }
    EXPECT_NE(CodeOf([&] { StoreFile::Open(Path("test.zeb"), {}); }), S_OK);
    {
        Database database(Path("test.zeb"), Database::Mode::ReadWrite);
        Query query(database, "SELECT count(*) FROM sqlite_schema WHERE name='address'");
        ASSERT_TRUE(query.Step());
        EXPECT_EQ(query.Number(0), 0);
    }
    Database database(Path("test.zeb"), Database::Mode::ReadWrite);
    database.Execute("DROP TABLE directory");
    m_store = StoreFile::Open(Path("test.zeb"), {});
    EXPECT_EQ(Version(), SchemaVersion);
}

TEST_F(AddressStorageTest, TheWholeCheckCoversTheBook)
{
    const AddressId list = Book().Create(MAPI_DISTLIST, Named("Team"));
    Book().AddMembers(list, {{list, ""}});
    EXPECT_TRUE(Store().CheckWhole().empty());
    const std::pair<const char*, const char*> damages[] = {
        {"UPDATE directory SET rows=7", "does not count its 1 entries"},
        {"UPDATE address SET props=x'0100FF00'", "address book entry 1: its properties cannot be read"},
        {"UPDATE member SET address=NULL", "member 1 of list 1 is no member"},
        {"UPDATE address SET type=6", "is no member of a list"},
    };
    for (const auto& damage : damages)
    {
        m_store->Connection().Db().Execute("BEGIN");
        m_store->Connection().Db().Execute(damage.first);
        std::string all;
        for (const std::string& problem : Store().CheckWhole())
        {
            all += problem + "\n";
        }
        EXPECT_NE(all.find(damage.second), std::string::npos) << damage.first << ":\n" << all;
        m_store->Connection().Db().Execute("ROLLBACK");
    }
}

} // namespace
} // namespace zebstore::test
