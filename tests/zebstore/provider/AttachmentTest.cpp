#include "tests/zebstore/provider/ProviderFixture.h"

namespace zebstore
{
namespace
{

class Attachments : public Provider
{
protected:
    static Ref<IAttach> Create(IMessage& message, const char* name, ULONG* number = nullptr)
    {
        ULONG given = 0;
        IAttach* attach = nullptr;
        EXPECT_EQ(message.CreateAttach(nullptr, 0, &given, &attach), S_OK);
        if (number)
        {
            *number = given;
        }
        EXPECT_EQ(Set(attach, NarrowValue(PR_ATTACH_FILENAME_A, name)), S_OK);
        return Ref<IAttach>::Adopt(attach);
    }

    static Texts Names(IMessage& message)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(message.GetAttachmentTable(0, &table), S_OK);
        const Rows rows(table, {PR_ATTACH_FILENAME_A, PR_ATTACH_NUM});
        Texts names;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            names.push_back(rows.TextCell(i, 0) + ":" + std::to_string(rows.Cell(i, 1).Value.l));
        }
        return names;
    }

    static Ref<IMessage> Embedded(IAttach& attach, ULONG flags)
    {
        IUnknown* message = nullptr;
        EXPECT_EQ(attach.OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, flags, &message), S_OK);
        return Ref<IMessage>::Adopt(static_cast<IMessage*>(message));
    }

    static Ref<IAttach> OpenAttach(IMessage& message, ULONG number)
    {
        IAttach* attach = nullptr;
        EXPECT_EQ(message.OpenAttach(number, nullptr, MAPI_BEST_ACCESS, &attach), S_OK);
        return Ref<IAttach>::Adopt(attach);
    }
};

