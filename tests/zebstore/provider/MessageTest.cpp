#include "tests/zebstore/provider/ProviderFixture.h"

#include <cstring>

namespace zebstore
{
namespace
{

class Messages : public Provider
{
protected:
    static HRESULT AddRecipient(IMessage& message, ULONG flags, std::vector<SPropValue> values)
    {
        SizedADRLIST(1, list) = {1, {{0, static_cast<ULONG>(values.size()), values.data()}}};
        return message.ModifyRecipients(flags, reinterpret_cast<LPADRLIST>(&list));
    }

    static Texts Recipients(IMessage& message)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(message.GetRecipientTable(0, &table), S_OK);
        const Rows rows(table, {PR_DISPLAY_NAME_A});
        Texts names;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            names.push_back(rows.TextCell(i, 0));
        }
        return names;
    }
};

TEST_F(Messages, AreAbsentUntilTheyAreSaved)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> message = NewMessage(*inbox, "Re: plan");
    EXPECT_EQ(Subjects(*inbox), Texts());
    HRESULT code = S_OK;
    Get(message.Get(), PR_ENTRYID, &code);
    EXPECT_EQ(code, MAPI_E_NOT_FOUND);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE), S_OK);
    EXPECT_EQ(Subjects(*inbox), Texts({"Re: plan"}));
    EXPECT_EQ(GetBytes(message.Get(), PR_ENTRYID).size(), 54u);
    EXPECT_EQ(GetBytes(message.Get(), PR_PARENT_ENTRYID), InboxId());
}

TEST_F(Messages, AreCompletedWhenTheyAreSaved)
{
    const Bytes id = SaveMessage(*Inbox(), "Re: plan");
    const Ref<IMessage> message = OpenMessage(id);
    EXPECT_EQ(GetText(message.Get(), PR_MESSAGE_CLASS_A), "IPM.Note");
    EXPECT_EQ(GetText(message.Get(), PR_NORMALIZED_SUBJECT_A), "plan");
    EXPECT_EQ(GetText(message.Get(), PR_SUBJECT_PREFIX_A), "Re: ");
    EXPECT_EQ(GetBytes(message.Get(), PR_SEARCH_KEY).size(), 16u);
    EXPECT_NE(Get(message.Get(), PR_CREATION_TIME).Get(), nullptr);
    EXPECT_NE(Get(message.Get(), PR_LAST_MODIFICATION_TIME).Get(), nullptr);
    EXPECT_GT(GetLong(message.Get(), PR_MESSAGE_SIZE), 0);
    EXPECT_FALSE(Get(message.Get(), PR_HASATTACH)->Value.b);
    EXPECT_EQ(GetLong(message.Get(), PR_MESSAGE_FLAGS), LONG(MSGFLAG_READ | MSGFLAG_UNSENT));
    EXPECT_EQ(GetLong(message.Get(), PR_OBJECT_TYPE), LONG(MAPI_MESSAGE));
}

