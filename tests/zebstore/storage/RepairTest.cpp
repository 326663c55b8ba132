// That a repair mends what the check of the whole file finds, says so in a line each, and touches nothing else.
#include "tests/zebstore/storage/Storage.h"

#include "platform/utf8.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Repair.h"
#include "zebstore/storage/Text.h"
#include "zebstore/zebstore.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <regex>
#include <sqlite3.h>

namespace zebstore::test
{
namespace
{

struct Reported
{
    std::string findings;
    std::uint64_t last = 0;
    std::uint64_t whole = 0;
    int steps = 0;
};

class RepairTest : public StorageTest
{
protected:
    void SetUp() override
    {
        StorageTest::SetUp();
        const AddressStorage book(m_store);
        const AddressId list = book.Create(MAPI_DISTLIST, Named("Team"));
        book.AddMembers(list, {{0, "foreign"}});
        m_first = Store().Messages().Create({Inbox, false}, Whole("First"));
        m_second = Store().Messages().Create({Inbox, false}, Whole("Second"));
    }

    static MessageContent Whole(const std::string& subject)
    {
        MessageContent content = Mail(subject);
        content.properties.SetText(PR_BODY_W, std::string(50000, 'b'));
        content.recipients = std::vector<PropertySet>{Named("Ada"), Named("Boris")};
        AttachmentEdit edit;
        edit.properties.SetBinary(PR_ATTACH_DATA_BIN, "attached", 8);
        edit.embedded = std::make_shared<MessageContent>(Mail("inner"));
        content.attachments.push_back(edit);
        return content;
    }

    static WorkReport ReportTo(Reported& reported)
    {
        return {[&](const std::string& finding) { reported.findings += finding + "\n"; },
                [&](std::uint64_t done, std::uint64_t whole)
        {
            EXPECT_GE(done, reported.whole == whole ? reported.last : 0);
            EXPECT_LE(done, whole);
            reported.last = done;
            reported.whole = whole;
            ++reported.steps;
        }};
    }
    Reported Repair()
    {
        Reported reported;
        RepairStore(Store(), ReportTo(reported));
        return reported;
    }
    void Spoil(const std::string& sql)
    {
        Store().Connection().Db().Execute("PRAGMA foreign_keys=OFF");
        Store().Connection().Db().Execute(sql.c_str());
        Store().Connection().Db().Execute("PRAGMA foreign_keys=ON");
    }
    std::string Body(MessageId message) { return Store().Messages().Load(message).properties.Text(PR_BODY_W); }

