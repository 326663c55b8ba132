// That damage to a store's file is seen by whoever reads what is damaged, and by the check of the whole file.
#include "tests/zebstore/storage/Storage.h"

#include "zebstore/base/Guard.h"
#include "zebstore/storage/AddressStorage.h"
#include "zebstore/storage/Checksum.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/tables/TableView.h"

#include <filesystem>
#include <fstream>

namespace zebstore::test
{
namespace
{

TEST(Checksum, IsTheOneThatXxhashPublishes)
{
    EXPECT_EQ(Checksum({}), 0x2D06800538D394C2u);
}

class ChecksumTest : public StorageTest
{
protected:
    void TearDown() override
    {
        m_store.reset(); // damaged on purpose: no check of the whole file
        EXPECT_EQ(g_liveBuffers.load(), m_buffers);
    }

    /// Inverts the lowest bit of one byte of a blob, counted from 1.
    void Flip(const std::string& table, const std::string& column, const std::string& where, size_t byte)
    {
        Database& database = Store().Connection().Db();
        std::string bytes;
        {
            Query query(database, "SELECT " + column + " FROM " + table + " WHERE " + where);
            ASSERT_TRUE(query.Step());
            bytes = query.Bytes(0);
        }
        ASSERT_LE(byte, bytes.size());
        bytes[byte - 1] = static_cast<char>(bytes[byte - 1] ^ 1);
        Query update(database, "UPDATE " + table + " SET " + column + "=? WHERE " + where);
        update.BindBlob(1, bytes).Run();
    }
    size_t Length(const std::string& table, const std::string& column, const std::string& where)
    {
        Query query(Store().Connection().Db(), "SELECT length(" + column + ") FROM " + table + " WHERE " + where);
        return query.Step() ? static_cast<size_t>(query.Number(0)) : 0;
    }
    std::string Problems()
    {
        std::string all;
        for (const std::string& problem : Store().CheckWhole())
        {
            all += problem + "\n";
        }
        return all;
    }
    MessageId Full(size_t bodySize)
    {
        MessageContent content = Mail("subject");
        content.properties.SetText(PR_BODY_W, std::string(bodySize, 'b'));
        content.recipients = std::vector<PropertySet>{Named("Ada")};
        AttachmentEdit edit;
        edit.properties.SetBinary(PR_ATTACH_DATA_BIN, "attached bytes", 14);
        content.attachments.push_back(edit);
        return Store().Messages().Create({Inbox, false}, content);
    }
    std::vector<RowKey> RowsOfInbox(LONG count)
    {
        TableView view(MakeContentsRows(m_store, {Inbox, false}, nullptr));
        return view.Take(count, true);
    }
    HRESULT ReadSubjects()
    {
        return CodeOf([&]
        {
            const auto rows = MakeContentsRows(m_store, {Inbox, false}, nullptr);
            const std::vector<RowKey> keys = rows->KeysAfter(std::nullopt, 10);
            rows->Read(keys.data(), keys.size(), [](size_t, const ValueSource& values) { values.Find(PR_SUBJECT_W); });
        });
    }
    HRESULT ReadAll(const LargeValue& value, size_t step = 100000)
    {
        return CodeOf([&]
        {
            std::string bytes(step, '\0');
            for (std::uint64_t at = 0; size_t count = value.Read(at, &bytes[0], step);)
            {
                at += count;
            }
        });
    }
};

TEST_F(ChecksumTest, AMessagesFlippedByteIsSeen)
{
    const MessageId message = Full(200);
    const std::string where = "id=" + std::to_string(message);
    const size_t length = Length("message", "props", where);
    ASSERT_GT(length, 200u);
    for (size_t byte = 1; byte <= length; ++byte)
    {
        Flip("message", "props", where, byte);
        std::string text;
        ASSERT_EQ(CodeOf([&] { Store().Messages().Load(message); }, &text), MAPI_E_CORRUPT_DATA) << byte;
        ASSERT_NE(text.find("message " + std::to_string(message)), std::string::npos) << text;
        ASSERT_NE(text.find("test.zeb"), std::string::npos) << text;
        ASSERT_EQ(ReadSubjects(), MAPI_E_CORRUPT_DATA) << byte;
        ASSERT_EQ(ReadSubjects(), MAPI_E_CORRUPT_DATA) << byte << " again";
        if (byte % 50 == 1)
        {
            ASSERT_NE(Problems().find("message " + std::to_string(message) + ": its properties"), std::string::npos)
                << byte;
        }
        Flip("message", "props", where, byte);
    }
    EXPECT_EQ(Problems(), "");
    EXPECT_EQ(ReadSubjects(), S_OK);
}

TEST_F(ChecksumTest, ATableVerifiesEachRowOnce)
{
    const MessageId first = Full(200);
    const MessageId second = Full(200);
    EXPECT_EQ(ReadSubjects(), S_OK);
    const std::string where = "id=" + std::to_string(first);
    Flip("message", "props", where, Length("message", "props", where));
    EXPECT_EQ(ReadSubjects(), S_OK);
    EXPECT_EQ(CodeOf([&] { Store().Messages().Load(first); }), MAPI_E_CORRUPT_DATA);
    EXPECT_EQ(CodeOf([&] { Store().Messages().Load(second); }), S_OK);
    EXPECT_NE(Problems(), "");

    Reopen();
    EXPECT_EQ(ReadSubjects(), MAPI_E_CORRUPT_DATA);
}

TEST_F(ChecksumTest, AnotherObjectsFlippedByteIsSeen)
{
    const MessageId message = Full(200);
    const AddressStorage book(m_store);
    const AddressId ada = book.Create(MAPI_MAILUSER, Named("Ada"));
    book.SaveProperties(Named("Book"));
    const struct
    {
        const char* table;
        const char* where;
        const char* owner;
        std::function<void()> read;
    } cases[] = {
        {"recipient", "1", "a recipient of message", [&] { Store().Recipients().Load(message); }},
        {"attachment", "1", "attachment 0 of message", [&] { Store().Attachments().Load(message, 0); }},
        {"folder", "id=3", "folder 3", [&] { Store().Folders().Properties(Inbox); }},
        {"store", "1", "the store", [&] { Store().Properties(); }},
        {"address", "1", "address book entry 1", [&] { book.Load(ada); }},
        {"directory", "1", "the address book", [&] { book.Properties(); }},
    };
    for (const auto& each : cases)
    {
        const size_t last = Length(each.table, "props", each.where) - 10;
        Flip(each.table, "props", each.where, last);
        EXPECT_EQ(CodeOf(each.read), MAPI_E_CORRUPT_DATA) << each.table;
        EXPECT_NE(Problems().find(each.owner), std::string::npos) << each.table << "\n" << Problems();
        Flip(each.table, "props", each.where, last);
        EXPECT_EQ(CodeOf(each.read), S_OK) << each.table;
    }
    EXPECT_EQ(Problems(), "");
}

TEST_F(ChecksumTest, LargeValuesFlippedBytesAreSeen)
{
    const MessageId message = Full(100000); // 200,000 bytes in a stream: four pieces
    const LargeValuePtr body = Store().Messages().Load(message).properties.Large(PR_BODY_W);
    ASSERT_TRUE(body);
    EXPECT_EQ(ReadAll(*body), S_OK);
    Flip("chunk", "bytes", "id=(SELECT max(id) FROM chunk)", 3);
    for (const size_t step : {size_t(100000), size_t(1000)})
    {
        const LargeValuePtr damaged = Store().Messages().Load(message).properties.Large(PR_BODY_W);
        EXPECT_EQ(ReadAll(*damaged, step), MAPI_E_CORRUPT_DATA) << step;
    }
    EXPECT_EQ(CodeOf([&] { Store().Messages().Load(message).properties.Text(PR_BODY_W); }), MAPI_E_CORRUPT_DATA);
    EXPECT_NE(Problems().find("its large value 1 does not match its checksum"), std::string::npos) << Problems();
}

TEST_F(ChecksumTest, ExchangedPiecesAreSeen)
{
    const MessageId message = Full(100000);
    MessageContent other = Mail("other");
    other.properties.SetText(PR_BODY_W, std::string(100000, 'c'));
    Store().Messages().Create({Inbox, false}, other);
    Store().Connection().Db().Execute(
        "CREATE TEMP TABLE first AS SELECT id, bytes, sum FROM chunk WHERE (id >> 24)=1;"
        "UPDATE chunk SET (bytes, sum)=(SELECT o.bytes, o.sum FROM chunk o WHERE o.id=chunk.id+(1<<24)) "
        "WHERE (id >> 24)=1");
    EXPECT_EQ(CodeOf([&] { Store().Messages().Load(message).properties.Text(PR_BODY_W); }), MAPI_E_CORRUPT_DATA);
    EXPECT_NE(Problems().find("checksum"), std::string::npos) << Problems();
}

TEST_F(ChecksumTest, ColumnsAreComparedWithProperties)
{
    const MessageId message = Full(10);
    for (const char* change : {"subject='other'", "subject=NULL", "sender='x'", "class='ipm'", "delivered=5",
                               "submitted=5", "modified=5", "size=size+1", "flags=flags|64", "parts=parts|8"})
    {
        Store().Connection().Db().Execute("BEGIN");
        Store().Connection().Db().Execute(("UPDATE message SET " + std::string(change)).c_str());
        EXPECT_NE(Problems().find("message " + std::to_string(message) +
                                  ": what tables sort and restrict by does not match its properties"),
                  std::string::npos)
            << change << "\n"
            << Problems();
        Store().Connection().Db().Execute("ROLLBACK");
    }
    EXPECT_EQ(Problems(), "");
}

TEST_F(ChecksumTest, ADamagedMessageCanBeDeleted)
{
    const MessageId whole = Full(9000);
    const MessageId damaged = Full(9000);
    Flip("message", "props", "id=" + std::to_string(damaged), 40);
    EXPECT_EQ(Store().Messages().Delete({damaged}), 1u);
    EXPECT_EQ(Store().Messages().Load(whole).properties.Text(PR_BODY_W), std::string(9000, 'b'));
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 1u);
}

TEST_F(ChecksumTest, LostMessagesAreNoEmptyFolder)
{
    for (int i = 0; i < 20; ++i)
    {
        Store().Messages().Create({Inbox, false}, Mail("lost"));
    }
    const auto restricted = [&]
    {
        SPropValue value = LongValue(PR_MESSAGE_FLAGS, 0);
        SRestriction source{};
        source.rt = RES_PROPERTY;
        source.res.resProperty = {RELOP_EQ, PR_MESSAGE_FLAGS, &value};
        TableView view(MakeContentsRows(m_store, {Inbox, false}, nullptr));
        view.Restrict(std::make_unique<Restriction>(source));
        return view.Take(50, true);
    };
    EXPECT_EQ(restricted().size(), 20u);
    EXPECT_EQ(RowsOfInbox(50).size(), 20u);
    Store().Connection().Db().Execute("DELETE FROM message");
    std::string text;
    EXPECT_EQ(CodeOf([&] { RowsOfInbox(50); }, &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("only 0 of 20 messages of folder 3 can be read"), std::string::npos) << text;
    EXPECT_NE(text.find("test.zeb"), std::string::npos) << text;
    EXPECT_EQ(CodeOf([&] { RowsOfInbox(-1); }), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(CodeOf([&] { restricted(); }), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(CodeOf([&] { Store().Messages().In({Inbox, false}); }), MAPI_E_CORRUPT_STORE);
}

TEST_F(ChecksumTest, PartialLossIsSeenAtEnd)
{
    for (int i = 0; i < 20; ++i)
    {
        Store().Messages().Create({Inbox, false}, Mail("lost"));
    }
    Store().Connection().Db().Execute("DELETE FROM message WHERE id % 2");
    TableView view(MakeContentsRows(m_store, {Inbox, false}, nullptr));
    EXPECT_EQ(view.Take(10, true).size(), 10u);
    EXPECT_EQ(CodeOf([&] { view.Take(10, true); }), MAPI_E_CORRUPT_STORE);
}

TEST_F(ChecksumTest, LostRecipientsAndAttachmentsAreSeen)
{
    const MessageId message = Full(10);
    EXPECT_TRUE(Store().Attachments().Has(message, 0));
    EXPECT_FALSE(Store().Attachments().Has(message, 1));
    Store().Connection().Db().Execute("DELETE FROM recipient; DELETE FROM attachment");
    EXPECT_EQ(CodeOf([&] { Store().Recipients().Load(message); }), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(CodeOf([&] { Store().Attachments().Numbers(message); }), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(CodeOf([&] { Store().Attachments().Has(message, 0); }), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(Store().Messages().Delete({message}), 1u);
}

// A page of the file that says it has no rows: the database itself takes that for an empty table.
TEST_F(ChecksumTest, AnEmptiedPageIsSeen)
{
    Full(10);
    std::int64_t page = 0;
    {
        Query query(Store().Connection().Db(), "SELECT rootpage FROM sqlite_schema WHERE name='message'");
        ASSERT_TRUE(query.Step());
        page = query.Number(0);
    }
    m_store.reset();
    {
        std::fstream file(Path("test.zeb"), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp((page - 1) * 4096 + 3);
        file.write("\0\0", 2);
    }
    m_store = StoreFile::Open(Path("test.zeb"), {});
    EXPECT_NE(CodeOf([&] { RowsOfInbox(50); }), S_OK);
    EXPECT_NE(Problems(), "");
}

// A page that points to a row which would end beyond it.
TEST_F(ChecksumTest, ADamagedPageIsSeen)
{
    Full(10);
    std::int64_t page = 0;
    {
        Query query(Store().Connection().Db(), "SELECT rootpage FROM sqlite_schema WHERE name='message'");
        ASSERT_TRUE(query.Step());
        page = query.Number(0);
    }
    m_store.reset();
    {
        constexpr char nearTheEnd[] = {0x0F, static_cast<char>(0xFD)};
        constexpr int leafHeader = 8;
        std::fstream file(Path("test.zeb"), std::ios::binary | std::ios::in | std::ios::out);
        file.seekp((page - 1) * 4096 + leafHeader);
        file.write(nearTheEnd, 2);
    }
    m_store = StoreFile::Open(Path("test.zeb"), {});
    std::string text;
    EXPECT_EQ(CodeOf([&] { RowsOfInbox(50); }, &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("is damaged or truncated"), std::string::npos) << text;
}

// Each byte of a message's text and of its attachment, where it lies in the file.
TEST_F(ChecksumTest, TheFilesFlippedByteIsSeen)
{
    const std::string body = "the text of the body, in the row";
    MessageContent content = Mail("subject");
    content.properties.SetText(PR_BODY_W, body);
    AttachmentEdit edit;
    const std::string attached = "<begin>" + std::string(30000, 'x') + "<middle>" + std::string(40000, 'x') + "<end>";
    edit.properties.SetBinary(PR_ATTACH_DATA_BIN, attached.data(), attached.size());
    content.attachments.push_back(edit);
    const MessageId message = Store().Messages().Create({Inbox, false}, content);
    m_store.reset();
    std::string whole;
    {
        std::ifstream file(Path("test.zeb"), std::ios::binary);
        whole.assign(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
    }
    const std::pair<std::string, size_t> places[] = {
        {body, 0}, {body, 20}, {"<begin>", 0}, {"<middle>", 3}, {"<end>", 0}};
    for (const auto& place : places)
    {
        // Everywhere: pages keep bytes of what they held before.
        std::string damaged = whole;
        size_t flipped = 0;
        for (size_t at = whole.find(place.first); at != std::string::npos; at = whole.find(place.first, at + 1))
        {
            char& byte = damaged[at + place.second];
            byte = static_cast<char>(byte ^ 0x20);
            ++flipped;
        }
        ASSERT_GT(flipped, 0u) << place.first;
        std::ofstream(Path("test.zeb"), std::ios::binary)
            .write(damaged.data(), static_cast<std::streamsize>(damaged.size()));
        m_store = StoreFile::Open(Path("test.zeb"), {});
        EXPECT_NE(CodeOf(
                      [&]
        {
            Store().Messages().Load(message).properties.Text(PR_BODY_W);
            Store().Attachments().Load(message, 0).Binary(PR_ATTACH_DATA_BIN);
        }),
                  S_OK)
            << place.first << place.second;
        EXPECT_NE(Problems(), "") << place.first << place.second;
        m_store.reset();
    }
}

TEST_F(ChecksumTest, OlderFilesGetChecksumsOnOpening)
{
    for (const int version : {3, 2, 1})
    {
        const std::string path = Path("older" + std::to_string(version) + ".zeb");
        m_store = StoreFile::Create(path, "Older", {});
        const MessageId shorter = Full(100);
        const MessageId large = Full(100000);
        MakeOlder(Store(), version);
        m_store.reset();
        m_store = StoreFile::Open(path, {});
        EXPECT_EQ(Store().Version(), SchemaVersion);
        EXPECT_EQ(Problems(), "") << version;
        EXPECT_EQ(Store().Messages().Load(large).properties.Text(PR_BODY_W), std::string(100000, 'b'));
        Query unsealed(Store().Connection().Db(),
                       "SELECT (SELECT count(*) FROM chunk WHERE sum IS NULL) + (SELECT count(*) FROM message "
                       "WHERE substr(props, 1, 1)=x'01') + (SELECT count(*) FROM recipient WHERE "
                       "substr(props, 1, 1)=x'01') + (SELECT count(*) FROM attachment WHERE substr(props, 1, "
                       "1)=x'01') + (SELECT count(*) FROM folder WHERE substr(props, 1, 1)=x'01')");
        ASSERT_TRUE(unsealed.Step());
        EXPECT_EQ(unsealed.Number(0), 0) << version;
        EXPECT_EQ(Store().Folders().Times(Inbox).created, 0) << version;
        Store().Folders().SaveProperties(Inbox, Store().Folders().Properties(Inbox));
        EXPECT_EQ(Store().Folders().Times(Inbox).created, 0) << "of a folder that was there before";
        EXPECT_GT(Store().Folders().Times(Inbox).modified, 0) << version;
        Flip("message", "props", "id=" + std::to_string(shorter), 60);
        EXPECT_EQ(CodeOf([&] { Store().Messages().Load(shorter); }), MAPI_E_CORRUPT_DATA);
    }
}

TEST_F(ChecksumTest, TheTraceNamesAnUpgrade)
{
    Switches switches;
    switches.traceFile = Path("trace.txt");
    ApplySwitches(switches);
    MakeOlder(Store(), 3);
    m_store.reset();
    for (int i = 0; i < 2; ++i)
    {
        m_store = StoreFile::Open(Path("test.zeb"), {});
        m_store.reset();
    }
    ApplySwitches({});
    std::ifstream file(std::filesystem::u8path(switches.traceFile));
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(text, "note: the store file '" + Path("test.zeb") +
                        "' is of an older version: it is upgraded, which reads and writes all of it\n")
        << "reported once: the second opening finds it upgraded";
    m_store = StoreFile::Open(Path("test.zeb"), {});
}

TEST_F(ChecksumTest, AFileWithoutChecksumsIsRead)
{
    const MessageId message = Full(100000);
    MakeOlder(Store(), 3);
    m_store.reset();
    StoreFile::OpenOptions options;
    options.readOnly = true;
    m_store = StoreFile::Open(Path("test.zeb"), options);
    EXPECT_EQ(Store().Version(), 3);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_BODY_W), std::string(100000, 'b'));
    EXPECT_EQ(Store().Recipients().Load(message).size(), 1u);
    EXPECT_EQ(Store().Folders().Times(Inbox).modified, 0);
    EXPECT_EQ(Problems(), "");
}

TEST_F(ChecksumTest, UnreadableBeforeAnUpgradeStaysSo)
{
    const MessageId message = Full(100);
    MakeOlder(Store(), 3);
    Store().Connection().Db().Execute("UPDATE message SET props=x'0100FF00'");
    m_store.reset();
    m_store = StoreFile::Open(Path("test.zeb"), {});
    EXPECT_EQ(CodeOf([&] { Store().Messages().Load(message); }), MAPI_E_CORRUPT_DATA);
    EXPECT_NE(Problems().find("its properties cannot be read"), std::string::npos);
}

} // namespace
} // namespace zebstore::test
