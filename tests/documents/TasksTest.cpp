// Both forms of each task of docs/from-mapi.md do the same on one store.
#include "tests/documents/Tasks.h"
#include "tests/integration/Content.h"

#include <gtest/gtest.h>

namespace zeb::test
{
namespace
{

struct Tasks : StoreHost
{
    CComPtr<IMAPIFolder> RawInbox()
    {
        CComPtr<IMAPIFolder> inbox;
        ThrowIfFailed(raw::OpenInbox(m_session->GetInterface().Get(), inbox.Put()));
        return inbox;
    }
    static CComPtr<IMessage> RawMessage(CZebMessage& message)
    {
        CComPtr<IMessage> found;
        ThrowIfFailed(message.GetInterface().QueryInterface(IID_IMessage, found));
        return found;
    }
    CComPtr<IMAPITable> RawContents()
    {
        CComPtr<IMAPITable> contents;
        ThrowIfFailed(RawInbox()->GetContentsTable(MAPI_UNICODE, contents.Put()));
        return contents;
    }
    CZebMessage First() { return Opened<CZebMessage>(CZebBinary(FirstId())); }
    CZebBinary FirstId()
    {
        CZebTable contents = Contents();
        contents.SetColumns(1, PR_ENTRYID);
        CZebRowSet rows;
        contents.QueryRows(&rows, 1, nullptr, nullptr);
        return static_cast<const SBinary&>(rows[0][PR_ENTRYID]);
    }
};

ULONG g_sessions = 0;

TEST_F(Tasks, StartAndEndMapi)
{
    const auto use = [](IMAPISession* session)
    {
        g_sessions += session != nullptr;
        return S_OK;
    };
    LogOff();
    EXPECT_EQ(raw::WithSession(use), S_OK);
    Stop();
    wrapped::WithSession([](CZebSession& session) { g_sessions += session.IsValid(); });
    EXPECT_EQ(g_sessions, 2u);
    EXPECT_FALSE(Zeb_GetMAPI().WasInitialized());
}

TEST_F(Tasks, OpenTheInbox)
{
    CZebFolder inbox(RawInbox().Get());
    CZebFolder same = wrapped::OpenInbox(*m_session);
    EXPECT_TRUE(m_session->CompareEntryIDs(inbox.GetEntryID(), same.GetEntryID()));
}

TEST_F(Tasks, ReadRowsAndSearch)
{
    for (const char* subject : {"Lunch today", "Plans", "no lunch"})
    {
        AddMessage(subject, 1);
    }
    std::vector<Text> subjects;
    CComPtr<IMAPITable> table = RawContents();
    ASSERT_EQ(raw::ReadSubjects(table.Get(), subjects), S_OK);
    CZebTable contents = Contents();
    EXPECT_EQ(subjects.size(), 3u);
    EXPECT_EQ(wrapped::ReadSubjects(contents), subjects);

    CZebTable last = Contents();
    last.SetColumns(2, PR_ENTRYID, PR_SUBJECT_W);
    CZebRowSet rows;
    last.QueryRows(&rows, 0, nullptr, nullptr);
    Opened<CZebMessage>(CZebBinary(static_cast<const SBinary&>(rows[2][PR_ENTRYID]))).SetReadFlag(CLEAR_READ_FLAG);
    ASSERT_EQ(raw::RestrictToUnread(table.Get(), ZEBW("LUNCH")), S_OK);
    wrapped::RestrictToUnread(contents, ZEBW("LUNCH"));
    subjects.clear();
    ASSERT_EQ(raw::ReadSubjects(table.Get(), subjects), S_OK);
    EXPECT_EQ(subjects, std::vector<Text>{ZEBW("no lunch")});
    EXPECT_EQ(wrapped::ReadSubjects(contents), subjects);
}

TEST_F(Tasks, ReadALongBody)
{
    AddMessage("long", 1, 100000);
    CZebMessage message = First();
    Text body;
    ASSERT_TRUE(SUCCEEDED(raw::ReadBody(RawMessage(message).Get(), body)));
    EXPECT_EQ(body, Text(100000, WCHAR('b')));
    EXPECT_EQ(body, wrapped::ReadBody(message).GetString());
}

TEST_F(Tasks, CreateAMessage)
{
    CComPtr<IMessage> created;
    CZebFolder inbox = Inbox();
    ASSERT_EQ(raw::CreateMessage(RawInbox().Get(), ZEBW("one"), ZEBW("a@example.org"), created.Put()), S_OK);
    CZebMessage message(created.Get());
    CZebMessage other = wrapped::CreateMessage(inbox, ZEBW("two"), ZEBW("a@example.org"));
    EXPECT_EQ(SubjectsOf(inbox), (Names{"one", "two"}));
    EXPECT_EQ(Column(message.GetRecipientTable(), PR_EMAIL_ADDRESS_W), Names{"a@example.org"});
    EXPECT_EQ(Column(other.GetRecipientTable(), PR_EMAIL_ADDRESS_W), Names{"a@example.org"});
}

TEST_F(Tasks, WriteANamedProperty)
{
    AddMessage("stars", 1);
    for (const LONG stars : {3, 4})
    {
        CZebMessage message = First();
        if (stars == 3)
        {
            ASSERT_EQ(raw::WriteStars(RawMessage(message).Get(), stars), S_OK);
        }
        else
        {
            wrapped::WriteStars(message, stars);
        }
        CZebMessage again = First();
        EXPECT_EQ(NumberOf(again, again.GetNamedTag(TaskSet, ZEBW("Stars"), PT_LONG, false)), stars);
    }
}

TEST_F(Tasks, ExplainAFailure)
{
    CZebFolder inbox = Inbox();
    MakeFolder(inbox, "full");
    CZebFolder full = inbox.OpenFolderByNameA("full");
    SaveMessage(full, "kept");
    std::string text, more;
    EXPECT_EQ(raw::DeleteFolder(RawInbox().Get(), full.GetEntryID(), text), MAPI_E_HAS_MESSAGES);
    wrapped::DeleteFolder(inbox, full.GetEntryID(), more);
    EXPECT_NE(text, "");
    EXPECT_EQ(more.rfind("DeleteFolder", 0), 0u) << more;
    EXPECT_NE(more.find(text), std::string::npos) << more;
}

} // namespace
} // namespace zeb::test