    MessageId m_first = 0;
    MessageId m_second = 0;
};

TEST_F(RepairTest, ASoundStoreIsUnchanged)
{
    const std::uint64_t before = Store().Connection().Db().Commits();
    const Reported reported = Repair();
    EXPECT_EQ(reported.findings, "");
    EXPECT_GT(reported.steps, 0);
    EXPECT_EQ(reported.last, reported.whole);
    EXPECT_NE(before, 0u);
    EXPECT_EQ(Body(m_first), std::string(50000, 'b'));
}

TEST_F(RepairTest, EachDamageIsRepairedAndReported)
{
    const std::string first = std::to_string(m_first);
    const std::pair<std::string, std::string> damages[] = {
        {"UPDATE contents SET rows=7 WHERE container=6",
         "folder 3: its counters do not match its messages: rebuilt (2"},
        {"UPDATE contents SET unread=5 WHERE container=6", "folder 3: its counters"},
        {"UPDATE contents SET next=1 WHERE container=6", "folder 3: its counters"},
        {"UPDATE contents SET recent=x'01' WHERE container=6", "folder 3: its counters"},
        {"DELETE FROM contents WHERE container=7", "folder 3: its counters are missing: made"},
        {"DELETE FROM contents WHERE container=0", "the counters of messages inside attachments are missing: created"},
        {"INSERT INTO large(size) VALUES(3)", "belongs to nothing: removed"},
        {"INSERT INTO chunk(id, bytes, sum) VALUES(99999999999, x'00', 0)", "1 pieces belong to no large value"},
        {"DELETE FROM chunk WHERE id=(SELECT max(id) FROM chunk)",
         "message " + std::to_string(m_second) + ": the value of its property 0x1000001F is not complete"},
        {"UPDATE chunk SET sum=sum+1 WHERE id=(SELECT min(id) FROM chunk)",
         "large value 1: a piece of it does not match its checksum: kept as it reads"},
        {"UPDATE message SET subject='x' WHERE id=" + first, "message " + first + ": its row does not match"},
        {"UPDATE message SET parts=0 WHERE id=" + first, "message " + first + ": its row does not match"},
        {"UPDATE message SET props=x'0100FF00' WHERE id=" + first,
         "message " + first + ": its properties cannot be read"},
        {"UPDATE message SET props=(SELECT props FROM message WHERE id=" + std::to_string(m_second) +
             ") WHERE id=" + first,
         "belongs to another object too: copied"},
        {"UPDATE message SET props=" + std::string(DamagedReference) + " WHERE id=" + first,
         "message " + first + ": the value of its property 0x1000001F is not complete: the property is removed"},
        {"UPDATE recipient SET props=x'00' WHERE message=" + first + " AND number=1",
         "a recipient of message " + first + ": its properties cannot be read"},
        {"UPDATE attachment SET props=x'00' WHERE message=" + first,
         "an attachment of message " + first + ": its properties cannot be read"},
        {"UPDATE folder SET props=x'00' WHERE id=3", "folder 3: its properties cannot be read"},
        {"UPDATE store SET props=x'00'", "the store: its properties cannot be read"},
        {"UPDATE address SET props=x'00'", "address book entry 1: its properties cannot be read"},
        {"DELETE FROM message WHERE id=" + first, "2 recipients of messages that are missing: removed"},
        {"DELETE FROM attachment WHERE message=" + first, "belongs to no attachment: removed"},
        {"DELETE FROM message WHERE id=1", "1 attachments whose message is missing: kept without it"},
        {"UPDATE attachment SET embedded=1", "1 attachments whose message belongs to another one too"},
        {"UPDATE message SET id=" + std::to_string(MessageId(4000) << 33) + " WHERE id=" + first,
         "1 messages belong to no folder (4000): moved to folder"},
        {"UPDATE contents SET next=-9223372036854775808 WHERE container=6", "folder 3: its counters"},
        {"UPDATE message SET id=-5 WHERE id=" + first, "1 messages belong to no folder (-1): moved to folder"},
        {"UPDATE contents SET next=5000000000 WHERE container=6", "folder 3: its counters"},
        {"UPDATE contents SET change=9223372036854775807 WHERE container=6", "folder 3: its counters"},
        {"UPDATE contents SET change=-2 WHERE container=6", "folder 3: its counters"},
        {"UPDATE contents SET folder=4 WHERE container=6", "1 counters belong to another folder: corrected"},
        {"UPDATE chunk SET id=id+1 WHERE id=(SELECT max(id) FROM chunk)",
         "message " + std::to_string(m_second) + ": the value of its property 0x1000001F is not complete"},
        {"INSERT INTO large(id, size) VALUES(-84, 3)", "1 large values with a number that none can have: removed"},
        {"UPDATE folder SET parent=4000 WHERE id=7", "folder 7 ('Contacts') is not where it was created: put back"},
        {"UPDATE folder SET parent=7 WHERE id=7", "folder 7 ('Contacts') is not where it was created: put back"},
        {"UPDATE folder SET parent=2 WHERE id=1", "folder 1 ('') is not where it was created: put back"},
        {"UPDATE folder SET type=2 WHERE id=3", "folder 3 ('Inbox') is not where it was created: put back"},
        {"DELETE FROM folder WHERE id=4", "folder 4 ('Outbox') is missing: created"},
        {"DELETE FROM folder WHERE id=1", "folder 1 ('') is missing: created"},
        {"CREATE TEMP TABLE kept AS SELECT props FROM folder WHERE id=7; DELETE FROM folder WHERE id=7; "
         "UPDATE folder SET key='contacts', props=(SELECT props FROM kept) WHERE id=4; DROP TABLE kept",
         "folder 7 ('Contacts') is missing: created"},
        {"UPDATE folder SET id=-9223372036854775807 WHERE id=8",
         "folder -9223372036854775807: none has such a number: it is now 11"},
        {"UPDATE sqlite_sequence SET seq=9223372036854775807 WHERE name='folder'",
         "1 numbers of rows of 'folder' could not go on: corrected"},
        {"UPDATE sqlite_sequence SET seq='x' WHERE name='address'",
         "1 numbers of rows of 'address' could not go on: corrected"},
        {"UPDATE sqlite_sequence SET seq=-1 WHERE name='large'",
         "1 numbers of rows of 'large' could not go on: corrected"},
        {"UPDATE member SET list=0; UPDATE address SET id=0",
         "address book entry 0: none has such a number: it is now 1"},
        {"PRAGMA ignore_check_constraints=ON; UPDATE directory SET id=5; PRAGMA ignore_check_constraints=OFF",
         "1 rows of the address book had another number: corrected"},
        {"PRAGMA ignore_check_constraints=ON; UPDATE store SET id=5; PRAGMA ignore_check_constraints=OFF",
         "1 rows of the store had another number: corrected"},
        {"PRAGMA ignore_check_constraints=ON; INSERT INTO named VALUES(7, x'00', 0, 1, ''); "
         "PRAGMA ignore_check_constraints=OFF",
         "1 names of properties without a number for them: removed"},
        {"UPDATE directory SET rows=7", "the address book does not count its 1 entries: corrected"},
        {"DELETE FROM directory", "the address book does not count its 1 entries: corrected"},
        {"UPDATE member SET entry=NULL", "1 members of what is not a list or is missing: removed"},
        {"INSERT INTO receive(class, folder) VALUES('IPM.X', 4000)", "1 receive folders that are missing: removed"},
    };
    for (const auto& damage : damages)
    {
        const std::string path = Path("test.zeb");
        m_store.reset();
        std::filesystem::copy_file(path, Path("whole.zeb"), std::filesystem::copy_options::overwrite_existing);
        m_store = StoreFile::Open(path, {});
        Spoil(damage.first);
        EXPECT_FALSE(Store().CheckWhole().empty()) << damage.first;
        const std::string findings = Repair().findings;
        EXPECT_NE(findings.find(damage.second), std::string::npos) << damage.first << "\n" << findings;
        EXPECT_EQ(Store().CheckWhole(), std::vector<std::string>()) << damage.first;
        EXPECT_EQ(Repair().findings, "") << damage.first;
        m_store.reset();
        std::filesystem::remove(path);
        std::filesystem::rename(Path("whole.zeb"), path);
        m_store = StoreFile::Open(path, {});
        EXPECT_EQ(Body(m_first), std::string(50000, 'b'));
    }
}

TEST_F(RepairTest, WhatIsNotDamagedIsKept)
{
    Spoil("UPDATE message SET props=x'0100FF00' WHERE id=" + std::to_string(m_first));
    Repair();
    EXPECT_EQ(Store().Messages().Load(m_first).properties.Text(PR_SUBJECT_W), "first") << "from the sort key";
    EXPECT_EQ(Store().Recipients().Load(m_first).size(), 2u);
    EXPECT_EQ(Store().Attachments().Numbers(m_first).size(), 1u);
    EXPECT_EQ(Store().Messages().Load(m_second).properties.Text(PR_SUBJECT_W), "Second");
    EXPECT_EQ(Body(m_second), std::string(50000, 'b'));
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 2u);
}

TEST_F(RepairTest, LostMessagesGetTheirOwnFolder)
{
    // With foreign keys: recipients and attachments go along.
    const std::string lost = std::to_string(MessageId(4000) << 33);
    Store().Connection().Db().Execute(
        ("UPDATE message SET id=" + lost + " WHERE id=" + std::to_string(m_first)).c_str());
    Repair();
    const FolderId folder = Store().Folders().Find(IdOf(StandardFolder::IpmSubtree), "Recovered");
    ASSERT_NE(folder, 0);
    const std::vector<MessageId> found = Store().Messages().In({folder, false});
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(Body(found[0]), std::string(50000, 'b'));
    EXPECT_EQ(Store().Recipients().Load(found[0]).size(), 2u);
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 1u);
}

