#include "zebapi/MsgStore.h"
#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/SESSION.h"

using namespace zeb::test;

namespace
{

class OpenStore : public CZebMsgStore
{
public:
    using CZebMsgStore::CZebMsgStore;
    using CZebMsgStore::SetWAB;
    void MarkWAB() { SetWAB(true); }
};

class MsgStore : public ObjectsTest
{
protected:
    MsgStore()
    {
        m_double.m_receiveFolder = "in";
        m_double.m_bag.Set(PR_IPM_WASTEBASKET_ENTRYID, "bin");
        m_inbox.m_bag.Set(0x36D10102, "con");
        m_message.m_bag.Set(PR_PARENT_ENTRYID, "in");
        m_double.m_openable.Add("", &m_root, MAPI_FOLDER);
        m_double.m_openable.Add("in", &m_inbox, MAPI_FOLDER);
        m_double.m_openable.Add("bin", &m_bin, MAPI_FOLDER);
        m_double.m_openable.Add("con", &m_contacts, MAPI_FOLDER);
        m_double.m_openable.Add("m", &m_message, MAPI_MESSAGE);
    }

    RecordingFolder m_root{m_journal, "root"};
    RecordingFolder m_inbox{m_journal, "inbox"};
    RecordingFolder m_bin{m_journal, "bin"};
    RecordingFolder m_contacts{m_journal, "contacts"};
    RecordingMessage m_message{m_journal};
    RecordingStore m_double{m_journal};
    OpenStore m_store{&m_double};
};

} // namespace

TEST_F(MsgStore, IsOneOfItsType)
{
    EXPECT_TRUE(*m_store.GetInterfaceCIID() == IID_IMsgStore);
    EXPECT_EQ(m_store.GetMAPIType(), static_cast<ULONG>(MAPI_STORE));
    CZebMsgStore copy(m_store);
    CZebMsgStore assigned;
    assigned = m_store;
    EXPECT_EQ(m_double.References(), 3u);
}

TEST_F(MsgStore, NoBytesOpenTheRoot)
{
    const CZebFolder root = m_store.OpenRootFolder(0x10);
    EXPECT_EQ(m_root.References(), 1u);
    EXPECT_EQ(Calls(), (Lines{"store: OpenEntry(-,IMAPIFolder,0x10)"}));
}

TEST_F(MsgStore, TheInboxIsTheReceiveFolder)
{
    const CZebFolder inbox = m_store.OpenInboxFolder(3);
    EXPECT_EQ(m_inbox.References(), 1u);
    EXPECT_EQ(Calls(), (Lines{"store: GetReceiveFolder(null,0x0,null)", "store: OpenEntry(696E,IMAPIFolder,0x3)"}));
    m_double.Fail("GetReceiveFolder", MAPI_E_NO_SUPPORT);
    m_double.m_error = "none here";
    EXPECT_EQ(Described([&] { m_store.OpenInboxFolder(0); }),
              "Ver:1, Error:none here, Component:store, LowLewelError:2, Context:3 \n");
}

TEST_F(MsgStore, TheInboxNamesTheContactsFolder)
{
    const CZebFolder contacts = m_store.OpenContactsFolder(3);
    EXPECT_EQ(m_contacts.References(), 1u);
    EXPECT_EQ(Calls(), (Lines{"store: GetReceiveFolder(null,0x0,null)", "store: OpenEntry(696E,IMAPIFolder,0x10)",
                              "inbox: GetProps([0x36D10102],0x0)", "store: OpenEntry(636F6E,IMAPIFolder,0x3)"}));
}

TEST_F(MsgStore, TheStoreNamesSpecialFolders)
{
    const CZebFolder bin = m_store.OpenSpecialFolder(PR_IPM_WASTEBASKET_ENTRYID, 3);
    EXPECT_EQ(m_bin.References(), 1u);
    EXPECT_EQ(Calls(), (Lines{"store: GetProps([0x35E30102],0x0)", "store: OpenEntry(62696E,IMAPIFolder,0x3)"}));
    EXPECT_EQ(Thrown([&] { m_store.GetSpecialFolderEntryID(PR_IPM_OUTBOX_ENTRYID); }), MAPI_E_INVALID_TYPE);
}