TEST_F(Attachments, AppearWhenTheirMessageIsSaved)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const Ref<IAttach> first = Create(*message, "a");
    EXPECT_EQ(Names(*message), Texts());
    EXPECT_EQ(first->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(Names(*message), Texts({"a:0"}));
    EXPECT_EQ(Create(*message, "b")->SaveChanges(0), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_TRUE(Get(message.Get(), PR_HASATTACH)->Value.b);
    const Ref<IMessage> again = OpenMessage(GetBytes(message.Get(), PR_ENTRYID));
    EXPECT_EQ(Names(*again), Texts({"a:0", "b:1"}));
    const Ref<IAttach> attach = OpenAttach(*again, 1);
    EXPECT_EQ(GetText(attach.Get(), PR_ATTACH_FILENAME_A), "b");
    EXPECT_EQ(GetLong(attach.Get(), PR_ATTACH_NUM), 1);
    EXPECT_GT(GetLong(attach.Get(), PR_ATTACH_SIZE), 0);
    IAttach* none = nullptr;
    EXPECT_EQ(again->OpenAttach(7, nullptr, 0, &none), MAPI_E_NOT_FOUND);
}

TEST_F(Attachments, AreDeletedWithTheNextSave)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(Create(*message, "a")->SaveChanges(0), S_OK);
    EXPECT_EQ(Create(*message, "b")->SaveChanges(0), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Bytes id = GetBytes(message.Get(), PR_ENTRYID);
    EXPECT_EQ(message->DeleteAttach(0, 0, nullptr, 0), S_OK);
    EXPECT_EQ(message->DeleteAttach(0, 0, nullptr, 0), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Names(*message), Texts({"b:1"}));
    EXPECT_EQ(Names(*OpenMessage(id)), Texts({"a:0", "b:1"}));
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(Names(*OpenMessage(id)), Texts({"b:1"}));
}

TEST_F(Attachments, HoldMessages)
{
    const Ref<IMessage> message = NewMessage(*Inbox(), "outer");
    {
        const Ref<IAttach> attach = Create(*message, "mail");
        const Ref<IMessage> inner = Embedded(*attach, MAPI_CREATE | MAPI_MODIFY);
        EXPECT_EQ(Set(inner.Get(), NarrowValue(PR_SUBJECT_A, "inner")), S_OK);
        const Ref<IAttach> deepAttach = Create(*inner, "deep");
        const Ref<IMessage> deepest = Embedded(*deepAttach, MAPI_CREATE | MAPI_MODIFY);
        EXPECT_EQ(Set(deepest.Get(), NarrowValue(PR_SUBJECT_A, "deepest")), S_OK);
        EXPECT_EQ(deepest->SaveChanges(0), S_OK);
        EXPECT_EQ(deepAttach->SaveChanges(0), S_OK);
        EXPECT_EQ(inner->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        EXPECT_EQ(attach->SaveChanges(0), S_OK);
        EXPECT_EQ(GetLong(attach.Get(), PR_ATTACH_METHOD), LONG(ATTACH_EMBEDDED_MSG));
    }
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Ref<IMessage> again = OpenMessage(GetBytes(message.Get(), PR_ENTRYID));
    const Ref<IMessage> inner = Embedded(*OpenAttach(*again, 0), 0);
    EXPECT_EQ(GetText(inner.Get(), PR_SUBJECT_A), "inner");
    const Ref<IMessage> deepest = Embedded(*OpenAttach(*inner, 0), 0);
    EXPECT_EQ(GetText(deepest.Get(), PR_SUBJECT_A), "deepest");
    EXPECT_EQ(Subjects(*Inbox()), Texts({"outer"}));
}

TEST_F(Attachments, KeepTheirMessagesLargeBodies)
{
    const std::string body(200000, 'b');
    const Ref<IMessage> message = NewMessage(*Inbox(), "outer");
    {
        const Ref<IAttach> attach = Create(*message, "mail");
        const Ref<IMessage> inner = Embedded(*attach, MAPI_CREATE | MAPI_MODIFY);
        EXPECT_EQ(Set(inner.Get(), NarrowValue(PR_BODY_A, body.c_str())), S_OK);
        EXPECT_EQ(inner->SaveChanges(0), S_OK);
        EXPECT_EQ(attach->SaveChanges(0), S_OK);
    }
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Bytes id = GetBytes(message.Get(), PR_ENTRYID);
    {
        const Ref<IMessage> changed = OpenMessage(id);
        const Ref<IAttach> attach = OpenAttach(*changed, 0);
        const Ref<IMessage> inner = Embedded(*attach, MAPI_MODIFY);
        EXPECT_EQ(Set(inner.Get(), NarrowValue(PR_SUBJECT_A, "changed")), S_OK);
        EXPECT_EQ(inner->SaveChanges(0), S_OK);
        EXPECT_EQ(attach->SaveChanges(0), S_OK);
        EXPECT_EQ(changed->SaveChanges(0), S_OK);
    }
    const Ref<IMessage> again = OpenMessage(id);
    const Ref<IMessage> inner = Embedded(*OpenAttach(*again, 0), 0);
    EXPECT_EQ(GetText(inner.Get(), PR_SUBJECT_A), "changed");
    IUnknown* opened = nullptr;
    ASSERT_EQ(inner->OpenProperty(PR_BODY_A, &IID_IStream, 0, 0, &opened), S_OK);
    const Ref<IStream> stream = Ref<IStream>::Adopt(static_cast<IStream*>(opened));
    std::string read(body.size() + 1, 0);
    ULONG got = 0;
    EXPECT_EQ(stream->Read(read.data(), static_cast<ULONG>(read.size()), &got), S_FALSE);
    read.resize(got);
    EXPECT_EQ(read, body);
}

TEST_F(Attachments, WithoutAMessageSaySo)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const Ref<IAttach> attach = Create(*message, "a");
    IUnknown* inner = nullptr;
    EXPECT_EQ(attach->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &inner), MAPI_E_NOT_FOUND);
}

TEST_F(Attachments, AreCopiedWithTheirMessage)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> source = NewMessage(*inbox, "source");
    const Ref<IAttach> attach = Create(*source, "mail");
    const Ref<IMessage> inner = Embedded(*attach, MAPI_CREATE | MAPI_MODIFY);
    EXPECT_EQ(Set(inner.Get(), NarrowValue(PR_SUBJECT_A, "inner")), S_OK);
    EXPECT_EQ(inner->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(attach->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    IMessage* made = nullptr;
    ASSERT_EQ(inbox->CreateMessage(nullptr, 0, &made), S_OK);
    const Ref<IMessage> target = Ref<IMessage>::Adopt(made);
    EXPECT_EQ(source->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMessage, made, 0, nullptr), S_OK);
    EXPECT_EQ(made->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Ref<IMessage> again = OpenMessage(GetBytes(made, PR_ENTRYID));
    const Ref<IMessage> copied = Embedded(*OpenAttach(*again, 0), 0);
    EXPECT_EQ(GetText(copied.Get(), PR_SUBJECT_A), "inner");
}

} // namespace
} // namespace zebstore
