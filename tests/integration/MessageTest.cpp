// Messages, their parts, and which wrapper accepts which object.
#include "tests/integration/Host.h"

#include <functional>
#include <vector>

namespace zeb::test
{
namespace
{

class Messages : public StoreHost
{
protected:
    CZebMessage Saved(const char* subject)
    {
        CZebPropValArray properties(1);
        properties[PR_SUBJECT_A] = subject;
        return Inbox().CreateMessage(properties, true, 0);
    }
    static CComPtr<IMessage> Raw(const CZebMessage& message)
    {
        CComPtr<IMessage> raw;
        ThrowIfFailed(message.GetInterface().QueryInterface(IID_IMessage, raw));
        return raw;
    }
};

TEST_F(Messages, AreInTheirFolderOnceSaved)
{
    CZebPropValArray properties(3);
    properties[PR_SUBJECT_A] = "mine";
    CZebMessage message = Inbox().CreateMessage(properties, false, 0);
    EXPECT_EQ(Contents().GetRowCount(), 0u);
    EXPECT_EQ(FailureOf([&] { message.GetEntryID(); }).result, MAPI_E_INVALID_TYPE) << "not saved, no identifier";
    message.SaveChanges(KEEP_OPEN_READWRITE);
    EXPECT_EQ(Contents().GetRowCount(), 1u);
    EXPECT_STREQ(Opened<CZebMessage>(message.GetEntryID()).GetStringProp(PR_SUBJECT_A), "mine");
    Saved("at once");
    EXPECT_EQ(Contents().GetRowCount(), 2u);
}

TEST_F(Messages, WithoutPropertiesCreationSavesNothing)
{
    CZebPropValArray none(3);
    CZebMessage message = Inbox().CreateMessage(none, true, 0);
    EXPECT_EQ(Contents().GetRowCount(), 0u);
    message.SaveChanges(KEEP_OPEN_READWRITE);
    EXPECT_EQ(Contents().GetRowCount(), 1u);
}

TEST_F(Messages, KnowTheirPlace)
{
    CZebMessage message = Saved("mine");
    EXPECT_EQ(message.GetObjectType(), static_cast<ULONG>(MAPI_MESSAGE));
    const CZebBinary inbox = Inbox().GetEntryID();
    EXPECT_TRUE(m_session->CompareEntryIDs(message.GetParentID(), inbox));
    const CZebBinary top = m_store->GetSpecialFolderEntryID(PR_IPM_SUBTREE_ENTRYID);
    const CZebBinary deleted = m_store->GetSpecialFolderEntryID(PR_IPM_WASTEBASKET_ENTRYID);
    EXPECT_TRUE(message.IsChildOf(*m_session, inbox, true));
    EXPECT_FALSE(message.IsChildOf(*m_session, top, true));
    EXPECT_TRUE(message.IsChildOf(*m_session, top, false));
    EXPECT_FALSE(message.IsChildOf(*m_session, deleted, false));
    EXPECT_FALSE(message.IsChildOf(*m_session, message.GetEntryID(), false));
    EXPECT_FALSE(message.IsChildOf(*m_session, SBinary{0, nullptr}, false));
    CZebFolder root = m_store->OpenRootFolder(MAPI_BEST_ACCESS);
    EXPECT_TRUE(message.IsChildOf(*m_session, root.GetEntryID(), false));
    EXPECT_FALSE(root.IsChildOf(*m_session, root.GetEntryID(), false));
    EXPECT_FALSE(m_store->IsChildOf(*m_session, root.GetEntryID(), false));
}

TEST_F(Messages, AreSharedByTheirWrappersCopies)
{
    CZebMessage message = Saved("before");
    CZebMessage copy(message);
    copy.SetDisplayName("shown");
    EXPECT_STREQ(message.GetDisplayName(), "shown");
    message.Free();
    EXPECT_STREQ(copy.GetDisplayName(), "shown");
    CZebPropObj other;
    static_cast<CZebIProp&>(other) = copy;
    copy.Free();
    EXPECT_STREQ(other.GetDisplayName(), "shown");
}

TEST_F(Messages, OutliveTheirStoreAndSession)
{
    CZebMessage message = Saved("still here");
    LogOff();
    EXPECT_STREQ(message.GetStringProp(PR_SUBJECT_A), "still here");
    message.SetDisplayName("and writable");
    message.Free();
    LogOnAgain();
    EXPECT_EQ(Contents().GetRowCount(), 1u);
}

TEST_F(Messages, HaveRecipientsThroughTheirInterface)
{
    CZebMessage message = Saved("to two");
    CZebPropValArray to(2), copyTo(2);
    to[PR_DISPLAY_NAME_A] = "One";
    to[PR_RECIPIENT_TYPE] = static_cast<LONG>(MAPI_TO);
    copyTo[PR_DISPLAY_NAME_A] = "Two";
    copyTo[PR_RECIPIENT_TYPE] = static_cast<LONG>(MAPI_CC);
    SizedADRLIST(2, list) = {2, {{0, to.Count(), to}, {0, copyTo.Count(), copyTo}}};
    const CComPtr<IMessage> raw = Raw(message);
    ThrowIfFailed(raw->ModifyRecipients(MODRECIP_ADD, reinterpret_cast<LPADRLIST>(&list)), raw);
    message.SaveChanges(KEEP_OPEN_READWRITE);

    CZebMessage again = Opened<CZebMessage>(message.GetEntryID());
    CComPtr<IMAPITable> recipients;
    ThrowIfFailed(Raw(again)->GetRecipientTable(0, recipients.Put()));
    CZebTable table(recipients.Get());
    table.SetColumns(2, PR_DISPLAY_NAME_A, PR_RECIPIENT_TYPE);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), 2u);
    EXPECT_STREQ(rows[0][PR_DISPLAY_NAME_A].String(true), "One");
    EXPECT_EQ(static_cast<LONG>(rows[1][PR_RECIPIENT_TYPE]), MAPI_CC);
    EXPECT_STREQ(again.GetStringProp(PR_DISPLAY_TO_A), "One");
    EXPECT_STREQ(again.GetStringProp(PR_DISPLAY_CC_A), "Two");
}