TEST_F(Messages, KeepWhatAnImporterWrites)
{
    const Ref<IMessage> message = NewMessage(*Inbox(), "Re: plan");
    SPropValue created{};
    created.ulPropTag = PR_CREATION_TIME;
    created.Value.ft = {123456789, 30000000};
    SPropValue modified = created;
    modified.ulPropTag = PR_LAST_MODIFICATION_TIME;
    const Bytes key = {1, 2, 3, 4, 5, 6, 7, 8, 9};
    SPropValue values[] = {created,
                           modified,
                           BinaryValue(PR_SEARCH_KEY, key),
                           NarrowValue(PR_NORMALIZED_SUBJECT_A, "something else"),
                           NarrowValue(PR_DISPLAY_TO_A, "whoever"),
                           LongValue(PR_MESSAGE_FLAGS, 0)};
    EXPECT_EQ(message->SetProps(6, values, nullptr), S_OK);
    EXPECT_EQ(AddRecipient(*message, MODRECIP_ADD, {NarrowValue(PR_DISPLAY_NAME_A, "Ann")}), S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Ref<IMessage> again = OpenMessage(GetBytes(message.Get(), PR_ENTRYID));
    for (ULONG tag : {PR_CREATION_TIME, PR_LAST_MODIFICATION_TIME})
    {
        const auto time = Get(again.Get(), tag);
        ASSERT_NE(time.Get(), nullptr);
        EXPECT_EQ(std::memcmp(&time->Value.ft, &created.Value.ft, sizeof(FILETIME)), 0);
    }
    EXPECT_EQ(GetBytes(again.Get(), PR_SEARCH_KEY), key);
    EXPECT_EQ(GetText(again.Get(), PR_NORMALIZED_SUBJECT_A), "something else");
    EXPECT_EQ(GetText(again.Get(), PR_DISPLAY_TO_A), "whoever");
    EXPECT_EQ(GetLong(again.Get(), PR_MESSAGE_FLAGS), 0);
}

TEST_F(Messages, GiveTextAsAskedFor)
{
    const Ref<IMessage> message = OpenMessage(SaveMessage(*Inbox(), "Hello"));
    SizedSPropTagArray(3, tags) = {3, {PR_SUBJECT_A, PR_SUBJECT_W, PROP_TAG(PT_UNSPECIFIED, 0x0037)}};
    for (ULONG flags : {ULONG(0), MAPI_UNICODE})
    {
        ULONG count = 0;
        SPropValue* values = nullptr;
        ASSERT_EQ(message->GetProps(reinterpret_cast<LPSPropTagArray>(&tags), flags, &count, &values), S_OK);
        const Buffer<SPropValue> owner(values);
        ASSERT_EQ(count, 3u);
        EXPECT_STREQ(values[0].Value.lpszA, "Hello");
        EXPECT_EQ(std::memcmp(values[1].Value.lpszW, ZEBW("Hello"), 12), 0);
        EXPECT_EQ(values[2].ulPropTag, flags ? PR_SUBJECT_W : PR_SUBJECT_A);
    }
}

TEST_F(Messages, ReportMissingPropertiesAsErrors)
{
    const Ref<IMessage> message = OpenMessage(SaveMessage(*Inbox()));
    SizedSPropTagArray(2, tags) = {2, {PR_SUBJECT_A, PR_BODY_A}};
    ULONG count = 0;
    SPropValue* values = nullptr;
    ASSERT_EQ(message->GetProps(reinterpret_cast<LPSPropTagArray>(&tags), 0, &count, &values), MAPI_W_ERRORS_RETURNED);
    const Buffer<SPropValue> owner(values);
    EXPECT_EQ(values[1].ulPropTag, CHANGE_PROP_TYPE(PR_BODY_A, PT_ERROR));
    EXPECT_EQ(values[1].Value.err, MAPI_E_NOT_FOUND);
    SPropTagArray none = {0, {0}};
    EXPECT_EQ(message->GetProps(&none, 0, &count, &values), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(message->GetProps(nullptr, 0x10, &count, &values), MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(Messages, ListAllTheirProperties)
{
    const Ref<IMessage> message = OpenMessage(SaveMessage(*Inbox()));
    LPSPropTagArray listed = nullptr;
    ASSERT_EQ(message->GetPropList(MAPI_UNICODE, &listed), S_OK);
    const Buffer<SPropTagArray> owner(listed);
    ULONG count = 0;
    SPropValue* values = nullptr;
    ASSERT_EQ(message->GetProps(nullptr, MAPI_UNICODE, &count, &values), S_OK);
    const Buffer<SPropValue> valueOwner(values);
    ASSERT_EQ(count, listed->cValues);
    bool subject = false;
    for (ULONG i = 0; i < count; ++i)
    {
        EXPECT_EQ(values[i].ulPropTag, listed->aulPropTag[i]);
        subject = subject || values[i].ulPropTag == PR_SUBJECT_W;
    }
    EXPECT_TRUE(subject);
}

TEST_F(Messages, ReportWhatCanNotBeSet)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    const Bytes id(54);
    SPropValue missing{};
    missing.ulPropTag = PR_BODY_A;
    SPropValue values[] = {NarrowValue(PR_BODY_A, "text"), BinaryValue(PR_ENTRYID, id), missing,
                           LongValue(PROP_TAG(PT_ERROR, 0x6600), 1)};
    SPropProblemArray* problems = nullptr;
    ASSERT_EQ(message->SetProps(4, values, &problems), S_OK);
    const Buffer<SPropProblemArray> owner(problems);
    ASSERT_NE(problems, nullptr);
    ASSERT_EQ(problems->cProblem, 2u);
    EXPECT_EQ(problems->aProblem[0].ulIndex, 1u);
    EXPECT_EQ(problems->aProblem[0].ulPropTag, PR_ENTRYID);
    EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_COMPUTED);
    EXPECT_EQ(problems->aProblem[1].ulIndex, 2u);
    EXPECT_EQ(problems->aProblem[1].scode, MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(GetText(message.Get(), PR_BODY_A), "text");
}

TEST_F(Messages, LoseDeletedProperties)
{
    const Ref<IMessage> message = OpenMessage(SaveMessage(*Inbox()));
    SizedSPropTagArray(3, tags) = {3, {PR_SUBJECT_A, PR_BODY_A, PR_ENTRYID}};
    SPropProblemArray* problems = nullptr;
    ASSERT_EQ(message->DeleteProps(reinterpret_cast<LPSPropTagArray>(&tags), &problems), S_OK);
    const Buffer<SPropProblemArray> owner(problems);
    ASSERT_NE(problems, nullptr);
    ASSERT_EQ(problems->cProblem, 2u);
    EXPECT_EQ(problems->aProblem[0].scode, MAPI_E_NOT_FOUND);
    EXPECT_EQ(problems->aProblem[1].scode, MAPI_E_COMPUTED);
    EXPECT_EQ(GetText(message.Get(), PR_SUBJECT_A), "<none>");
}

TEST_F(Messages, HideTheirChangesUntilSaved)
{
    const Bytes id = SaveMessage(*Inbox(), "before");
    {
        const Ref<IMessage> dropped = OpenMessage(id);
        EXPECT_EQ(Set(dropped.Get(), NarrowValue(PR_SUBJECT_A, "after")), S_OK);
        EXPECT_EQ(GetText(dropped.Get(), PR_SUBJECT_A), "after");
    }
    EXPECT_EQ(Subjects(*Inbox()), Texts({"before"}));
}

TEST_F(Messages, ForceOverwritesAnothersSave)
{
    const Bytes id = SaveMessage(*Inbox(), "start");
    const Ref<IMessage> first = OpenMessage(id);
    const Ref<IMessage> second = OpenMessage(id);
    EXPECT_EQ(Set(first.Get(), NarrowValue(PR_SUBJECT_A, "first")), S_OK);
    EXPECT_EQ(Set(second.Get(), NarrowValue(PR_SUBJECT_A, "second")), S_OK);
    EXPECT_EQ(first->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(second->SaveChanges(KEEP_OPEN_READWRITE), MAPI_E_OBJECT_CHANGED);
    EXPECT_EQ(Subjects(*Inbox()), Texts({"first"}));
    EXPECT_EQ(GetText(second.Get(), PR_SUBJECT_A), "second");
    EXPECT_EQ(second->SaveChanges(KEEP_OPEN_READWRITE | FORCE_SAVE), S_OK);
    EXPECT_EQ(Subjects(*Inbox()), Texts({"second"}));
    EXPECT_EQ(Set(second.Get(), NarrowValue(PR_SUBJECT_A, "third")), S_OK);
    EXPECT_EQ(second->SaveChanges(KEEP_OPEN_READONLY), S_OK);
    EXPECT_EQ(Set(second.Get(), NarrowValue(PR_SUBJECT_A, "fourth")), MAPI_E_NO_ACCESS);
}

TEST_F(Messages, OpenedForReadingRefuseChanges)
{
    const Ref<IMessage> message = OpenMessage(SaveMessage(*Inbox()), 0);
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_SUBJECT_A, "x")), MAPI_E_NO_ACCESS);
    EXPECT_EQ(message->SaveChanges(0), MAPI_E_NO_ACCESS);
    EXPECT_EQ(GetLong(message.Get(), PR_ACCESS_LEVEL), 0);
}

TEST_F(Messages, ChangeTheirRecipients)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    EXPECT_EQ(AddRecipient(*message, MODRECIP_ADD, {NarrowValue(PR_DISPLAY_NAME_A, "Ann")}), S_OK);
    EXPECT_EQ(AddRecipient(*message, MODRECIP_ADD,
                           {NarrowValue(PR_DISPLAY_NAME_A, "Bob"), LongValue(PR_RECIPIENT_TYPE, MAPI_CC)}),
              S_OK);
    EXPECT_EQ(AddRecipient(*message, MODRECIP_ADD, {NarrowValue(PR_DISPLAY_NAME_A, "Cid")}), S_OK);
    EXPECT_EQ(Recipients(*message), Texts({"Ann", "Bob", "Cid"}));
    EXPECT_EQ(AddRecipient(*message, MODRECIP_MODIFY,
                           {NarrowValue(PR_DISPLAY_NAME_A, "Anna"), LongValue(PR_RECIPIENT_TYPE, MAPI_TO),
                            LongValue(PR_ROWID, 0)}),
              S_OK);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(Recipients(*message), Texts({"Anna", "Bob", "Cid"}));
    EXPECT_EQ(GetText(message.Get(), PR_DISPLAY_TO_A), "Anna; Cid");
    EXPECT_EQ(GetText(message.Get(), PR_DISPLAY_CC_A), "Bob");
    EXPECT_EQ(AddRecipient(*message, MODRECIP_REMOVE, {LongValue(PR_ROWID, 1)}), S_OK);
    EXPECT_EQ(AddRecipient(*message, MODRECIP_REMOVE, {LongValue(PR_ROWID, 7)}), MAPI_E_NOT_FOUND);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    const Ref<IMessage> again = OpenMessage(GetBytes(message.Get(), PR_ENTRYID));
    EXPECT_EQ(Recipients(*again), Texts({"Anna", "Cid"}));
    EXPECT_EQ(GetText(again.Get(), PR_DISPLAY_CC_A), "");
    EXPECT_EQ(AddRecipient(*again, 0, {NarrowValue(PR_DISPLAY_NAME_A, "Only")}), S_OK);
    EXPECT_EQ(Recipients(*again), Texts({"Only"}));
}