TEST_F(RepairTest, LostFoldersGetANumberedName)
{
    PropertySet properties;
    properties.SetText(PR_DISPLAY_NAME_W, "Outbox");
    const FolderId lost = Store().Folders().Create(Inbox, properties);
    Spoil("UPDATE folder SET parent=4000 WHERE id=" + std::to_string(lost));
    const std::string name = "Outbox (" + std::to_string(lost) + ")";
    EXPECT_NE(Repair().findings.find("moved to '" + name + "'"), std::string::npos);
    EXPECT_EQ(Store().Folders().Find(IdOf(StandardFolder::IpmSubtree), name), lost);
    EXPECT_EQ(Store().Folders().Find(IdOf(StandardFolder::IpmSubtree), "Outbox"), IdOf(StandardFolder::Outbox));
}

TEST_F(RepairTest, CountersThatCannotBeRightAreNotCountedOn)
{
    for (const char* counter : {"next=0", "next=4294967297", "change=-1", "change=9223372036854775807"})
    {
        Spoil(std::string("UPDATE contents SET ") + counter + " WHERE container=6");
        std::string text;
        EXPECT_EQ(CodeOf([&] { Store().Messages().Create({Inbox, false}, Mail("new")); }, &text), MAPI_E_CORRUPT_STORE)
            << counter;
        EXPECT_NE(text.find("the counters of folder 3 cannot be right"), std::string::npos) << text;
        Repair();
        EXPECT_NE(Store().Messages().Create({Inbox, false}, Mail("new")), 0) << counter;
    }
}

