#include "tests/zebstore/provider/ProviderFixture.h"
#include "tests/zebstore/storage/TableCopy.h"

#include <fstream>

namespace zebstore
{
namespace
{

using test::CopyingSink;

/// The notifications of a store's sink in a comparable form.
struct Received
{
    ULONG event = 0;
    ULONG type = 0;
    Bytes entry;
    Bytes parent;
    Bytes oldParent;
};

class ObjectSink final : public Object<IMAPIAdviseSink>
{
public:
    ULONG STDMETHODCALLTYPE OnNotify(ULONG count, LPNOTIFICATION notifications) override
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        for (ULONG i = 0; i < count; ++i)
        {
            const OBJECT_NOTIFICATION& object = notifications[i].info.obj;
            m_received.push_back(
                {notifications[i].ulEventType, object.ulObjType, BytesOf(object.cbEntryID, object.lpEntryID),
                 BytesOf(object.cbParentID, object.lpParentID), BytesOf(object.cbOldParentID, object.lpOldParentID)});
        }
        m_heard.notify_all();
        return 0;
    }
    /// The next notification; an empty one after ten seconds.
    Received Next()
    {
        std::unique_lock<std::mutex> hold(m_lock);
        if (!m_heard.wait_for(hold, std::chrono::seconds(10), [&] { return m_next < m_received.size(); }))
        {
            return {};
        }
        return m_received[m_next++];
    }
    bool IsAllRead()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_next == m_received.size();
    }

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IMAPIAdviseSink}); }
    static Bytes BytesOf(ULONG size, const ENTRYID* id)
    {
        const BYTE* bytes = reinterpret_cast<const BYTE*>(id);
        return Bytes(bytes, bytes + size);
    }

    std::mutex m_lock;
    std::condition_variable m_heard;
    std::vector<Received> m_received;
    size_t m_next = 0;
};

class Notifications : public Provider
{
protected:
    static constexpr ULONG StoreEvents = fnevObjectCreated | fnevObjectDeleted | fnevObjectModified | fnevObjectMoved;

    static Ref<IMAPITable> Contents(IMAPIFolder& folder)
    {
        IMAPITable* table = nullptr;
        EXPECT_EQ(folder.GetContentsTable(0, &table), S_OK);
        SizedSPropTagArray(2, columns) = {2, {PR_SUBJECT_A, PR_INSTANCE_KEY}};
        EXPECT_EQ(table->SetColumns(reinterpret_cast<LPSPropTagArray>(&columns), 0), S_OK);
        return Ref<IMAPITable>::Adopt(table);
    }
    static void ExpectReceived(const Received& received, ULONG event, ULONG type, const Bytes& entry)
    {
        EXPECT_EQ(received.event, event);
        EXPECT_EQ(received.type, type);
        EXPECT_EQ(received.entry, entry);
    }
    static Bytes IdOf(IMAPIFolder& folder) { return GetBytes(&folder, PR_ENTRYID); }

    const Ref<ObjectSink> m_sink = Ref<ObjectSink>::Adopt(new ObjectSink);
};

TEST_F(Notifications, ATableReportsItsFoldersChanges)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    test::Followed followed(Contents(*inbox));
    SaveMessage(*inbox, "first");
    ASSERT_TRUE(followed.Sink().Receives(1));
    const Bytes second = SaveMessage(*inbox, "second");
    ASSERT_TRUE(followed.Sink().Receives(2));
    EntryList list(second);
    EXPECT_EQ(inbox->SetReadFlags(&list, 0, nullptr, CLEAR_READ_FLAG), S_OK);
    ASSERT_TRUE(followed.Sink().Receives(3));
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    ASSERT_TRUE(followed.Sink().Receives(4));
    EXPECT_EQ(followed.Sink().Events(),
              (std::vector<ULONG>{TABLE_ROW_ADDED, TABLE_ROW_ADDED, TABLE_ROW_MODIFIED, TABLE_ROW_DELETED}));
    EXPECT_EQ(followed.Sink().Rows(), test::ReadCopy(followed.Table()));
}

TEST_F(Notifications, AnotherSessionsCommitsAreReported)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    test::Followed followed(Contents(*inbox));
    IMAPISession* other = nullptr;
    ASSERT_EQ(MAPILogonEx(0, Text("Main"), nullptr, MAPI_EXTENDED | MAPI_NEW_SESSION, &other), S_OK);
    const Ref<IMAPISession> mine = std::exchange(m_session, Ref<IMAPISession>::Adopt(other));
    SaveMessage(*Inbox(), "from the other");
    ASSERT_TRUE(followed.Sink().Receives(1));
    EXPECT_NE(followed.Sink().Rows().at(0).cells.at(0).find("from the other"), std::string::npos);
}