TEST_F(Messages, AreMarkedReadWithoutBeingSaved)
{
    const Bytes id = SaveMessage(*Inbox());
    const Ref<IMessage> message = OpenMessage(id);
    EXPECT_EQ(Set(message.Get(), NarrowValue(PR_SUBJECT_A, "changed")), S_OK);
    EXPECT_EQ(message->SetReadFlag(CLEAR_READ_FLAG), S_OK);
    EXPECT_EQ(GetLong(OpenMessage(id).Get(), PR_MESSAGE_FLAGS) & LONG(MSGFLAG_READ), 0);
    EXPECT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetLong(OpenMessage(id).Get(), PR_MESSAGE_FLAGS) & LONG(MSGFLAG_READ), 0);
    EXPECT_EQ(message->SubmitMessage(0), MAPI_E_NO_SUPPORT);
}

TEST_F(Messages, GiveTheirTablesAsProperties)
{
    const Ref<IMessage> message = NewMessage(*Inbox());
    ULONG number = 0;
    IAttach* attachment = nullptr;
    ASSERT_EQ(message->CreateAttach(nullptr, 0, &number, &attachment), S_OK);
    EXPECT_EQ(attachment->SaveChanges(0), S_OK);
    attachment->Release();
    IUnknown* table = nullptr;
    ASSERT_EQ(message->OpenProperty(PR_MESSAGE_ATTACHMENTS, &IID_IMAPITable, 0, 0, &table), S_OK);
    EXPECT_EQ(Rows(static_cast<IMAPITable*>(table), {PR_ATTACH_NUM}).Count(), 1u);
    ASSERT_EQ(message->OpenProperty(PR_MESSAGE_RECIPIENTS, &IID_IMAPITable, 0, 0, &table), S_OK);
    EXPECT_EQ(Rows(static_cast<IMAPITable*>(table), {PR_ROWID}).Count(), 0u);
    EXPECT_EQ(message->OpenProperty(PR_MESSAGE_RECIPIENTS, &IID_IMAPIFolder, 0, 0, &table),
              MAPI_E_INTERFACE_NOT_SUPPORTED);
}