TEST_F(Messages, HaveAttachmentsAsPlainObjects)
{
    CZebMessage message = Saved("with a file");
    {
        CComPtr<IAttach> made;
        ULONG number = 0;
        ThrowIfFailed(Raw(message)->CreateAttach(nullptr, 0, &number, made.Put()));
        CZebPropObj attachment(made.Get());
        BYTE bytes[] = {1, 0, 2};
        CZebPropValArray properties(3);
        properties[PR_ATTACH_LONG_FILENAME_A] = "a.bin";
        properties[PR_ATTACH_METHOD] = static_cast<LONG>(ATTACH_BY_VALUE);
        properties[PR_ATTACH_DATA_BIN] = SBinary{sizeof bytes, bytes};
        attachment.SetProps(properties, true, nullptr);
    }
    message.SaveChanges(KEEP_OPEN_READWRITE);
    CComPtr<IAttach> opened;
    ThrowIfFailed(Raw(Opened<CZebMessage>(message.GetEntryID()))->OpenAttach(0, nullptr, 0, opened.Put()));
    CZebPropObj attachment(opened.Get());
    EXPECT_EQ(attachment.GetObjectType(), static_cast<ULONG>(MAPI_ATTACH));
    EXPECT_STREQ(attachment.GetStringProp(PR_ATTACH_LONG_FILENAME_A), "a.bin");
    EXPECT_STREQ(attachment.GetBin(PR_ATTACH_DATA_BIN).String(), "010002");
}