TEST_F(Notifications, TheStoreReportsMessagesAndFolders)
{
    const Ref<IMsgStore> store = OpenStore();
    const Ref<IMAPIFolder> inbox = Inbox();
    ULONG_PTR connection = 0;
    ASSERT_EQ(store->Advise(0, nullptr, StoreEvents, m_sink.Get(), &connection), S_OK);
    const Bytes message = SaveMessage(*inbox);
    const Received created = m_sink->Next();
    ExpectReceived(created, fnevObjectCreated, MAPI_MESSAGE, message);
    EXPECT_EQ(created.parent, IdOf(*inbox));
    EXPECT_EQ(Set(OpenMessage(message).Get(), NarrowValue(PR_SUBJECT_A, "unsaved")), S_OK);
    EntryList list(message);
    EXPECT_EQ(inbox->SetReadFlags(&list, 0, nullptr, CLEAR_READ_FLAG), S_OK);
    ExpectReceived(m_sink->Next(), fnevObjectModified, MAPI_MESSAGE, message);
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    ExpectReceived(m_sink->Next(), fnevObjectDeleted, MAPI_MESSAGE, message);

    const Ref<IMAPIFolder> box = NewFolder(*inbox, "Box");
    const Bytes boxId = IdOf(*box);
    ExpectReceived(m_sink->Next(), fnevObjectCreated, MAPI_FOLDER, boxId);
    const Ref<IMAPIFolder> shelf = NewFolder(*inbox, "Shelf");
    ExpectReceived(m_sink->Next(), fnevObjectCreated, MAPI_FOLDER, IdOf(*shelf));
    EXPECT_EQ(inbox->CopyFolder(static_cast<ULONG>(boxId.size()), Id(boxId), nullptr, shelf.Get(), nullptr, 0, nullptr,
                                FOLDER_MOVE),
              S_OK);
    const Received moved = m_sink->Next();
    ExpectReceived(moved, fnevObjectMoved, MAPI_FOLDER, boxId);
    EXPECT_EQ(moved.parent, IdOf(*shelf));
    EXPECT_EQ(moved.oldParent, IdOf(*inbox));
    EXPECT_EQ(shelf->DeleteFolder(static_cast<ULONG>(boxId.size()), Id(boxId), 0, nullptr, 0), S_OK);
    ExpectReceived(m_sink->Next(), fnevObjectDeleted, MAPI_FOLDER, boxId);
    EXPECT_EQ(store->Unadvise(connection), S_OK);
    EXPECT_EQ(store->Unadvise(connection), MAPI_E_INVALID_PARAMETER);
    EXPECT_TRUE(m_sink->IsAllRead());
}

TEST_F(Notifications, ASinkMayFollowOneFolder)
{
    const Ref<IMAPIFolder> inbox = Inbox();
    const Ref<IMAPIFolder> box = NewFolder(*inbox, "Box");
    const Bytes boxId = IdOf(*box);
    ULONG_PTR connection = 0;
    ASSERT_EQ(
        Session().Advise(static_cast<ULONG>(boxId.size()), Id(boxId), fnevObjectCreated, m_sink.Get(), &connection),
        S_OK);
    SaveMessage(*inbox);
    const Bytes message = SaveMessage(*box);
    ExpectReceived(m_sink->Next(), fnevObjectCreated, MAPI_MESSAGE, message);
    EXPECT_EQ(Session().Unadvise(connection), S_OK);
    const Bytes storeId = StoreId();
    ASSERT_EQ(
        Session().Advise(static_cast<ULONG>(storeId.size()), Id(storeId), fnevObjectCreated, m_sink.Get(), &connection),
        S_OK);
    const Bytes other = SaveMessage(*inbox);
    ExpectReceived(m_sink->Next(), fnevObjectCreated, MAPI_MESSAGE, other);
    EXPECT_TRUE(m_sink->IsAllRead());
    // Logoff ends the session's notifications.
    EXPECT_EQ(Session().Logoff(0, 0, 0), S_OK);
    m_sink->AddRef();
    EXPECT_EQ(m_sink->Release(), 1u);
}

TEST_F(Notifications, ASinkMayFollowOneMessage)
{
    const Ref<IMsgStore> store = OpenStore();
    const Ref<IMAPIFolder> inbox = Inbox();
    const Bytes followed = SaveMessage(*inbox, "followed"), other = SaveMessage(*inbox, "other");
    ULONG_PTR connection = 0;
    ASSERT_EQ(store->Advise(static_cast<ULONG>(followed.size()), Id(followed), fnevObjectModified | fnevObjectDeleted,
                            m_sink.Get(), &connection),
              S_OK);
    EntryList others(other), list(followed);
    EXPECT_EQ(inbox->SetReadFlags(&others, 0, nullptr, CLEAR_READ_FLAG), S_OK);
    EXPECT_EQ(Set(inbox.Get(), NarrowValue(PR_COMMENT_A, "the folder itself")), S_OK);
    EXPECT_EQ(inbox->SetReadFlags(&list, 0, nullptr, CLEAR_READ_FLAG), S_OK);
    ExpectReceived(m_sink->Next(), fnevObjectModified, MAPI_MESSAGE, followed);
    EXPECT_EQ(inbox->DeleteMessages(&others, 0, nullptr, 0), S_OK);
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    ExpectReceived(m_sink->Next(), fnevObjectDeleted, MAPI_MESSAGE, followed);
    EXPECT_EQ(store->Unadvise(connection), S_OK);
    EXPECT_TRUE(m_sink->IsAllRead());
}

