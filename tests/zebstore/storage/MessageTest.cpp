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
        Query query(Store().Connection().Db(), std::string("SELECT count(*) FROM ") + table);
        query.Step();
        return query.Number(0);
    }
    FolderId Other() { return IdOf(StandardFolder::Outbox); }
};

TEST_F(MessageTest, AMessageComesBackAfterReopening)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("subject", MSGFLAG_READ));
    Reopen();
    const StoredMessage stored = Store().Messages().Load(message);
    EXPECT_EQ(stored.properties.Text(PR_SUBJECT_W), "subject");
    EXPECT_EQ(stored.properties.Long(PR_MESSAGE_FLAGS), MSGFLAG_READ);
    EXPECT_GT(stored.properties.Long(PR_MESSAGE_SIZE), 7);
    EXPECT_FALSE(stored.properties.Bool(PR_HASATTACH, true));
    EXPECT_EQ(ContentsKey::Of(message).Folder(), Inbox);
    EXPECT_FALSE(ContentsKey::Of(message).IsAssociated());
    EXPECT_TRUE(ContentsKey::Of(Store().Messages().Create({Inbox, true}, Mail("view"))).IsAssociated());
}

TEST_F(MessageTest, CountersFollowEveryChange)
{
    const MessageId unread = Store().Messages().Create({Inbox, false}, Mail("a"));
    const MessageId read = Store().Messages().Create({Inbox, false}, Mail("b", MSGFLAG_READ));
    Store().Messages().Create({Inbox, true}, Mail("associated"));
    const auto expect = [&](FolderId folder, ULONG messages, ULONG unreadOnes, ULONG associated)
    {
        const FolderInfo info = Store().Folders().Info(folder);
        EXPECT_EQ(info.messages, messages);
        EXPECT_EQ(info.unread, unreadOnes);
        EXPECT_EQ(info.associated, associated);
    };
    expect(Inbox, 2, 1, 1);
    Store().Messages().ChangeFlags({unread}, MSGFLAG_READ, 0);
    expect(Inbox, 2, 0, 1);
    Store().Messages().ChangeFlags({read}, 0, MSGFLAG_READ);
    expect(Inbox, 2, 1, 1);
    Store().Messages().Move({read}, Other());
    expect(Inbox, 1, 0, 1);
    expect(Other(), 1, 1, 0);
    Store().Messages().Copy({unread}, Other());
    expect(Other(), 2, 1, 0);
    EXPECT_EQ(Store().Messages().Delete({unread, unread, 12345}), 1u);
    expect(Inbox, 0, 0, 1);
}

TEST_F(MessageTest, ANumberIsNeverGivenAgain)
{
    const MessageId first = Store().Messages().Create({Inbox, false}, Mail("a"));
    Store().Messages().Delete({first});
    EXPECT_GT(Store().Messages().Create({Inbox, false}, Mail("b")), first);
}

TEST_F(MessageTest, CollidingSavesNeedForce)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("a"));
    const std::int64_t change = Store().Messages().Load(message).change;
    const std::int64_t next = Store().Messages().Save(message, Mail("b"), change);
    EXPECT_GT(next, change);
    EXPECT_EQ(CodeOf([&] { Store().Messages().Save(message, Mail("c"), change); }), MAPI_E_OBJECT_CHANGED);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "b");
    Store().Messages().Save(message, Mail("d"), next);
    Store().Messages().Save(message, Mail("e"), 0);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "e");
    Store().Messages().Delete({message});
    EXPECT_EQ(CodeOf([&] { Store().Messages().Save(message, Mail("f"), 0); }), MAPI_E_OBJECT_DELETED);
    EXPECT_EQ(CodeOf([&] { Store().Messages().Load(message); }), MAPI_E_NOT_FOUND);
}

TEST_F(MessageTest, RecipientsAndAttachmentsFollowTheirMessage)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, WithParts());
    Reopen();
    EXPECT_EQ(Store().Recipients().Load(message).size(), 2u);
    EXPECT_EQ(Store().Recipients().Load(message)[1].Text(PR_DISPLAY_NAME_W), "Bob");
    EXPECT_EQ(Store().Attachments().Numbers(message), (std::vector<ULONG>{0, 3}));
    EXPECT_EQ(Store().Attachments().Load(message, 0).Binary(PR_ATTACH_DATA_BIN), std::string(10000, 'x'));
    EXPECT_EQ(Store().Attachments().Load(message, 3).Long(PR_ATTACH_NUM), 3);
    EXPECT_FALSE(Store().Attachments().Embedded(message, 0));
    const std::optional<MessageId> inner = Store().Attachments().Embedded(message, 3);
    ASSERT_TRUE(inner);
    EXPECT_EQ(Store().Messages().Load(*inner).properties.Text(PR_SUBJECT_W), "inner");
    EXPECT_EQ(ContentsKey::Of(*inner).Folder(), 0);
    EXPECT_EQ(CodeOf([&] { Store().Attachments().Load(message, 1); }), MAPI_E_NOT_FOUND);
    const PropertySet properties = Store().Messages().Load(message).properties;
    EXPECT_TRUE(properties.Bool(PR_HASATTACH));
    EXPECT_TRUE(properties.Long(PR_MESSAGE_FLAGS) & MSGFLAG_HASATTACH);
    EXPECT_GT(properties.Long(PR_MESSAGE_SIZE), 20000);
}

