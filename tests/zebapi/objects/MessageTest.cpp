// Recipients and attachments of messages: the calls that the operations make, and what fails.
#include "zebapi/Message.h"
#include "ObjectsTest.h"
#include "tests/support/Context.h"
#include "tests/support/doubles/ByteStream.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "zebapi/PROPVALArray.h"

using namespace zeb::test;

namespace
{

class Message : public ObjectsTest
{
protected:
    Message()
    {
        m_object.m_recipients = &m_parts;
        m_object.m_attachments = &m_parts;
        m_object.m_attachment = &m_attachment;
        m_attachment.m_property = &m_stream;
    }
    /// The calls but those of the stream.
    Lines CallsOfObjects()
    {
        Lines lines;
        for (const std::string& line : Calls())
        {
            if (line != "stream: Read()" && line != "stream: Write()")
            {
                lines.push_back(line);
            }
        }
        return lines;
    }

    RecordingMessage m_object{m_journal};
    RecordingAttachment m_attachment{m_journal};
    RowTable m_parts{m_journal, "parts"};
    ByteStream m_stream{m_journal};
    CZebMessage m_message{&m_object};
    CZebAttachment m_wrapped{&m_attachment};
};

const char* const FileProperties = "attachment: SetProps(0x37050003=0x1,0x3707001F=a.txt,0x3001001F=a.txt,"
                                   "0x370B0003=0xFFFFFFFF,problems null)";
const char* const OpenForWriting = "attachment: OpenProperty(0x37010102,IStream,0x2,0x3)";

} // namespace

TEST_F(Message, RecipientsAreReadWithTheirColumns)
{
    m_parts.m_rows = {{{PR_ROWID, 4, ""}}, {{PR_ROWID, 5, ""}}};
    CZebRowSet rows;
    m_message.GetRecipients(rows);
    EXPECT_EQ(Calls(),
              (Lines{"message: GetRecipientTable(0x80000000)",
                     "parts: SetColumns([0x30000003,0xC150003,0x3001001F,0x3002001F,0x3003001F,0xFFF0102],0x0)",
                     "parts: QueryRows(2147483647,0x0)"}));
    ASSERT_EQ(rows.Count(), 2u);
    EXPECT_EQ(rows[1][PR_ROWID].operator LONG(), 5);
}