TEST_F(Messages, AreCopiedWithEverything)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMessage> source = NewMessage(*inbox, "source");
    EXPECT_EQ(AddRecipient(*source, MODRECIP_ADD, {NarrowValue(PR_DISPLAY_NAME_A, "Ann")}), S_OK);
    ULONG number = 0;
    IAttach* attach = nullptr;
    ASSERT_EQ(source->CreateAttach(nullptr, 0, &number, &attach), S_OK);
    const Ref<IAttach> attachOwner = Ref<IAttach>::Adopt(attach);
    EXPECT_EQ(Set(attach, NarrowValue(PR_ATTACH_FILENAME_A, "a.txt")), S_OK);
    EXPECT_EQ(attach->SaveChanges(0), S_OK);
    EXPECT_EQ(source->SaveChanges(KEEP_OPEN_READWRITE), S_OK);

    IMessage* made = nullptr;
    ASSERT_EQ(inbox->CreateMessage(nullptr, 0, &made), S_OK);
    const Ref<IMessage> target = Ref<IMessage>::Adopt(made);
    SizedSPropTagArray(1, without) = {1, {PR_SEARCH_KEY}};
    SPropProblemArray* problems = nullptr;
    EXPECT_EQ(source->CopyTo(0, nullptr, reinterpret_cast<LPSPropTagArray>(&without), 0, nullptr, &IID_IMessage, made,
                             0, &problems),
              S_OK);
    EXPECT_EQ(problems, nullptr);
    EXPECT_EQ(made->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    EXPECT_EQ(GetText(made, PR_SUBJECT_A), "source");
    EXPECT_EQ(Recipients(*made), Texts({"Ann"}));
    EXPECT_TRUE(Get(made, PR_HASATTACH)->Value.b);
    EXPECT_NE(GetBytes(made, PR_SEARCH_KEY), GetBytes(source.Get(), PR_SEARCH_KEY));
}

} // namespace
} // namespace zebstore