TEST_F(MessageTest, SavingKeepsPartsNotGiven)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, WithParts());
    Store().Messages().Save(message, Mail("new subject"), 0);
    EXPECT_EQ(Store().Recipients().Load(message).size(), 2u);
    EXPECT_EQ(Store().Attachments().Numbers(message).size(), 2u);
    EXPECT_TRUE(Store().Messages().Load(message).properties.Bool(PR_HASATTACH));
}

TEST_F(MessageTest, AttachmentsAreChangedOneByOne)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, WithParts());
    MessageContent content = Mail("edited");
    AttachmentEdit edit;
    edit.number = 0;
    edit.removed = true;
    content.attachments.push_back(edit);
    edit = {};
    edit.number = 3;
    edit.dropEmbedded = true;
    content.attachments.push_back(edit);
    Store().Messages().Save(message, content, 0);
    EXPECT_EQ(Store().Attachments().Numbers(message), std::vector<ULONG>{3});
    EXPECT_FALSE(Store().Attachments().Embedded(message, 3));
    EXPECT_EQ(Rows("chunk"), 0);
    EXPECT_EQ(Rows("message"), 1);
    content.attachments = {edit};
    content.attachments[0].removed = true;
    Store().Messages().Save(message, content, 0);
    EXPECT_FALSE(Store().Messages().Load(message).properties.Bool(PR_HASATTACH, true));
}

TEST_F(MessageTest, DeletingTakesEverythingWithIt)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, WithParts());
    Store().Messages().Delete({message});
    for (const char* table : {"message", "recipient", "attachment", "large", "chunk"})
    {
        EXPECT_EQ(Rows(table), 0) << table;
    }
}

TEST_F(MessageTest, EmptyingAFolderDeletesEverything)
{
    Store().Messages().Create({Inbox, false}, WithParts());
    Store().Messages().Create({Inbox, false}, Mail("plain"));
    Store().Folders().Empty(Inbox, true);
    for (const char* table : {"message", "recipient", "attachment", "large", "chunk"})
    {
        EXPECT_EQ(Rows(table), 0) << table;
    }
}

TEST_F(MessageTest, MovingTakesPartsAlong)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, WithParts());
    const MessageId view = Store().Messages().Create({Inbox, true}, Mail("view"));
    const std::vector<MessageId> moved = Store().Messages().Move({message, 999, view}, Other());
    ASSERT_EQ(moved.size(), 3u);
    EXPECT_EQ(moved[1], 0);
    EXPECT_EQ(ContentsKey::Of(moved[0]).Folder(), Other());
    EXPECT_TRUE(ContentsKey::Of(moved[2]).IsAssociated());
    EXPECT_FALSE(Store().Messages().Exists(message));
    EXPECT_EQ(Store().Recipients().Load(moved[0]).size(), 2u);
    EXPECT_EQ(Store().Attachments().Numbers(moved[0]).size(), 2u);
    EXPECT_EQ(Store().Messages().Move({moved[0]}, Other())[0], moved[0]) << "to its own folder";
}

TEST_F(MessageTest, ACopyIsOfItsOwn)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, WithParts());
    const MessageId copy = Store().Messages().Copy({message}, Inbox)[0];
    Store().Messages().Delete({message});
    EXPECT_EQ(Store().Recipients().Load(copy).size(), 2u);
    EXPECT_EQ(Store().Attachments().Load(copy, 0).Binary(PR_ATTACH_DATA_BIN).size(), 10000u);
    const MessageId inner = *Store().Attachments().Embedded(copy, 3);
    EXPECT_EQ(Store().Recipients().Load(inner)[0].Text(PR_DISPLAY_NAME_W), "Cid");
}

TEST_F(MessageTest, AFailedSaveChangesNothing)
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
    EXPECT_EQ(CodeOf([&] { Store().Messages().Create({Inbox, false}, deep); }), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Rows("message"), 0);
    EXPECT_EQ(Store().Folders().Info(Inbox).messages, 0u);
    EXPECT_EQ(CodeOf([&] { Store().Messages().Create({4711, false}, Mail("x")); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(CodeOf([&] { Store().Messages().Move({1}, 4711); }), MAPI_E_NOT_FOUND);
}

TEST_F(MessageTest, AFullDiskChangesNothing)
{
    const MessageId message = Store().Messages().Create({Inbox, false}, Mail("before"));
    Store().Connection().Db().Execute("PRAGMA max_page_count=60");
    MessageContent content = Mail("after");
    content.properties.SetEncoded(PR_RTF_COMPRESSED, std::string(1000000, 'x'));
    std::string text;
    EXPECT_EQ(CodeOf([&] { Store().Messages().Save(message, content, 0); }, &text), MAPI_E_NOT_ENOUGH_DISK);
    EXPECT_NE(text.find("disk is full"), std::string::npos);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "before");
    Store().Connection().Db().Execute("PRAGMA max_page_count=1000000");
    Store().Messages().Save(message, content, 0);
    EXPECT_EQ(Store().Messages().Load(message).properties.Text(PR_SUBJECT_W), "after");
}

} // namespace
} // namespace zebstore::test