TEST_F(Message, TablesTakeTheFlagsGiven)
{
    EXPECT_TRUE(m_message.GetRecipientTable(0).IsValid());
    EXPECT_TRUE(m_message.GetAttachmentTable(0).IsValid());
    EXPECT_EQ(Calls(), (Lines{"message: GetRecipientTable(0x0)", "message: GetAttachmentTable(0x0)"}));
    EXPECT_EQ(Thrown([&] { m_message.GetRecipientTable(MAPI_MODIFY); }), MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(Message, SuccessWithoutATableFails)
{
    m_object.m_recipients = nullptr;
    m_object.m_attachments = nullptr;
    EXPECT_EQ(Thrown([&] { m_message.GetRecipientTable(); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(ContextOf([&] { m_message.GetAttachmentTable(); }), "GetAttachmentTable");
}

TEST_F(Message, ARecipientWithAddressIsResolved)
{
    m_message.AddRecipient(MAPI_CC, ZEBW("Ada"), ZEBW("ada@x.org"));
    const Lines calls = Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].substr(0, calls[0].find(",0xFFF0102")),
              "message: ModifyRecipients(0x2,[0xC150003=0x2,0x3001001F=Ada,0x3002001F=SMTP,0x3003001F=ada@x.org");
    // The search key: SMTP:ADA@X.ORG and a terminator.
    EXPECT_NE(calls[0].find(",0x300B0102=534D54503A41444140582E4F524700])"), std::string::npos) << calls[0];
    // Flags, the provider of one-off identifiers, 16-bit texts without rich text, and the three texts.
    EXPECT_NE(calls[0].find(",0xFFF0102=00000000812B1FA4BEA310199D6E00DD010F540200000180"
                            "410064006100000053004D00540050000000610064006100400078002E006F00720067000000,"),
              std::string::npos)
        << calls[0];
}

TEST_F(Message, ARecipientWithoutAddressIsUnresolved)
{
    m_message.AddRecipient(MAPI_TO, ZEBW("Ada"), nullptr);
    m_message.AddRecipient(MAPI_BCC, ZEBW("Ada"), ZEBW(""), nullptr);
    EXPECT_EQ(Calls(), (Lines{"message: ModifyRecipients(0x2,[0xC150003=0x1,0x3001001F=Ada])",
                              "message: ModifyRecipients(0x2,[0xC150003=0x3,0x3001001F=Ada])"}));
}

TEST_F(Message, AnUnnamedRecipientShowsItsAddress)
{
    m_message.AddRecipient(MAPI_TO, nullptr, ZEBW("ada@x.org"));
    EXPECT_NE(Calls().at(0).find("0x3001001F=ada@x.org,"), std::string::npos);
}

TEST_F(Message, ARecipientNeedsNameOrAddress)
{
    EXPECT_EQ(Thrown([&] { m_message.AddRecipient(MAPI_TO, nullptr, nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_message.AddRecipient(MAPI_TO, ZEBW(""), ZEBW("")); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_message.AddRecipient(MAPI_TO, ZEBW("Ada"), ZEBW("a@x"), ZEBW("")); }),
              MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(ContextOf([&] { m_message.AddRecipient(MAPI_TO, ZEBW("Ada"), ZEBW("a@x"), nullptr); }), "AddRecipient");
    EXPECT_EQ(Calls(), Lines{});
}

TEST_F(Message, RecipientsAreAddedInOneCall)
{
    CZebPropValArray one(3), two(1);
    one[PR_DISPLAY_NAME_W] = ZEBW("Ada");
    one[PR_RECIPIENT_TYPE] = MAPI_TO;
    two[PR_DISPLAY_NAME_W] = ZEBW("Grace");
    CZebPropValArray* const both[] = {std::addressof(one), std::addressof(two)};
    m_message.AddRecipients(2, both);
    EXPECT_EQ(Calls(), Lines{"message: ModifyRecipients(0x2,[0x3001001F=Ada,0xC150003=0x1][0x3001001F=Grace])"});
    m_message.AddRecipients(0, nullptr);
    EXPECT_EQ(Calls(), Lines{"message: ModifyRecipients(0x2,)"});
    m_object.Fail("ModifyRecipients", MAPI_E_NO_ACCESS);
    EXPECT_EQ(ContextOf([&] { m_message.AddRecipients(2, both); }), "AddRecipients 2 recipients");
    EXPECT_EQ(Thrown([&] { m_message.AddRecipients(1, nullptr); }), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Message, MessagesAreMarkedReadOrUnread)
{
    m_message.SetReadFlag(0);
    m_message.SetReadFlag(CLEAR_READ_FLAG | SUPPRESS_RECEIPT);
    EXPECT_EQ(Calls(), (Lines{"message: SetReadFlag(0x0)", "message: SetReadFlag(0x5)"}));
    m_object.Fail("SetReadFlag", MAPI_E_NO_ACCESS);
    EXPECT_EQ(ContextOf([&] { m_message.SetReadFlag(0); }), "SetReadFlag");
}

TEST_F(Message, ARecipientIsRemovedByRow)
{
    m_message.RemoveRecipient(3);
    EXPECT_EQ(Calls(), Lines{"message: ModifyRecipients(0x8,[0x30000003=0x3])"});
}

TEST_F(Message, AFailureNamesTheRecipient)
{
    m_object.m_error = "no such recipient";
    m_object.Fail("ModifyRecipients", MAPI_E_NOT_FOUND);
    EXPECT_EQ(ContextOf([&] { m_message.RemoveRecipient(3); }), "RemoveRecipient recipient 3");
    EXPECT_EQ(ContextOf([&] { m_message.AddRecipient(MAPI_TO, ZEBW("Ada"), nullptr); }), "AddRecipient 'Ada'");
    EXPECT_NE(Described([&] { m_message.RemoveRecipient(3); }).find("no such recipient"), std::string::npos);
}

TEST_F(Message, AttachmentsAreReadWithTheirColumns)
{
    m_parts.m_rows = {{{PR_ATTACH_NUM, 7, ""}}};
    CZebRowSet rows;
    m_message.GetAttachments(rows);
    EXPECT_EQ(Calls(),
              (Lines{"message: GetAttachmentTable(0x80000000)",
                     "parts: SetColumns([0xE210003,0x37050003,0xE200003,0x3707001F,0x3704001F,0x3001001F],0x0)",
                     "parts: QueryRows(2147483647,0x0)"}));
    EXPECT_EQ(rows[0][PR_ATTACH_NUM].operator LONG(), 7);
}

TEST_F(Message, AnAttachmentIsOpenedByNumber)
{
    CZebAttachment attachment = m_message.OpenAttachment(7);
    EXPECT_EQ(attachment.GetMAPIType(), static_cast<ULONG>(MAPI_ATTACH));
    EXPECT_EQ(*attachment.GetInterfaceCIID(), IID_IAttachment);
    EXPECT_EQ(m_attachment.References(), 2u);
    m_message.OpenAttachment(8, MAPI_MODIFY);
    EXPECT_EQ(Calls(), (Lines{"message: OpenAttach(0x7,null,0x10)", "message: OpenAttach(0x8,null,0x1)"}));
    m_object.Fail("OpenAttach", MAPI_E_NOT_FOUND);
    EXPECT_EQ(ContextOf([&] { m_message.OpenAttachment(9); }), "OpenAttachment attachment 9");
    EXPECT_EQ(m_attachment.References(), 2u);
}

TEST_F(Message, SuccessWithoutAnAttachmentFails)
{
    m_object.m_attachment = nullptr;
    ULONG number = 99;
    EXPECT_EQ(Thrown([&] { m_message.OpenAttachment(7); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Thrown([&] { m_message.CreateAttachment(&number); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(number, 99u);
}

TEST_F(Message, BytesAreAttachedThroughAStream)
{
    const std::string bytes("a\0b", 3);
    EXPECT_EQ(m_message.AddAttachment(ZEBW("a.txt"), bytes.data(), 3), 7u);
    EXPECT_EQ(m_stream.m_bytes, bytes);
    EXPECT_EQ(CallsOfObjects(), (Lines{"message: CreateAttach(null,0x0)", FileProperties, OpenForWriting,
                                       "stream: Commit(0x0)", "attachment: SaveChanges(0x6)"}));
}

TEST_F(Message, AnEmptyFileIsAttachedToo)
{
    m_message.AddAttachment(ZEBW("a.txt"), nullptr, 0);
    EXPECT_EQ(CallsOfObjects(), (Lines{"message: CreateAttach(null,0x0)", FileProperties, OpenForWriting,
                                       "stream: Commit(0x0)", "attachment: SaveChanges(0x6)"}));
}

TEST_F(Message, StreamsAreAttachedFromTheirPosition)
{
    std::string content = "xx";
    for (int i = 0; i < 100'000; ++i)
    {
        content += static_cast<char>(i % 251);
    }
    ByteStream file(m_journal, content, "file");
    file.m_position = 2;
    file.m_atOnce = 7777;
    m_stream.m_atOnce = 5000;
    EXPECT_EQ(m_message.AddAttachment(ZEBW("a.txt"), &file), 7u);
    EXPECT_EQ(m_stream.m_bytes, content.substr(2));
    EXPECT_EQ(file.References(), 0u);
}

TEST_F(Message, AnAttachmentNeedsNameAndBytes)
{
    EXPECT_EQ(Thrown([&] { m_message.AddAttachment(nullptr, "a", 1); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_message.AddAttachment(ZEBW(""), &m_stream); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_message.AddAttachment(ZEBW("a.txt"), nullptr, 1); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_message.AddAttachment(ZEBW("a.txt"), nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_wrapped.SetContent(nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_wrapped.SetContent(nullptr, 1); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_wrapped.SetFileName(nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_wrapped.SaveTo(nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Calls(), Lines{});
}

TEST_F(Message, AnUnwritableAttachmentIsNotSaved)
{
    m_stream.Fail("Write", STG_E_ACCESSDENIED);
    EXPECT_EQ(ContextOf([&] { m_message.AddAttachment(ZEBW("a.txt"), "a", 1); }), "SetContent 'a.txt'");
    EXPECT_EQ(Calls().back(), "stream: Write()");
    EXPECT_EQ(m_attachment.References(), 1u);
    EXPECT_EQ(m_stream.References(), 0u);
}

TEST_F(Message, AStreamTakingNothingIsFull)
{
    m_stream.m_atOnce = 0;
    EXPECT_EQ(Thrown([&] { m_wrapped.SetContent("a", 1); }), STG_E_MEDIUMFULL);
}

TEST_F(Message, AStreamTakingMoreThanGivenIsRefused)
{
    class Boasting : public ByteStream
    {
    public:
        using ByteStream::ByteStream;
        HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* written) override
        {
            const HRESULT result = ByteStream::Write(buffer, count, written);
            *written = count + 1;
            return result;
        }
    };
    m_stream.m_bytes = "content";
    Boasting target(m_journal, "", "target");
    EXPECT_EQ(Thrown([&] { m_wrapped.SaveTo(&target); }), STG_E_MEDIUMFULL);
    EXPECT_EQ(target.m_bytes, "content") << "written once";
}

TEST_F(Message, AnUncommittedContentIsAFailure)
{
    m_stream.Fail("Commit", STG_E_ACCESSDENIED);
    EXPECT_EQ(Thrown([&] { m_wrapped.SetContent("a", 1); }), STG_E_ACCESSDENIED);
}

TEST_F(Message, AnAttachmentIsSavedToStreams)
{
    m_stream.m_bytes = std::string(40'000, 'x') + "end";
    m_stream.m_atOnce = 999;
    ByteStream target(m_journal, "before", "target");
    target.m_position = 3;
    target.m_atOnce = 777;
    m_wrapped.SaveTo(&target);
    EXPECT_EQ(target.m_bytes, "bef" + m_stream.m_bytes);
    EXPECT_EQ(Calls().front(), "attachment: OpenProperty(0x37010102,IStream,0x0,0x0)");
}

TEST_F(Message, AttachmentsWithoutContentAreNotSaved)
{
    m_attachment.Fail("OpenProperty", MAPI_E_NOT_FOUND);
    ByteStream target(m_journal, "", "target");
    EXPECT_EQ(Thrown([&] { m_wrapped.SaveTo(&target); }), MAPI_E_NOT_FOUND);
}

TEST_F(Message, AnAttachmentIsDeletedByNumber)
{
    m_message.DeleteAttachment(7);
    EXPECT_EQ(Calls(), Lines{"message: DeleteAttach(0x7,0x0,progress null,0x0)"});
    m_object.Fail("DeleteAttach", MAPI_E_NOT_FOUND);
    EXPECT_EQ(ContextOf([&] { m_message.DeleteAttachment(7); }), "DeleteAttachment attachment 7");
}

TEST_F(Message, AnEmbeddedMessageIsOpened)
{
    RecordingMessage inner(m_journal, "inner");
    inner.m_recipients = &m_parts;
    m_attachment.m_property = &inner;
    {
        CZebMessage message = m_wrapped.OpenMessage();
        EXPECT_EQ(inner.References(), 1u);
        message.GetRecipientTable();
    }
    EXPECT_EQ(inner.References(), 0u);
    m_wrapped.OpenMessage(MAPI_MODIFY);
    EXPECT_EQ(Calls(),
              (Lines{"attachment: OpenProperty(0x3701000D,IMessage,0x0,0x0)", "inner: GetRecipientTable(0x80000000)",
                     "attachment: OpenProperty(0x3701000D,IMessage,0x0,0x1)"}));
}

TEST_F(Message, AnEmbeddedMessageIsCreated)
{
    RecordingMessage inner(m_journal, "inner");
    m_attachment.m_property = &inner;
    m_wrapped.CreateMessage();
    EXPECT_EQ(Calls(), (Lines{"attachment: SetProps(0x37050003=0x5,0x370B0003=0xFFFFFFFF,problems null)",
                              "attachment: OpenProperty(0x3701000D,IMessage,0x0,0x3)"}));
}

TEST_F(Message, SuccessWithoutAnEmbeddedMessageFails)
{
    m_attachment.m_property = nullptr;
    EXPECT_EQ(Thrown([&] { m_wrapped.OpenMessage(); }), MAPI_E_CALL_FAILED);
    m_attachment.Fail("OpenProperty", MAPI_E_INTERFACE_NOT_SUPPORTED);
    EXPECT_EQ(ContextOf([&] { m_wrapped.OpenMessage(); }), "OpenMessage");
}

TEST_F(Message, AnEmptyMessageRaisesComErrors)
{
    CZebMessage none;
    CZebAttachment nothing;
    CZebRowSet rows;
    const auto raises = [](auto&& body) { EXPECT_EQ(Raised(body), E_POINTER); };
    raises([&] { none.GetRecipients(rows); });
    raises([&] { none.AddRecipient(MAPI_TO, ZEBW("Ada"), nullptr); });
    raises([&] { none.RemoveRecipient(1); });
    raises([&] { none.GetAttachments(rows); });
    raises([&] { none.OpenAttachment(1); });
    raises([&] { none.CreateAttachment(); });
    raises([&] { none.AddAttachment(ZEBW("a"), "a", 1); });
    raises([&] { none.DeleteAttachment(1); });
    raises([&] { nothing.SetFileName(ZEBW("a")); });
    raises([&] { nothing.SetContent("a", 1); });
    raises([&] { nothing.SaveTo(&m_stream); });
    raises([&] { nothing.OpenMessage(); });
    raises([&] { nothing.CreateMessage(); });
}
