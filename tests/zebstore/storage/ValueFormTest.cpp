// That a value is kept in one form, however it was given, and that nothing of another form stays in the file.
#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/Database.h"

namespace zebstore::test
{
namespace
{

/// Characters that take three bytes each in the file and two in a stream.
std::string ThreeByteText(size_t characters)
{
    std::string text;
    for (size_t i = 0; i < characters; ++i)
    {
        text += "\xE6\x97\xA5";
    }
    return text;
}

class ValueForm : public StorageTest
{
protected:
    std::int64_t LargeValues()
    {
        Query query(Store().Connection().Db(), "SELECT count(*) FROM large");
        query.Step();
        return query.Number(0);
    }
    static MessageContent WithBody(const std::string& body)
    {
        MessageContent content = Mail("body");
        content.properties.SetText(PR_BODY_W, body);
        return content;
    }
    static AttachmentEdit AttachmentOf(const std::string& name)
    {
        AttachmentEdit edit;
        edit.properties.SetText(PR_ATTACH_LONG_FILENAME_W, name);
        return edit;
    }
    void ExpectSound()
    {
        for (const std::string& problem : Store().CheckWhole())
        {
            ADD_FAILURE() << problem;
        }
    }
};

TEST_F(ValueForm, ALongBodyIsWrittenOnce)
{
    // Around the sizes at which only the one or the other form is over the limit.
    for (const size_t characters : {size_t(1365), size_t(1366), size_t(1700), size_t(2048), size_t(2049), size_t(5000)})
    {
        MessageContent withRecipient = WithBody(ThreeByteText(characters));
        withRecipient.recipients = std::vector<PropertySet>{Named("Ada")};
        MessageContent withAttachment = WithBody(ThreeByteText(characters));
        withAttachment.attachments.push_back(AttachmentOf("a.txt"));
        MessageContent nested = Mail("outer");
        nested.attachments.push_back(AttachmentOf("inner.msg"));
        nested.attachments[0].embedded = std::make_shared<MessageContent>(withRecipient);
        for (const MessageContent& content : {withRecipient, withAttachment, nested})
        {
            const std::int64_t expected = characters > 1365 ? 1 : 0;
            const MessageId message = Store().Messages().Create({Inbox, false}, content);
            EXPECT_EQ(LargeValues(), expected) << characters;
            ExpectSound();
            const std::vector<MessageId> copies = Store().Messages().Copy({message}, Inbox);
            EXPECT_EQ(LargeValues(), 2 * expected) << characters;
            ExpectSound();
            Store().Messages().Delete({message, copies[0]});
            EXPECT_EQ(LargeValues(), 0) << characters;
        }
    }
}

TEST_F(ValueForm, NewMessagesKnowTheirParts)
{
    MessageContent content = WithBody("text");
    content.recipients = std::vector<PropertySet>{Named("Ada"), Named("Boris")};
    content.attachments.push_back(AttachmentOf("a.txt"));
    const MessageId message = Store().Messages().Create({Inbox, false}, content);
    const PropertySet stored = Store().Messages().Load(message).properties;
    EXPECT_TRUE(stored.Bool(PR_HASATTACH));
    EXPECT_TRUE(stored.Long(PR_MESSAGE_FLAGS) & MSGFLAG_HASATTACH);
    EXPECT_EQ(Store().Recipients().Load(message).size(), 2u);
    EXPECT_EQ(Store().Attachments().Numbers(message).size(), 1u);
    const MessageId bare = Store().Messages().Create({Inbox, false}, WithBody("text"));
    EXPECT_GT(stored.Long(PR_MESSAGE_SIZE), Store().Messages().Load(bare).properties.Long(PR_MESSAGE_SIZE));
}

TEST_F(ValueForm, AMessagesSizeExcludesChecksums)
{
    PropertySet type;
    type.SetLong(PR_RECIPIENT_TYPE, MAPI_TO);
    MessageContent content = WithBody("text");
    const MessageId bare = Store().Messages().Create({Inbox, false}, content);
    content.recipients = std::vector<PropertySet>{type};
    const MessageId message = Store().Messages().Create({Inbox, false}, content);
    // The header, one entry of the index and a number of 4 bytes.
    EXPECT_EQ(Store().Messages().Load(message).properties.Long(PR_MESSAGE_SIZE) -
                  Store().Messages().Load(bare).properties.Long(PR_MESSAGE_SIZE),
              4 + 8 + 4);
}

TEST_F(ValueForm, TheFormIgnoresTheInputForm)
{
    const std::string text(3000, 'a'); // 3,000 bytes in the file, 6,000 in a stream
    const zeb::platform::WideString wide(3000, WCHAR('a'));
    const auto staged = Store().Stage();
    staged->Write(0, wide.data(), wide.size() * sizeof(WCHAR));
    MessageContent content = Mail("streamed");
    content.properties.SetLarge(PR_BODY_W, staged);
    const MessageId streamed = Store().Messages().Create({Inbox, false}, content);
    const MessageId whole = Store().Messages().Create({Inbox, false}, WithBody(text));
    EXPECT_EQ(LargeValues(), 0);
    EXPECT_EQ(Store().Messages().Load(streamed).properties.Text(PR_BODY_W), text);
    EXPECT_EQ(Store().Messages().Load(whole).properties.Text(PR_BODY_W), text);
}

TEST_F(ValueForm, FormAndSizeSurviveAnotherSave)
{
    for (const std::string& body : {ThreeByteText(1365), ThreeByteText(1700), ThreeByteText(3000),
                                    std::string(3000, 'a'), std::string(9000, 'a')})
    {
        const MessageId message = Store().Messages().Create({Inbox, false}, WithBody(body));
        const std::int64_t large = LargeValues();
        const StoredMessage first = Store().Messages().Load(message);
        MessageContent again;
        again.properties = first.properties;
        Store().Messages().Save(message, again, first.change);
        EXPECT_EQ(LargeValues(), large) << body.size();
        const PropertySet second = Store().Messages().Load(message).properties;
        EXPECT_EQ(second.Long(PR_MESSAGE_SIZE), first.properties.Long(PR_MESSAGE_SIZE)) << body.size();
        EXPECT_EQ(second.Text(PR_BODY_W), body);
        Store().Messages().Delete({message});
    }
}

TEST_F(ValueForm, NarrowTextIsTreatedLikeWide)
{
    std::string narrow;
    const WCHAR letter[] = {0xE4};
    for (int i = 0; i < 2500; ++i)
    {
        narrow += zeb::platform::NarrowFromWide(letter, 1);
    }
    MessageContent content = Mail("narrow");
    content.properties.Set(NarrowValue(PR_BODY_A, narrow.c_str()));
    content.recipients = std::vector<PropertySet>{Named("Ada")};
    const MessageId message = Store().Messages().Create({Inbox, false}, content);
    const std::int64_t large = LargeValues();
    ExpectSound();
    Store().Messages().Save(message, {Store().Messages().Load(message).properties, {}, {}}, 0);
    EXPECT_EQ(LargeValues(), large);
    Store().Messages().Delete({message});
    EXPECT_EQ(LargeValues(), 0);
}

} // namespace
} // namespace zebstore::test