TEST_F(RepairTest, ALostFolderLosesAnIncompleteValue)
{
    PropertySet properties = Named("lost");
    properties.SetText(PR_COMMENT_W, std::string(50000, 'c'));
    const FolderId lost = Store().Folders().Create(Inbox, properties);
    Spoil("DELETE FROM chunk WHERE id=(SELECT max(id) FROM chunk); UPDATE folder SET parent=4000 WHERE id=" +
          std::to_string(lost));
    Repair();
    EXPECT_EQ(Store().Folders().Find(IdOf(StandardFolder::IpmSubtree), "lost"), lost);
    EXPECT_EQ(Store().Folders().Properties(lost).Text(PR_COMMENT_W), "");
}

TEST_F(RepairTest, AnIncompleteIndexIsRebuilt)
{
    // The schema forgets the index while a row is added.
    Spoil("PRAGMA writable_schema=ON; CREATE TEMP TABLE kept AS SELECT * FROM sqlite_schema WHERE "
          "name='address_by_name'; DELETE FROM sqlite_schema WHERE name='address_by_name'; PRAGMA "
          "writable_schema=RESET");
    AddressStorage(m_store).Create(MAPI_MAILUSER, Named("Ada"));
    Spoil("PRAGMA writable_schema=ON; INSERT INTO sqlite_schema SELECT * FROM kept; PRAGMA "
          "writable_schema=RESET; DROP TABLE kept");
    EXPECT_FALSE(Store().CheckWhole().empty());
    const std::string findings = Repair().findings;
    EXPECT_EQ(findings.find("an index does not fit its table ("), 0u) << findings;
    EXPECT_NE(findings.find("address_by_name"), std::string::npos) << findings;
    EXPECT_EQ(Repair().findings, "");
}

