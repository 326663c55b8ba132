// Recipients and attachments of messages through the library alone.
#include "tests/integration/Host.h"
#include "tests/support/doubles/ByteStream.h"

#include <string>
#include <vector>

namespace zeb::test
{
namespace
{

class MessageParts : public StoreHost
{
protected:
    CZebMessage Saved()
    {
        CZebPropValArray properties(1);
        properties[PR_SUBJECT_W] = ZEBW("parts");
        return Inbox().CreateMessage(properties, true, 0);
    }
    /// Saves the message, and opens it from the store.
    CZebMessage Again(CZebMessage& message)
    {
        message.SaveChanges(KEEP_OPEN_READWRITE);
        return Opened<CZebMessage>(message.GetEntryID());
    }
    static std::string ContentOf(CZebMessage& message, ULONG number)
    {
        Journal journal;
        ByteStream content(journal);
        message.OpenAttachment(number).SaveTo(&content);
        return content.m_bytes;
    }
    static std::vector<std::string> Names(CZebTable table, ULONG tag)
    {
        std::vector<std::string> names;
        for (CZebRow row : table.RowsOf(1, &tag))
        {
            names.emplace_back(row[tag].StringUtf8().GetString());
        }
        return names;
    }
};

} // namespace

TEST_F(MessageParts, RecipientsAreAddedReadAndRemoved)
{
    CZebMessage message = Saved();
    message.AddRecipient(MAPI_TO, ZEBW("Ada \u03B1"), ZEBW("ada@example.org"));
    message.AddRecipient(MAPI_CC, ZEBW("Grace"), nullptr);
    message.AddRecipient(MAPI_BCC, nullptr, ZEBW("/o=Org/cn=boris"), ZEBW("EX"));
    CZebMessage again = Again(message);
    CZebRowSet rows;
    again.GetRecipients(rows);
    ASSERT_EQ(rows.Count(), 3u);
    EXPECT_EQ(rows[0][PR_RECIPIENT_TYPE].operator LONG(), MAPI_TO);
    EXPECT_STREQ(rows[0][PR_DISPLAY_NAME_W].StringUtf8(), "Ada \xCE\xB1");
    EXPECT_STREQ(rows[0][PR_ADDRTYPE_W].StringUtf8(), "SMTP");
    EXPECT_STREQ(rows[0][PR_EMAIL_ADDRESS_W].StringUtf8(), "ada@example.org");
    EXPECT_FALSE(rows[1].hasRealValue(PR_EMAIL_ADDRESS_W));
    EXPECT_FALSE(rows[1].hasRealValue(PR_ENTRYID));
    EXPECT_STREQ(rows[2][PR_DISPLAY_NAME_W].StringUtf8(), "/o=Org/cn=boris");
    EXPECT_EQ(again.GetStringPropW(PR_DISPLAY_CC_W), CStringW(ZEBW("Grace")));

    again.RemoveRecipient(rows[1][PR_ROWID]);
    EXPECT_EQ(FailureOf([&] { again.RemoveRecipient(99); }).context, "RemoveRecipient recipient 99");
    CZebMessage last = Again(again);
    EXPECT_EQ(Names(last.GetRecipientTable(), PR_DISPLAY_NAME_W),
              (std::vector<std::string>{"Ada \xCE\xB1", "/o=Org/cn=boris"}));
}

TEST_F(MessageParts, AnAddressIsAOneOff)
{
    CZebMessage message = Saved();
    message.AddRecipient(MAPI_TO, ZEBW("Ada"), ZEBW("ada@example.org"));
    CZebRowSet rows;
    message.GetRecipients(rows);
    const CZebBinary id(rows[0][PR_ENTRYID].operator const SBinary&());
    const std::string dump = Zeb_DumpEntryID(id.String()).GetString();
    EXPECT_NE(dump.find("eidtOneOff"), std::string::npos) << dump;
    for (const char* text : {"Ada", "SMTP", "ada@example.org"})
    {
        EXPECT_NE(dump.find(text), std::string::npos) << dump;
    }
}

TEST_F(MessageParts, FilesAreAttachedAndSavedElsewhere)
{
    CZebMessage message = Saved();
    const std::string large(300'000, 'x');
    const ULONG first = message.AddAttachment(ZEBW("\u03B1.txt"), "ab", 2);
    const ULONG second = message.AddAttachment(ZEBW("large.bin"), large.data(), static_cast<ULONG>(large.size()));
    const ULONG third = message.AddAttachment(ZEBW("empty"), nullptr, 0);
    CZebMessage again = Again(message);
    CZebRowSet rows;
    again.GetAttachments(rows);
    ASSERT_EQ(rows.Count(), 3u);
    EXPECT_EQ(rows[0][PR_ATTACH_NUM].operator ULONG(), first);
    EXPECT_STREQ(rows[0][PR_ATTACH_LONG_FILENAME_W].StringUtf8(), "\xCE\xB1.txt");
    EXPECT_EQ(rows[1][PR_ATTACH_METHOD].operator LONG(), static_cast<LONG>(ATTACH_BY_VALUE));
    EXPECT_GE(rows[1][PR_ATTACH_SIZE].operator LONG(), 300'000);
    EXPECT_EQ(ContentOf(again, first), "ab");
    EXPECT_EQ(ContentOf(again, second), large);
    EXPECT_EQ(ContentOf(again, third), "");

    // From the stream of one attachment into that of another.
    CZebAttachment source = again.OpenAttachment(second);
    const ULONG copied = again.AddAttachment(ZEBW("copy.bin"), source.OpenProperty(PR_ATTACH_DATA_BIN, 0).Get());
    CZebAttachment target = again.CreateAttachment();
    target.SetFileName(ZEBW("saved.bin"));
    source.SaveTo(target.OpenProperty(PR_ATTACH_DATA_BIN, MAPI_CREATE | MAPI_MODIFY).Get());
    target.SaveChanges(KEEP_OPEN_READWRITE);
    CZebMessage last = Again(again);
    EXPECT_EQ(ContentOf(last, copied), large);
    EXPECT_EQ(Names(last.GetAttachmentTable(), PR_ATTACH_LONG_FILENAME_W),
              (std::vector<std::string>{"\xCE\xB1.txt", "large.bin", "empty", "copy.bin", "saved.bin"}));
}

TEST_F(MessageParts, AContentTakesTheFormersPlace)
{
    CZebMessage message = Saved();
    const ULONG number = message.AddAttachment(ZEBW("a.txt"), "a long content", 14);
    CZebAttachment attachment = message.OpenAttachment(number);
    attachment.SetContent("ab", 2);
    attachment.SaveChanges(KEEP_OPEN_READWRITE);
    CZebMessage again = Again(message);
    EXPECT_EQ(ContentOf(again, number), "ab");
}

TEST_F(MessageParts, AttachmentsAreDeleted)
{
    CZebMessage message = Saved();
    const ULONG first = message.AddAttachment(ZEBW("a"), "a", 1);
    message.AddAttachment(ZEBW("b"), "b", 1);
    message.DeleteAttachment(first);
    CZebMessage again = Again(message);
    EXPECT_EQ(Names(again.GetAttachmentTable(), PR_ATTACH_LONG_FILENAME_W), std::vector<std::string>{"b"});
    EXPECT_EQ(FailureOf([&] { again.OpenAttachment(first); }).context,
              "OpenAttachment attachment " + std::to_string(first));
}

TEST_F(MessageParts, AMessageHoldsAMessage)
{
    CZebMessage message = Saved();
    {
        CZebAttachment attachment = message.CreateAttachment();
        CZebMessage inner = attachment.CreateMessage();
        CZebPropValArray properties(1);
        properties[PR_SUBJECT_W] = ZEBW("inner");
        inner.SetProps(properties, false, nullptr);
        inner.AddRecipient(MAPI_TO, ZEBW("Ada"), ZEBW("ada@example.org"));
        inner.AddAttachment(ZEBW("deep.txt"), "deep", 4);
        inner.SaveChanges(KEEP_OPEN_READWRITE);
        attachment.SaveChanges(KEEP_OPEN_READWRITE);
    }
    CZebMessage again = Again(message);
    CZebAttachment attachment = again.OpenAttachment(0);
    EXPECT_EQ(attachment.GetObjectType(), static_cast<ULONG>(MAPI_ATTACH));
    CZebMessage inner = attachment.OpenMessage();
    EXPECT_EQ(inner.GetStringPropW(PR_SUBJECT_W), CStringW(ZEBW("inner")));
    EXPECT_EQ(Names(inner.GetRecipientTable(), PR_EMAIL_ADDRESS_W), std::vector<std::string>{"ada@example.org"});
    EXPECT_EQ(ContentOf(inner, 0), "deep");
    EXPECT_EQ(
        FailureOf([&] { again.AddAttachment(ZEBW("x"), attachment.OpenProperty(PR_ATTACH_DATA_BIN, 0).Get()); }).result,
        MAPI_E_NOT_FOUND);
}

TEST_F(MessageParts, RowsComeInBatchesInOrder)
{
    CZebFolder inbox = Inbox();
    for (int i = 0; i < 230; ++i)
    {
        CZebPropValArray properties(1);
        properties[PR_SUBJECT_W].SetUtf8(("subject " + std::to_string(1000 + i)).c_str());
        inbox.CreateMessage(properties, true, 0);
    }
    CZebTable contents = Contents();
    contents.SortTable(CZebSortOrder(PR_SUBJECT_W, TABLE_SORT_DESCEND));
    int next = 1229;
    for (CZebRow row : contents.Rows({PR_ENTRYID, PR_SUBJECT_W}))
    {
        EXPECT_STREQ(row[PR_SUBJECT_W].StringUtf8(), ("subject " + std::to_string(next--)).c_str());
        EXPECT_TRUE(row.hasRealValue(PR_ENTRYID));
    }
    EXPECT_EQ(next, 999);
}

TEST_F(MessageParts, AHostsNamedPropertyIsFound)
{
    const GUID set = {0x12345678, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
    CZebMessage message = Saved();
    const ULONG color = message.GetNamedTag(set, ZEBW("Color"), PT_UNICODE);
    const ULONG weight = message.GetNamedTag(set, 0x8502, PT_DOUBLE);
    EXPECT_EQ(message.GetNamedTag(set, ZEBW("Colour"), PT_UNICODE, false), 0u);
    CZebPropValArray properties(2);
    properties[color].SetUtf8("r\xC3\xB6t");
    properties[weight] = 2.5;
    message.SetProps(properties, true, nullptr);

    CZebMessage again = Again(message);
    CZebPropValArray read;
    again.GetProps(read, 2, again.GetNamedTag(set, ZEBW("Color"), PT_UNICODE, false), weight);
    EXPECT_STREQ(read[color].StringUtf8(), "r\xC3\xB6t");
    EXPECT_EQ(read[weight].GetDouble(), 2.5);
    GUID itsSet = {};
    LONG id = 0;
    CStringW name;
    ASSERT_TRUE(again.GetNameOfTag(color, itsSet, id, name));
    EXPECT_TRUE(itsSet == set);
    EXPECT_EQ(name, CStringW(ZEBW("Color")));
    ASSERT_TRUE(again.GetNameOfTag(weight, itsSet, id, name));
    EXPECT_EQ(id, 0x8502);
    EXPECT_TRUE(name.IsEmpty());
    EXPECT_FALSE(again.GetNameOfTag(PROP_TAG(PT_LONG, 0x8FFF), itsSet, id, name));
}

TEST_F(MessageParts, ValuesOfEveryKindComeBack)
{
    CZebMessage message = Saved();
    CArray<double> numbers;
    numbers.Add(1.5);
    numbers.Add(-2.25);
    CArray<GUID> sets;
    sets.Add(IID_IMessage);
    CZebPropValArray properties(4);
    properties[PROP_TAG(PT_CLSID, 0x6701)] = IID_IMessage;
    properties[PROP_TAG(PT_CURRENCY, 0x6702)].SetCurrency(12'345);
    properties[PROP_TAG(PT_MV_DOUBLE, 0x6703)] = numbers;
    properties[PROP_TAG(PT_MV_CLSID, 0x6704)] = sets;
    message.SetProps(properties, true, nullptr);
    CZebMessage again = Again(message);
    CZebPropValArray read;
    again.GetProps(read, 4, PROP_TAG(PT_CLSID, 0x6701), PROP_TAG(PT_CURRENCY, 0x6702), PROP_TAG(PT_MV_DOUBLE, 0x6703),
                   PROP_TAG(PT_MV_CLSID, 0x6704));
    EXPECT_TRUE(read.GetAt(0).GetGuid() == IID_IMessage);
    EXPECT_EQ(read.GetAt(1).GetCurrency(), 12'345);
    read.GetAt(2).GetMV(numbers);
    ASSERT_EQ(numbers.GetSize(), 2);
    EXPECT_EQ(numbers[1], -2.25);
    read.GetAt(3).GetMV(sets);
    ASSERT_EQ(sets.GetSize(), 1);
    EXPECT_TRUE(sets[0] == IID_IMessage);
}

TEST_F(MessageParts, TheLogReachesTheHostsSink)
{
    std::string lines;
    Zeb_SetLogSink([](void* context, int, const char*, const char* text)
    { static_cast<std::string*>(context)->append(text).append("\n"); }, &lines);
    EXPECT_EQ(FailureOf([&] { Saved().OpenAttachment(77); }).result, MAPI_E_NOT_FOUND);
    Zeb_SetLogSink(nullptr, nullptr);
    EXPECT_EQ(lines.find("THROW Exception 0x8004010f"), 0u) << lines;
}

TEST_F(MessageParts, ACheckedBindingSeesNewMessages)
{
    CZebCachedTable list(Contents());
    list.BindChecked();
    EXPECT_EQ(list.GetRowCount(), 0u);
    Saved();
    EXPECT_EQ(list.GetRowCount(), 1u);
    list.Free();
}

} // namespace zeb::test