TEST_F(Messages, HoldMessagesInAttachments)
{
    CZebMessage message = Saved("outer");
    {
        CComPtr<IAttach> made;
        ULONG number = 0;
        ThrowIfFailed(Raw(message)->CreateAttach(nullptr, 0, &number, made.Put()));
        CZebPropObj attachment(made.Get());
        CZebPropValArray properties(1);
        properties[PR_ATTACH_METHOD] = static_cast<LONG>(ATTACH_EMBEDDED_MSG);
        attachment.SetProps(properties, false, nullptr);
        CZebMessage inner;
        ThrowIfFailed(made->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, MAPI_CREATE | MAPI_MODIFY, &inner),
                      made);
        CZebPropValArray subject(1);
        subject[PR_SUBJECT_A] = "inner";
        inner.SetProps(subject, true, nullptr);
        attachment.SaveChanges(KEEP_OPEN_READWRITE);
    }
    message.SaveChanges(KEEP_OPEN_READWRITE);
    CComPtr<IAttach> opened;
    ThrowIfFailed(Raw(Opened<CZebMessage>(message.GetEntryID()))->OpenAttach(0, nullptr, 0, opened.Put()));
    CZebMessage inner;
    ThrowIfFailed(opened->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &inner), opened);
    EXPECT_STREQ(inner.GetStringProp(PR_SUBJECT_A), "inner");
    EXPECT_EQ(FailureOf([&] { inner.GetEntryID(); }).result, MAPI_E_INVALID_TYPE);
    EXPECT_EQ(FailureOf([&] { inner.IsChildOf(*m_session, message.GetEntryID(), false); }).result, MAPI_E_INVALID_TYPE);
}

/// A wrapper class, and whether it takes stores, folders and messages.
struct Taking
{
    const char* name;
    std::function<std::unique_ptr<CZebIProp>()> make;
    bool takes[3];
};

template <class Wrapper>
Taking TakingOf(const char* name, bool store, bool folder, bool message)
{
    return {name, [] { return std::make_unique<Wrapper>(); }, {store, folder, message}};
}

TEST_F(Messages, WrappersTakeOnlyTheirTypes)
{
    const Taking wrappers[] = {
        TakingOf<CZebIProp>("IProp", true, true, true),
        TakingOf<CZebPropObj>("PropObj", true, true, true),
        TakingOf<CZebMsgStore>("MsgStore", true, false, false),
        TakingOf<CZebContainer>("Container", false, true, false),
        TakingOf<CZebFolder>("Folder", false, true, false),
        TakingOf<CZebMessage>("Message", false, false, true),
        TakingOf<CZebMailUser>("MailUser", false, false, false),
        TakingOf<CZebDistList>("DistList", false, false, false),
    };
    CZebMessage message = Saved("a message");
    const CZebBinary ids[] = {m_store->GetEntryID(), Inbox().GetEntryID(), message.GetEntryID()};
    const ULONG types[] = {MAPI_STORE, MAPI_FOLDER, MAPI_MESSAGE};
    CZebFolder inbox = Inbox();
    const std::function<void(const SBinary&, CZebIProp&)> openers[] = {[&](const SBinary& id, CZebIProp& target)
    { m_session->OpenEntry(id, target, MAPI_BEST_ACCESS); }, [&](const SBinary& id, CZebIProp& target)
    { m_store->OpenEntry(id, target, MAPI_BEST_ACCESS); }, [&](const SBinary& id, CZebIProp& target)
    { inbox.OpenEntry(id, target, MAPI_BEST_ACCESS); }};
    for (const Taking& each : wrappers)
    {
        for (size_t opener = 0; opener < 3; ++opener)
        {
            for (size_t kind = opener == 0 ? 0 : 1; kind < 3; ++kind)
            {
                SCOPED_TRACE(std::string(each.name) + ", kind " + std::to_string(kind));
                const std::unique_ptr<CZebIProp> target = each.make();
                *target = message;
                if (each.takes[kind])
                {
                    openers[opener](ids[kind], *target);
                    EXPECT_EQ(target->GetObjectType(), types[kind]);
                    EXPECT_TRUE(m_session->CompareEntryIDs(target->GetEntryID(), ids[kind]));
                    continue;
                }
                // A mail user requests no specific interface, so the object is opened and refused because of its type.
                const bool opens = *target->GetInterfaceCIID() == IID_IMAPIProp;
                EXPECT_EQ(FailureOf([&] { openers[opener](ids[kind], *target); }).result,
                          opens ? MAPI_E_INVALID_TYPE : MAPI_E_INTERFACE_NOT_SUPPORTED);
                EXPECT_FALSE(target->IsValid());
            }
        }
    }
}

} // namespace
} // namespace zeb::test