TEST_F(RepairTest, AFailedRepairChangesNothing)
{
    Spoil("CREATE TEMP TABLE kept AS SELECT * FROM store; DELETE FROM store; "
          "UPDATE contents SET rows=7 WHERE container=6");
    const std::vector<std::string> before = Store().CheckWhole();
    std::string text;
    EXPECT_EQ(CodeOf([&] { Repair(); }, &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("cannot be repaired: the store: its properties cannot be read"), std::string::npos) << text;
    EXPECT_EQ(Store().CheckWhole(), before);
    Spoil("INSERT INTO store SELECT * FROM kept; DROP TABLE kept");
    Repair();
}

TEST_F(RepairTest, ACopyReportsAndReplacesNothing)
{
    Reported reported;
    CopyStore(Path("test.zeb"), Path("copy.zeb"), ReportTo(reported));
    EXPECT_GT(reported.steps, 0);
    EXPECT_EQ(reported.last, reported.whole);
    EXPECT_GT(reported.whole, 0u);
    std::string text;
    EXPECT_EQ(CodeOf([&] { CopyStore(Path("test.zeb"), Path("copy.zeb"), ReportTo(reported)); }, &text),
              MAPI_E_COLLISION);
    EXPECT_NE(text.find("copy.zeb"), std::string::npos) << text;
    EXPECT_EQ(StoreFile::Open(Path("copy.zeb"), {})->CheckWhole(), std::vector<std::string>());
}

TEST_F(RepairTest, ASharedValueBecomesTwo)
{
    Spoil("UPDATE message SET props=(SELECT props FROM message WHERE id=" + std::to_string(m_second) +
          ") WHERE id=" + std::to_string(m_first));
    Repair();
    Store().Messages().Delete({m_second});
    EXPECT_EQ(Body(m_first), std::string(50000, 'b'));
}

TEST_F(RepairTest, EarlierProgramsOrphansAreRemoved)
{
    Spoil("INSERT INTO large(id, size) VALUES(500, 3); INSERT INTO chunk(id, bytes, sum) VALUES(500 << 24, "
          "x'010203', 0)");
    const std::vector<std::string> problems = Store().CheckWhole();
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_EQ(problems[0], "large value 500 belongs to nothing");
    EXPECT_NE(Repair().findings.find("large value 500 belongs to nothing: removed"), std::string::npos);
}

struct Export
{
    static void STDAPICALLTYPE Take(void* context, const char* finding, ULONGLONG done, ULONGLONG whole)
    {
        Reported& reported = *static_cast<Reported*>(context);
        if (finding)
        {
            reported.findings += std::string(finding) + "\n";
        }
        reported.last = done;
        reported.whole = whole;
        ++reported.steps;
    }
};

TEST_F(RepairTest, OnlyACopyIsRepaired)
{
    Spoil("UPDATE contents SET rows=7 WHERE container=6");
    Reported reported;
    char failure[200] = "x";
    const std::string copy = Path("copy.zeb");
    // While the store is open: what was committed is in the copy.
    EXPECT_EQ(ZebStoreRepair(Path("test.zeb").c_str(), copy.c_str(), Export::Take, &reported, failure, sizeof(failure)),
              S_OK);
    EXPECT_STREQ(failure, "");
    EXPECT_NE(reported.findings.find("folder 3: its counters"), std::string::npos) << reported.findings;
    EXPECT_EQ(StoreFile::Open(copy, {})->Folders().Info(Inbox).messages, 2u);
    EXPECT_FALSE(Store().CheckWhole().empty());
    EXPECT_EQ(ZebStoreRepair(Path("test.zeb").c_str(), copy.c_str(), nullptr, nullptr, failure, sizeof(failure)),
              MAPI_E_COLLISION);
    EXPECT_NE(std::string(failure).find("copy.zeb"), std::string::npos);
    EXPECT_EQ(StoreFile::Open(copy, {})->Folders().Info(Inbox).messages, 2u) << "the file that was there stays";
    EXPECT_EQ(ZebStoreRepair(Path("test.zeb").c_str(), nullptr, Export::Take, &reported, nullptr, 0), S_OK);
    EXPECT_TRUE(Store().CheckWhole().empty());
}

TEST_F(RepairTest, AFailedRepairLeavesNoCopy)
{
    char failure[40] = "";
    EXPECT_EQ(ZebStoreRepair(Path("missing.zeb").c_str(), Path("copy.zeb").c_str(), nullptr, nullptr, failure,
                             sizeof(failure)),
              MAPI_E_NOT_FOUND);
    EXPECT_EQ(std::string(failure).substr(0, 15), "the store file ");
    EXPECT_LT(std::string(failure).size(), sizeof(failure));
    Spoil("DROP TABLE chunk");
    EXPECT_EQ(ZebStoreRepair(Path("test.zeb").c_str(), Path("copy.zeb").c_str(), nullptr, nullptr, nullptr, 0),
              MAPI_E_CORRUPT_STORE);
    EXPECT_FALSE(std::filesystem::exists(Path("copy.zeb")));
    EXPECT_EQ(ZebStoreRepair(nullptr, nullptr, nullptr, nullptr, nullptr, 0), MAPI_E_INVALID_PARAMETER);
    m_store.reset();
}

TEST_F(RepairTest, AFailuresTextEndsBetweenCharacters)
{
    const std::string path = Path("\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E\xF0\x9F\x98\x80.zeb");
    const std::string whole = "the store file '" + path + "' does not exist";
    for (ULONG size = 1; size < 200; ++size)
    {
        std::string failure(size, 'x');
        EXPECT_EQ(ZebStoreRepair(path.c_str(), nullptr, nullptr, nullptr, failure.data(), size), MAPI_E_NOT_FOUND);
        const std::string text = failure.c_str();
        EXPECT_TRUE(zeb::platform::IsUtf8(text)) << size << ": " << text;
        EXPECT_TRUE(text.size() + 4 >= size || text == whole) << "no more than needed is cut off";
    }
}

TEST_F(RepairTest, CompactFilesHaveNoFreeSpace)
{
    for (int i = 0; i < 20; ++i)
    {
        Store().Messages().Delete({Store().Messages().Create({Inbox, false}, Whole("gone"))});
    }
    m_store.reset();
    const auto before = std::filesystem::file_size(Path("test.zeb"));
    Reported reported;
    EXPECT_EQ(ZebStoreCompact(Path("test.zeb").c_str(), Export::Take, &reported, nullptr, 0), S_OK);
    EXPECT_LT(std::filesystem::file_size(Path("test.zeb")), before);
    EXPECT_FALSE(std::filesystem::exists(Path("test.zeb-wal")));
    m_store = StoreFile::Open(Path("test.zeb"), {});
    EXPECT_EQ(Body(m_first), std::string(50000, 'b'));
    EXPECT_EQ(ZebStoreCompact(Path("missing.zeb").c_str(), nullptr, nullptr, nullptr, 0), MAPI_E_NOT_FOUND);
}

TEST_F(RepairTest, ABackupIsASnapshotOfAFileInUse)
{
    const std::string copy = Path("backup ü日本.zeb");
    Reported reported;
    EXPECT_EQ(ZebStoreBackup(Path("test.zeb").c_str(), copy.c_str(), Export::Take, &reported, nullptr, 0), S_OK);
    EXPECT_GT(reported.steps, 0);
    const MessageId later = Store().Messages().Create({Inbox, false}, Whole("after the backup"));
    {
        auto backup = StoreFile::Open(copy, {});
        EXPECT_TRUE(backup->CheckWhole().empty());
        EXPECT_TRUE(backup->Messages().Exists(m_first));
        EXPECT_FALSE(backup->Messages().Exists(later));
    }
    char failure[300] = "";
    EXPECT_EQ(ZebStoreBackup(Path("test.zeb").c_str(), copy.c_str(), nullptr, nullptr, failure, sizeof failure),
              MAPI_E_COLLISION);
    EXPECT_NE(std::string(failure).find("backup ü日本.zeb"), std::string::npos) << failure;
    EXPECT_EQ(ZebStoreBackup(Path("missing.zeb").c_str(), Path("b.zeb").c_str(), nullptr, nullptr, nullptr, 0),
              MAPI_E_NOT_FOUND);
    EXPECT_EQ(ZebStoreBackup(Path("test.zeb").c_str(), nullptr, nullptr, nullptr, nullptr, 0),
              MAPI_E_INVALID_PARAMETER);
    std::ofstream(Path("other.db")) << "not a store";
    EXPECT_EQ(ZebStoreBackup(Path("other.db").c_str(), Path("b.zeb").c_str(), nullptr, nullptr, nullptr, 0),
              MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(ZebStoreBackup(Path("test.zeb").c_str(), (Path("gone") + "/b.zeb").c_str(), nullptr, nullptr, nullptr, 0),
              MAPI_E_NO_ACCESS);
    EXPECT_FALSE(StoreFile::Exists(Path("b.zeb")));
}

TEST(StoreVersion, NamesTheProviderAndItsEngine)
{
    EXPECT_TRUE(std::regex_match(ZebStoreVersion(), std::regex("zebstore [0-9.]+ \\(SQLite [0-9.]+\\)")))
        << ZebStoreVersion();
    EXPECT_NE(std::string(ZebStoreVersion()).find(sqlite3_libversion()), std::string::npos);
}

// The log is emptied by the call itself: while somebody else has the store open, closing it does not.
TEST_F(RepairTest, AFileIsCompactedWithReports)
{
    Store().Connection().Db().Execute("CREATE TABLE rows AS WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 "
                                      "FROM n WHERE i < 100000) SELECT i FROM n");
    std::vector<MessageId> gone;
    for (int i = 0; i < 20; ++i)
    {
        gone.push_back(Store().Messages().Create({Inbox, false}, Whole("gone")));
    }
    Store().Messages().Delete(gone);
    Store().Connection().Db().Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    const auto before = std::filesystem::file_size(Path("test.zeb"));
    Reported reported;
    EXPECT_EQ(ZebStoreCompact(Path("test.zeb").c_str(), Export::Take, &reported, nullptr, 0), S_OK);
    EXPECT_GT(reported.steps, 0);
    EXPECT_LT(std::filesystem::file_size(Path("test.zeb")), before);
    EXPECT_EQ(std::filesystem::file_size(Path("test.zeb-wal")), 0u);
    Store().Connection().Db().Execute("DROP TABLE rows");
}

} // namespace
} // namespace zebstore::test