TEST_F(Notifications, OnlyTheEventsAskedForAreReported)
{
    const Ref<IMsgStore> store = OpenStore();
    const Ref<IMAPIFolder> inbox = Inbox();
    ULONG_PTR connection = 0;
    ASSERT_EQ(store->Advise(0, nullptr, fnevObjectDeleted, m_sink.Get(), &connection), S_OK);
    const Bytes message = SaveMessage(*inbox);
    EntryList list(message);
    EXPECT_EQ(inbox->SetReadFlags(&list, 0, nullptr, CLEAR_READ_FLAG), S_OK);
    EXPECT_EQ(inbox->DeleteMessages(&list, 0, nullptr, 0), S_OK);
    ExpectReceived(m_sink->Next(), fnevObjectDeleted, MAPI_MESSAGE, message);
    EXPECT_EQ(store->Unadvise(connection), S_OK);
    EXPECT_TRUE(m_sink->IsAllRead());
}

TEST_F(Notifications, UnsupportedEventsAreRefused)
{
    const Ref<IMAPITable> table = Contents(*Inbox());
    ULONG_PTR connection = 0xABABABABABABABAB;
    EXPECT_EQ(table->Advise(fnevObjectCreated, m_sink.Get(), &connection), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(connection, 0u);
    EXPECT_EQ(table->Advise(fnevTableModified, m_sink.Get(), nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(table->Unadvise(77), MAPI_E_INVALID_PARAMETER);
    const Ref<IMsgStore> store = OpenStore();
    EXPECT_EQ(store->Advise(0, nullptr, fnevNewMail, m_sink.Get(), &connection), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(store->Advise(0, nullptr, StoreEvents, nullptr, &connection), MAPI_E_INVALID_PARAMETER);
    Bytes cut = InboxId();
    cut.pop_back();
    EXPECT_EQ(store->Advise(static_cast<ULONG>(cut.size()), Id(cut), StoreEvents, m_sink.Get(), &connection),
              MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(Session().Advise(0, nullptr, StoreEvents, m_sink.Get(), &connection), MAPI_E_NO_SUPPORT);
}

TEST_F(Notifications, FixedTablesTakeSinksToo)
{
    IMAPITable* table = nullptr;
    ASSERT_EQ(Session().GetMsgStoresTable(0, &table), S_OK);
    const Ref<IMAPITable> owner = Ref<IMAPITable>::Adopt(table);
    ULONG_PTR connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, m_sink.Get(), &connection), S_OK);
    SaveMessage(*Inbox());
    EXPECT_EQ(table->Unadvise(connection), S_OK);
    EXPECT_TRUE(m_sink->IsAllRead());
}

TEST_F(Notifications, AFaultyAdviseLeavesNothing)
{
    const Ref<IMAPITable> table = Contents(*Inbox());
    Switches switches;
    switches.failingCall = 1;
    switches.failingCode = MAPI_E_NO_SUPPORT;
    ApplySwitches(switches);
    ULONG_PTR connection = 7;
    EXPECT_EQ(table->Advise(fnevTableModified, m_sink.Get(), &connection), MAPI_E_NO_SUPPORT);
    EXPECT_TRUE(FaultHappened());
    ApplySwitches({});
    m_sink->AddRef();
    EXPECT_EQ(m_sink->Release(), 1u);
    test::Followed followed(table);
    SaveMessage(*Inbox());
    EXPECT_TRUE(followed.Sink().Receives(1));
}

TEST_F(Notifications, UninitializingEndsTheThreadFirst)
{
    const std::string trace = m_folder.File("trace.txt");
    {
        const Ref<IMAPIFolder> inbox = Inbox();
        test::Followed followed(Contents(*inbox));
        SaveMessage(*inbox);
        ASSERT_TRUE(followed.Sink().Receives(1));
    }
    m_session = {};
    Switches switches;
    switches.traceFile = trace;
    ApplySwitches(switches);
    MAPIUninitialize();
    ApplySwitches({});
    std::ifstream file(trace);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    // One live object: the fixture's sink.
    EXPECT_NE(text.find("live objects 1, live buffers 0, bad frees 0\n"), std::string::npos) << text;
    EXPECT_EQ(MAPIInitialize(nullptr), S_OK);
}

TEST_F(Notifications, ATableMayOutliveTheThread)
{
    const Ref<IMAPITable> table = Contents(*Inbox());
    const Ref<CopyingSink> before = Ref<CopyingSink>::Adopt(new CopyingSink);
    ULONG_PTR connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, before.Get(), &connection), S_OK);
    const Ref<IMAPIFolder> inbox = Inbox();
    MAPIUninitialize();
    SaveMessage(*inbox);
    // Several times the delay with which another process's commit is reported.
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_TRUE(before->Events().empty()) << "notified after the end";
    EXPECT_EQ(MAPIInitialize(nullptr), S_OK);
    test::Followed followed(table);
    SaveMessage(*Inbox());
    EXPECT_TRUE(followed.Sink().Receives(1)) << "the thread came again";
    EXPECT_EQ(table->Unadvise(connection), S_OK);
}

} // namespace
} // namespace zebstore
