#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/Database.h"

namespace zebstore::test
{
namespace
{

class MessageTest : public StorageTest
{
protected:
    static MessageContent WithParts()
    {
        MessageContent content = Mail("parts");
        content.recipients = std::vector<PropertySet>{Named("Ann"), Named("Bob")};
        AttachmentEdit file;
        file.number = 0;
        file.properties.SetText(PR_ATTACH_FILENAME_W, "a.txt");
        file.properties.SetEncoded(PR_ATTACH_DATA_BIN, std::string(10000, 'x'));
        content.attachments.push_back(file);
        AttachmentEdit inner;
        inner.number = 3;
        inner.embedded = std::make_shared<MessageContent>(Mail("inner"));
        inner.embedded->recipients = std::vector<PropertySet>{Named("Cid")};
        inner.embedded->attachments.push_back(file);
        content.attachments.push_back(inner);
        return content;
    }
    std::int64_t Rows(const char* table)
    {
        Query query(Store().Connection(), std::string("SELECT count(*) FROM ") + table);
        query.Step();
        return query.Number(0);
    }
    FolderId Other() { return IdOf(StandardFolder::Outbox); }
};

TEST_F(MessageTest, AMessageComesBackAfterReopening)
{
    const MessageId message = Store().CreateMessage(Inbox, false, Mail("subject", MSGFLAG_READ));
    Reopen();
    const StoredMessage stored = Store().LoadMessage(message);
    EXPECT_EQ(stored.properties.Text(PR_SUBJECT_W), "subject");
    EXPECT_EQ(stored.properties.Long(PR_MESSAGE_FLAGS), MSGFLAG_READ);
    EXPECT_GT(stored.properties.Long(PR_MESSAGE_SIZE), 7);
    EXPECT_FALSE(stored.properties.Bool(PR_HASATTACH, true));
    EXPECT_EQ(FolderOf(message), Inbox);
    EXPECT_FALSE(IsAssociated(message));
    EXPECT_TRUE(IsAssociated(Store().CreateMessage(Inbox, true, Mail("view"))));
}

TEST_F(MessageTest, CountersFollowEveryChange)
{
    const MessageId unread = Store().CreateMessage(Inbox, false, Mail("a"));
    const MessageId read = Store().CreateMessage(Inbox, false, Mail("b", MSGFLAG_READ));
    Store().CreateMessage(Inbox, true, Mail("associated"));
    const auto expect = [&](FolderId folder, ULONG messages, ULONG unreadOnes, ULONG associated)
    {
        const FolderInfo info = Store().Folder(folder);
        EXPECT_EQ(info.messages, messages);
        EXPECT_EQ(info.unread, unreadOnes);
        EXPECT_EQ(info.associated, associated);
    };
    expect(Inbox, 2, 1, 1);
    Store().ChangeMessageFlags({unread}, MSGFLAG_READ, 0);
    expect(Inbox, 2, 0, 1);
    Store().ChangeMessageFlags({read}, 0, MSGFLAG_READ);
    expect(Inbox, 2, 1, 1);
    Store().MoveMessages({read}, Other());
    expect(Inbox, 1, 0, 1);
    expect(Other(), 1, 1, 0);
    Store().CopyMessages({unread}, Other());
    expect(Other(), 2, 1, 0);
    EXPECT_EQ(Store().DeleteMessages({unread, unread, 12345}), 1u);
    expect(Inbox, 0, 0, 1);
}

TEST_F(MessageTest, ANumberIsNeverGivenAgain)
{
    const MessageId first = Store().CreateMessage(Inbox, false, Mail("a"));
    Store().DeleteMessages({first});
    EXPECT_GT(Store().CreateMessage(Inbox, false, Mail("b")), first);
}

TEST_F(MessageTest, TwoSavesFromTheSameStateCollideUnlessForced)
{
    const MessageId message = Store().CreateMessage(Inbox, false, Mail("a"));
    const std::int64_t change = Store().LoadMessage(message).change;
    const std::int64_t next = Store().SaveMessage(message, Mail("b"), change);
    EXPECT_GT(next, change);
    EXPECT_EQ(CodeOf([&] { Store().SaveMessage(message, Mail("c"), change); }), MAPI_E_OBJECT_CHANGED);
    EXPECT_EQ(Store().LoadMessage(message).properties.Text(PR_SUBJECT_W), "b");
    Store().SaveMessage(message, Mail("d"), next);
    Store().SaveMessage(message, Mail("e"), 0);
    EXPECT_EQ(Store().LoadMessage(message).properties.Text(PR_SUBJECT_W), "e");
    Store().DeleteMessages({message});
    EXPECT_EQ(CodeOf([&] { Store().SaveMessage(message, Mail("f"), 0); }), MAPI_E_OBJECT_DELETED);
    EXPECT_EQ(CodeOf([&] { Store().LoadMessage(message); }), MAPI_E_NOT_FOUND);
}

TEST_F(MessageTest, RecipientsAndAttachmentsBelongToTheirMessage)
{
    const MessageId message = Store().CreateMessage(Inbox, false, WithParts());
    Reopen();
    EXPECT_EQ(Store().Recipients(message).size(), 2u);
    EXPECT_EQ(Store().Recipients(message)[1].Text(PR_DISPLAY_NAME_W), "Bob");
    EXPECT_EQ(Store().AttachmentNumbers(message), (std::vector<ULONG>{0, 3}));
    EXPECT_EQ(Store().Attachment(message, 0).Binary(PR_ATTACH_DATA_BIN), std::string(10000, 'x'));
    EXPECT_EQ(Store().Attachment(message, 3).Long(PR_ATTACH_NUM), 3);
    EXPECT_FALSE(Store().EmbeddedMessage(message, 0));
    const std::optional<MessageId> inner = Store().EmbeddedMessage(message, 3);
    ASSERT_TRUE(inner);
    EXPECT_EQ(Store().LoadMessage(*inner).properties.Text(PR_SUBJECT_W), "inner");
    EXPECT_EQ(FolderOf(*inner), 0);
    EXPECT_EQ(CodeOf([&] { Store().Attachment(message, 1); }), MAPI_E_NOT_FOUND);
    const PropertySet properties = Store().LoadMessage(message).properties;
    EXPECT_TRUE(properties.Bool(PR_HASATTACH));
    EXPECT_TRUE(properties.Long(PR_MESSAGE_FLAGS) & MSGFLAG_HASATTACH);
    EXPECT_GT(properties.Long(PR_MESSAGE_SIZE), 20000);
}

TEST_F(MessageTest, SavingLeavesPartsThatAreNotGiven)
{
    const MessageId message = Store().CreateMessage(Inbox, false, WithParts());
    Store().SaveMessage(message, Mail("new subject"), 0);
    EXPECT_EQ(Store().Recipients(message).size(), 2u);
    EXPECT_EQ(Store().AttachmentNumbers(message).size(), 2u);
    EXPECT_TRUE(Store().LoadMessage(message).properties.Bool(PR_HASATTACH));
}

TEST_F(MessageTest, AttachmentsAreChangedAndRemovedOneByOne)
{
    const MessageId message = Store().CreateMessage(Inbox, false, WithParts());
    MessageContent content = Mail("edited");
    AttachmentEdit edit;
    edit.number = 0;
    edit.removed = true;
    content.attachments.push_back(edit);
    edit = {};
    edit.number = 3;
    edit.dropEmbedded = true;
    content.attachments.push_back(edit);
    Store().SaveMessage(message, content, 0);
    EXPECT_EQ(Store().AttachmentNumbers(message), std::vector<ULONG>{3});
    EXPECT_FALSE(Store().EmbeddedMessage(message, 3));
    EXPECT_EQ(Rows("chunk"), 0);
    EXPECT_EQ(Rows("message"), 1);
    content.attachments = {edit};
    content.attachments[0].removed = true;
    Store().SaveMessage(message, content, 0);
    EXPECT_FALSE(Store().LoadMessage(message).properties.Bool(PR_HASATTACH, true));
}

TEST_F(MessageTest, DeletingTakesEverythingWithIt)
{
    const MessageId message = Store().CreateMessage(Inbox, false, WithParts());
    Store().DeleteMessages({message});
    for (const char* table : {"message", "recipient", "attachment", "large", "chunk"})
    {
        EXPECT_EQ(Rows(table), 0) << table;
    }
}

TEST_F(MessageTest, EmptyingAFolderTakesEverythingWithIt)
{
    Store().CreateMessage(Inbox, false, WithParts());
    Store().CreateMessage(Inbox, false, Mail("plain"));
    Store().EmptyFolder(Inbox, true);
    for (const char* table : {"message", "recipient", "attachment", "large", "chunk"})
    {
        EXPECT_EQ(Rows(table), 0) << table;
    }
}

TEST_F(MessageTest, MovingTakesPartsAlongAndKeepsAssociatedApart)
{
    const MessageId message = Store().CreateMessage(Inbox, false, WithParts());
    const MessageId view = Store().CreateMessage(Inbox, true, Mail("view"));
    const std::vector<MessageId> moved = Store().MoveMessages({message, 999, view}, Other());
    ASSERT_EQ(moved.size(), 3u);
    EXPECT_EQ(moved[1], 0);
    EXPECT_EQ(FolderOf(moved[0]), Other());
    EXPECT_TRUE(IsAssociated(moved[2]));
    EXPECT_FALSE(Store().MessageExists(message));
    EXPECT_EQ(Store().Recipients(moved[0]).size(), 2u);
    EXPECT_EQ(Store().AttachmentNumbers(moved[0]).size(), 2u);
    EXPECT_EQ(Store().MoveMessages({moved[0]}, Other())[0], moved[0]) << "to its own folder";
}

TEST_F(MessageTest, ACopyIsOfItsOwn)
{
    const MessageId message = Store().CreateMessage(Inbox, false, WithParts());
    const MessageId copy = Store().CopyMessages({message}, Inbox)[0];
    Store().DeleteMessages({message});
    EXPECT_EQ(Store().Recipients(copy).size(), 2u);
    EXPECT_EQ(Store().Attachment(copy, 0).Binary(PR_ATTACH_DATA_BIN).size(), 10000u);
    const MessageId inner = *Store().EmbeddedMessage(copy, 3);
    EXPECT_EQ(Store().Recipients(inner)[0].Text(PR_DISPLAY_NAME_W), "Cid");
}

TEST_F(MessageTest, AFailedSaveLeavesTheStoreAsItWas)
{
    MessageContent deep = Mail("deepest");
    for (int i = 0; i < 80; ++i)
    {
        MessageContent outer = Mail("outer");
        AttachmentEdit edit;
        edit.embedded = std::make_shared<MessageContent>(std::move(deep));
        outer.attachments.push_back(std::move(edit));
        deep = std::move(outer);
    }
    EXPECT_EQ(CodeOf([&] { Store().CreateMessage(Inbox, false, deep); }), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Rows("message"), 0);
    EXPECT_EQ(Store().Folder(Inbox).messages, 0u);
    EXPECT_EQ(CodeOf([&] { Store().CreateMessage(4711, false, Mail("x")); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(CodeOf([&] { Store().MoveMessages({1}, 4711); }), MAPI_E_NOT_FOUND);
}

TEST_F(MessageTest, AFullDiskLeavesTheStoreAsItWas)
{
    const MessageId message = Store().CreateMessage(Inbox, false, Mail("before"));
    Store().Connection().Execute("PRAGMA max_page_count=60");
    MessageContent content = Mail("after");
    content.properties.SetEncoded(PR_RTF_COMPRESSED, std::string(1000000, 'x'));
    std::string text;
    EXPECT_EQ(CodeOf([&] { Store().SaveMessage(message, content, 0); }, &text), MAPI_E_NOT_ENOUGH_DISK);
    EXPECT_NE(text.find("disk is full"), std::string::npos);
    EXPECT_EQ(Store().LoadMessage(message).properties.Text(PR_SUBJECT_W), "before");
    Store().Connection().Execute("PRAGMA max_page_count=1000000");
    Store().SaveMessage(message, content, 0);
    EXPECT_EQ(Store().LoadMessage(message).properties.Text(PR_SUBJECT_W), "after");
}

} // namespace
} // namespace zebstore::test