TEST_F(MsgStore, OpenedObjectsAreMarkedAndChecked)
{
    m_store.MarkWAB();
    CZebMessage message;
    m_store.OpenEntry(ID("m"), message, 0);
    EXPECT_TRUE(message.IsWAB());
    CZebFolder folder;
    EXPECT_EQ(Thrown([&] { m_store.OpenEntry(ID("m"), folder, 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(folder.IsValid());
}

TEST_F(MsgStore, NonStoresRaiseNoInterface)
{
    CZebMessage target(&m_message);
    CZebMsgStore empty;
    EXPECT_EQ(Raised([&] { empty.OpenEntry(ID("m"), target, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenInboxFolder(0); }), E_POINTER);
    m_double.RefuseInterfaces();
    EXPECT_EQ(Raised([&] { m_store.OpenEntry(ID("m"), target, 0); }), E_NOINTERFACE);
    EXPECT_EQ(Raised([&] { m_store.OpenInboxFolder(0); }), E_NOINTERFACE);
    EXPECT_TRUE(target.IsValid());
}

TEST_F(MsgStore, HardDeletionAsksTheFirstsFolder)
{
    SBinary ids[] = {ID("m"), ID("elsewhere")};
    SBinaryArray list = {2, ids};
    m_store.DeleteMessages(&list, true);
    EXPECT_EQ(Calls(), (Lines{"store: OpenEntry(6D,IMessage,0x10)", "message: GetProps([0xE090102],0x0)",
                              "store: OpenEntry(696E,IMAPIFolder,0x10)",
                              "inbox: DeleteMessages([6D,656C73657768657265],0x0,progress null,0x0)"}));
}

TEST_F(MsgStore, SoftDeletionMovesToDeletedItems)
{
    m_inbox.KeepLists();
    m_store.DeleteMessage(ID("m"), false);
    EXPECT_EQ(Calls(), (Lines{"store: OpenEntry(6D,IMessage,0x10)", "message: GetProps([0xE090102],0x0)",
                              "store: OpenEntry(696E,IMAPIFolder,0x10)", "store: GetProps([0x35E30102],0x0)",
                              "store: OpenEntry(62696E,IMAPIFolder,0x10)",
                              "inbox: CopyMessages([6D],IMAPIFolder,bin,0x0,progress null,0x1)"}));
    m_inbox.FreeLists();
}

TEST_F(MsgStore, DeletedMessagesMoveOntoTheirFolder)
{
    RecordingMessage deleted(m_journal, "deleted");
    deleted.m_bag.Set(PR_PARENT_ENTRYID, "bin");
    m_double.m_openable.Add("d", &deleted, MAPI_MESSAGE);
    m_bin.Fail("CopyMessages", MAPI_E_FOLDER_CYCLE);
    SBinary id = ID("d");
    SBinaryArray list = {1, &id};
    EXPECT_EQ(Thrown([&] { m_store.DeleteMessages(&list, false); }), MAPI_E_FOLDER_CYCLE);
    EXPECT_EQ(Calls().back(), "bin: CopyMessages([64],IMAPIFolder,bin,0x0,progress null,0x1)");
}

TEST_F(MsgStore, SoftDeletionUsesTheFirstsFolder)
{
    SBinary ids[] = {ID("m"), ID("elsewhere")};
    SBinaryArray list = {2, ids};
    m_store.DeleteMessages(&list, false);
    EXPECT_EQ(Calls().back(), "inbox: CopyMessages([6D,656C73657768657265],IMAPIFolder,bin,0x0,progress null,0x1)");
}

TEST_F(MsgStore, ACountWithoutIdentifiersDeletesNothing)
{
    SBinaryArray list = {1, nullptr};
    EXPECT_EQ(Thrown([&] { m_store.DeleteMessages(&list, true); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(MsgStore, SoftDeletionNeedsDeletedItems)
{
    RecordingStore bare(m_journal, "bare");
    bare.m_openable.Add("in", &m_inbox, MAPI_FOLDER);
    bare.m_openable.Add("m", &m_message, MAPI_MESSAGE);
    CZebMsgStore store(&bare);
    SBinary id = ID("m");
    SBinaryArray list = {1, &id};
    EXPECT_EQ(Thrown([&] { store.DeleteMessages(&list, false); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(Calls().back(), "bare: GetProps([0x35E30102],0x0)");
    store.DeleteMessages(&list, true);
    EXPECT_EQ(Calls().back(), "inbox: DeleteMessages([6D],0x0,progress null,0x0)");
}

TEST_F(MsgStore, AMessageWithoutAParentStays)
{
    RecordingMessage orphan(m_journal, "orphan");
    m_double.m_openable.Add("o", &orphan, MAPI_MESSAGE);
    SBinary id = ID("o");
    SBinaryArray list = {1, &id};
    EXPECT_EQ(Thrown([&] { m_store.DeleteMessages(&list, true); }), MAPI_E_INVALID_TYPE);
    id = ID("gone");
    EXPECT_EQ(Thrown([&] { m_store.DeleteMessages(&list, true); }), MAPI_E_NOT_FOUND);
    m_double.m_openable.Add("f", &m_inbox, MAPI_FOLDER);
    id = ID("f");
    EXPECT_EQ(Thrown([&] { m_store.DeleteMessages(&list, true); }), MAPI_E_INVALID_TYPE) << "no message";
}

TEST_F(MsgStore, FailedOpensCarryTheStoresError)
{
    m_double.m_error = "closed for today";
    CZebMessage target(&m_message);
    EXPECT_EQ(Described([&] { m_store.OpenEntry(ID("none"), target, 0); }),
              "Ver:1, Error:closed for today, Component:store, LowLewelError:2, Context:3 \n");
    EXPECT_FALSE(target.IsValid());
    m_double.m_openable.Add("hollow", nullptr, MAPI_MESSAGE);
    EXPECT_EQ(Thrown([&] { m_store.OpenEntry(ID("hollow"), target, 0); }), MAPI_E_CALL_FAILED);
}

TEST_F(MsgStore, AnInboxWithoutContactsFolderThrows)
{
    RecordingFolder plain(m_journal, "plain");
    m_double.m_openable.Add("plain", &plain, MAPI_FOLDER);
    m_double.m_receiveFolder = "plain";
    EXPECT_EQ(Thrown([&] { m_store.OpenContactsFolder(0); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(Calls().back(), "plain: GetProps([0x36D10102],0x0)");
}

TEST_F(MsgStore, AnEmptyOneRaisesEPointer)
{
    RecordingSession sessionDouble(m_journal);
    CZebSession session(&sessionDouble);
    CZebMessage item(&m_message);
    CZebMsgStore empty;
    SBinary id = ID("m");
    SBinaryArray list = {1, &id};
    EXPECT_EQ(Raised([&] { empty.OpenRootFolder(0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenSpecialFolder(PR_IPM_OUTBOX_ENTRYID, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.GetSpecialFolderEntryID(PR_IPM_OUTBOX_ENTRYID); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenContactsFolder(0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.DeleteMessages(&list, true); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.IsUnderDeleted(session, item); }), E_POINTER);
    EXPECT_TRUE(Calls().empty());
}

namespace
{

/// Says which of its own operations are called by the others.
class OwnStore : public CZebMsgStore
{
public:
    using CZebMsgStore::CZebMsgStore;
    CComPtr<IMsgStore> GetStore() override
    {
        m_calls.push_back("GetStore");
        return CZebMsgStore::GetStore();
    }
    CZebBinary GetSpecialFolderEntryID(ULONG tag) override
    {
        m_calls.push_back("GetSpecialFolderEntryID " + Number(tag));
        return CZebBinary("62696E");
    }
    CZebFolder OpenInboxFolder(ULONG flags) override
    {
        m_calls.push_back("OpenInboxFolder " + Number(flags));
        return CZebMsgStore::OpenInboxFolder(flags);
    }
    void OpenEntry(const SBinary& id, CZebIProp& target, ULONG flags) override
    {
        m_calls.push_back("OpenEntry " + Number(flags));
        CZebMsgStore::OpenEntry(id, target, flags);
    }
    void DeleteMessages(SBinaryArray* list, bool hardDelete) override
    {
        Zeb_MemFree(list->lpbin);
        m_calls.push_back(hardDelete ? "DeleteMessages hard" : "DeleteMessages soft");
    }
    Lines OwnCalls() { return std::move(m_calls); }

private:
    Lines m_calls;
};

} // namespace

TEST_F(MsgStore, OperationsUseTheDerivedClass)
{
    OwnStore own(&m_double);
    CZebMsgStore& store = own;
    store.OpenRootFolder(1);
    EXPECT_EQ(own.OwnCalls(), (Lines{"OpenEntry 0x1", "GetStore"}));
    store.OpenSpecialFolder(PR_IPM_OUTBOX_ENTRYID, 2);
    EXPECT_EQ(own.OwnCalls(), (Lines{"GetSpecialFolderEntryID 0x35E20102", "OpenEntry 0x2", "GetStore"}));
    store.OpenContactsFolder(2);
    EXPECT_EQ(own.OwnCalls(),
              (Lines{"OpenInboxFolder 0x10", "GetStore", "OpenEntry 0x10", "GetStore", "OpenEntry 0x2", "GetStore"}));
    store.DeleteMessage(ID("m"), true);
    store.DeleteMessage(ID("m"), false);
    EXPECT_EQ(own.OwnCalls(), (Lines{"DeleteMessages hard", "DeleteMessages soft"}));
    RecordingSession sessionDouble(m_journal);
    CZebSession session(&sessionDouble);
    CZebMessage item(&m_message);
    m_message.m_bag.Set(PR_PARENT_ENTRYID, "in");
    m_inbox.m_bag.Set(PR_OBJECT_TYPE, MAPI_FOLDER);
    m_inbox.m_bag.Set(PR_FOLDER_TYPE, FOLDER_ROOT);
    m_message.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
    sessionDouble.m_openable.Add("in", &m_inbox, MAPI_FOLDER);
    store.IsUnderDeleted(session, item);
    EXPECT_EQ(own.OwnCalls(), (Lines{"GetSpecialFolderEntryID 0x35E30102"}));
}

TEST_F(MsgStore, DeletingNoMessagesIsRefused)
{
    SBinaryArray list = {0, nullptr};
    EXPECT_EQ(Thrown([&] { m_store.DeleteMessages(&list, true); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(Thrown([&] { m_store.DeleteMessages(nullptr, false); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(MsgStore, RecognizesWhatIsUnderDeletedItems)
{
    RecordingSession sessionDouble(m_journal);
    CZebSession session(&sessionDouble);
    m_message.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
    RecordingMessage deleted(m_journal, "deleted");
    deleted.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
    deleted.m_bag.Set(PR_PARENT_ENTRYID, "bin");
    m_inbox.m_bag.Set(PR_OBJECT_TYPE, MAPI_FOLDER);
    m_inbox.m_bag.Set(PR_FOLDER_TYPE, FOLDER_ROOT);
    sessionDouble.m_openable.Add("in", &m_inbox, MAPI_FOLDER);
    CZebMessage kept(&m_message);
    CZebMessage gone(&deleted);
    EXPECT_FALSE(m_store.IsUnderDeleted(session, kept));
    EXPECT_TRUE(m_store.IsUnderDeleted(session, gone));
    RecordingFolder inside(m_journal, "inside");
    inside.m_bag.Set(PR_OBJECT_TYPE, MAPI_FOLDER);
    inside.m_bag.Set(PR_FOLDER_TYPE, FOLDER_GENERIC);
    inside.m_bag.Set(PR_PARENT_ENTRYID, "bin");
    sessionDouble.m_openable.Add("inside", &inside, MAPI_FOLDER);
    RecordingMessage deeper(m_journal, "deeper");
    deeper.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
    deeper.m_bag.Set(PR_PARENT_ENTRYID, "inside");
    CZebMessage buried(&deeper);
    EXPECT_TRUE(m_store.IsUnderDeleted(session, buried)) << "at any depth";
    RecordingStore bare(m_journal, "bare");
    CZebMsgStore bareStore(&bare);
    EXPECT_EQ(Thrown([&] { bareStore.IsUnderDeleted(session, gone); }), MAPI_E_INVALID_TYPE);
}

TEST_F(MsgStore, OpenedIntoItselfKeepsItsMarking)
{
    m_double.m_openable.Add("self", &m_double, MAPI_STORE);
    m_store.MarkWAB();
    m_store.OpenEntry(ID("self"), m_store, MAPI_BEST_ACCESS);
    EXPECT_TRUE(m_store.IsValid());
    EXPECT_TRUE(m_store.IsWAB());
}
