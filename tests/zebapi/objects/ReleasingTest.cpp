// What the wrappers do when letting go of an object throws, in which order they let go,
// and who is named as the source of a failure.
#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "tests/support/doubles/RecordingProfAdmin.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/AddressBook.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/Profiles.h"
#include "zebapi/SESSION.h"

#include <stdexcept>

using namespace zeb::test;

namespace
{

/// A double that writes down when its last reference goes, and may throw then.
template <class Double>
class Leaving : public Double
{
public:
    using Double::Double;
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG left = Double::Release();
        if (left == 0 && m_watched)
        {
            this->Note("released");
        }
        if (left == 0 && m_throws)
        {
            throw std::runtime_error("released");
        }
        return left;
    }
    bool m_watched = false;
    bool m_throws = false;
};

class OpenProp : public CZebIProp
{
public:
    using CZebIProp::CZebIProp;
    using CZebIProp::SetWAB;
    void MarkWAB() { SetWAB(true); }
};

class OpenBook : public CZebAddressBook
{
public:
    using CZebAddressBook::CZebAddressBook;
    using CZebAddressBook::SetSession;
    using CZebAddressBook::SetWABObject;
};

class Releasing : public ObjectsTest
{
protected:
    /// The catch-site lines so far are `count`, and name `file`.
    void ExpectSwallowed(size_t count, const std::string& file)
    {
        const std::vector<std::string> texts = m_log.Texts();
        ASSERT_EQ(texts.size(), count);
        for (const std::string& text : texts)
        {
            EXPECT_EQ(text.find("EXCEPTION: Description: <Unknown>, File: \"zebapi/" + file + "\", Line: "), 0u)
                << text;
        }
        m_log.Clear();
    }
    /// The throw line names `file`, and the description is the provider's.
    template <class Body>
    void ExpectThrowIn(const std::string& file, Body&& body)
    {
        m_log.Clear();
        EXPECT_NE(Described(body).find("the provider says"), std::string::npos) << file;
        ASSERT_EQ(m_log.Texts().size(), 1u) << file;
        EXPECT_NE(m_log.Texts()[0].find(", File zebapi/" + file + ", line "), std::string::npos) << m_log.Texts()[0];
        Calls();
    }
};

} // namespace

TEST_F(Releasing, FreeThrowsNothingAndClears)
{
    Leaving<RecordingProp> leaving(m_journal, "leaving");
    RecordingProp other(m_journal, "other");
    leaving.m_namedTags = {PROP_TAG(PT_STRING8, 0x9000)};
    other.m_namedTags = {PROP_TAG(PT_STRING8, 0x9100)};
    leaving.m_throws = true;
    OpenProp object(&leaving);
    object.MarkWAB();
    EXPECT_EQ(object.GetRealTag(0x8005001E, true), 0x9000001Eu);
    object.Free();
    ExpectSwallowed(1, "objects/IProp.cpp");
    EXPECT_FALSE(object.IsValid());
    EXPECT_FALSE(object.IsWAB());
    other.AddRef();
    *std::addressof(*object.operator&()) = static_cast<IMAPIProp*>(&other);
    EXPECT_EQ(object.GetRealTag(0x8005001E, true), 0x9100001Eu) << "the old names are forgotten";
    Calls();
}

TEST_F(Releasing, DestructorsThrowNothing)
{
    Leaving<RecordingProp> leaving(m_journal, "leaving");
    leaving.m_throws = true;
    {
        const CZebIProp object(&leaving);
    }
    ExpectSwallowed(1, "objects/IProp.cpp");
    Leaving<RecordingSession> session(m_journal, "session");
    session.m_throws = true;
    {
        const CZebSession object(&session);
    }
    ExpectSwallowed(1, "session/SESSION.cpp");
    Leaving<RecordingProfAdmin> admin(m_journal, "admin");
    admin.m_throws = true;
    {
        const CZebProfAdmin object(&admin);
    }
    ExpectSwallowed(1, "session/Profiles.cpp");
}

TEST_F(Releasing, LogoffAndCloseThrowNothing)
{
    Leaving<RecordingSession> session(m_journal, "session");
    session.m_throws = true;
    CZebSession object(&session);
    object.Logoff(0, 0, 0);
    EXPECT_FALSE(object.IsValid());
    ExpectSwallowed(1, "session/SESSION.cpp");
    Leaving<RecordingProfAdmin> admin(m_journal, "admin");
    admin.m_throws = true;
    CZebProfAdmin profiles(&admin);
    profiles.Close();
    EXPECT_FALSE(profiles.IsValid());
    ExpectSwallowed(1, "session/Profiles.cpp");
    Calls();
}

TEST_F(Releasing, AnAddressBookReleasesItselfLast)
{
    Leaving<RecordingProp> wab(m_journal, "wab");
    Leaving<RecordingSession> session(m_journal, "session");
    Leaving<RecordingAddrBook> book(m_journal, "book");
    wab.m_watched = session.m_watched = book.m_watched = true;
    const Lines inOrder = {"wab: released", "session: released", "book: released"};
    for (const bool throws : {false, true})
    {
        wab.m_throws = session.m_throws = book.m_throws = throws;
        OpenBook object(&book);
        object.SetWABObject(static_cast<IMAPIProp*>(&wab));
        object.SetSession(&session);
        object.Free();
        EXPECT_EQ(Calls(), inOrder) << throws;
        EXPECT_FALSE(object.IsValid());
        {
            OpenBook going(&book);
            going.SetWABObject(static_cast<IMAPIProp*>(&wab));
            going.SetSession(&session);
        }
        EXPECT_EQ(Calls(), inOrder) << throws;
        EXPECT_EQ(Caught(), throws ? 6u : 0u) << "each is kept in by itself";
    }
}

TEST_F(Releasing, FailuresNameSourceAndProvidersText)
{
    RecordingContainer container(m_journal);
    RecordingFolder folder(m_journal);
    RecordingStore store(m_journal);
    RecordingAddrBook book(m_journal);
    container.m_error = folder.m_error = store.m_error = book.m_error = "the provider says";
    container.Fail("GetContentsTable", MAPI_E_NO_ACCESS);
    container.Fail("GetHierarchyTable", MAPI_E_NO_ACCESS);
    container.Fail("OpenEntry", MAPI_E_NO_ACCESS);
    folder.Fail("CreateMessage", MAPI_E_NO_ACCESS);
    folder.Fail("EmptyFolder", MAPI_E_NO_ACCESS);
    store.Fail("GetReceiveFolder", MAPI_E_NO_ACCESS);
    store.Fail("OpenEntry", MAPI_E_NO_ACCESS);
    book.Fail("GetDefaultDir", MAPI_E_NO_ACCESS);
    book.Fail("OpenEntry", MAPI_E_NO_ACCESS);
    CZebContainer aContainer(&container);
    CZebFolder aFolder(&folder);
    CZebMsgStore aStore(&store);
    CZebAddressBook aBook(&book);
    CZebPropObj target;
    ExpectThrowIn("objects/Container.cpp", [&] { aContainer.GetContentsTable(0); });
    ExpectThrowIn("objects/Container.cpp", [&] { aContainer.GetHierarchyTable(0); });
    ExpectThrowIn("objects/Container.cpp", [&] { aContainer.OpenEntry(ID("x"), target, 0); });
    ExpectThrowIn("objects/Folder.cpp", [&] { aFolder.CreateMessage(0); });
    ExpectThrowIn("objects/Folder.cpp", [&] { aFolder.EmptyFolder(nullptr, 0, nullptr); });
    ExpectThrowIn("objects/MsgStore.cpp", [&] { aStore.OpenInboxFolder(0); });
    ExpectThrowIn("objects/MsgStore.cpp", [&] { aStore.OpenEntry(ID("x"), target, 0); });
    ExpectThrowIn("objects/AddressBook.cpp", [&] { aBook.GetDefaultDirEntryID(); });
    ExpectThrowIn("objects/AddressBook.cpp", [&] { aBook.OpenRootContainer(0); });
    ExpectThrowIn("objects/AddressBook.cpp", [&] { aBook.OpenEntry(ID("x"), target, 0); });
}

TEST_F(Releasing, OnlySingleWideTextsAreUnicode)
{
    RecordingProp prop(m_journal);
    CZebIProp object(&prop);
    object.GetStringPropW(PROP_TAG(PT_UNICODE, 0x6000));
    object.GetStringPropW(PROP_TAG(PT_MV_UNICODE, 0x6000));
    CZebPropValArray values;
    object.GetProps(values, 2, PR_SUBJECT_W, PR_BODY_W);
    EXPECT_EQ(Calls(), (Lines{"prop: GetProps([0x6000001F],0x80000000)", "prop: GetProps([0x6000101F],0x0)",
                              "prop: GetProps([0x37001F,0x1000001F],0x0)"}));
}

TEST_F(Releasing, AWarningStillSaves)
{
    RecordingProp prop(m_journal);
    prop.Fail("SetProps", MAPI_W_ERRORS_RETURNED);
    CZebIProp object(&prop);
    CZebPropValArray values(1);
    values[PR_SUBJECT_A] = "s";
    object.SetProps(values, true, nullptr);
    EXPECT_EQ(Calls(), (Lines{"prop: SetProps(0x37001E='s',problems null)", "prop: SaveChanges(0x6)"}));
}

TEST_F(Releasing, AnEmptyContainerIsNotExchange)
{
    CZebContainer container;
    EXPECT_FALSE(container.IsExchange());
    EXPECT_FALSE(container.IsExchange());
    ASSERT_EQ(m_log.Texts().size(), 1u);
    EXPECT_EQ(m_log.Texts()[0].find("EXCEPTION: _com_error: 0x80004003, File: \"zebapi/objects/Container.cpp\""), 0u);
}

TEST_F(Releasing, DestinationsMustBeFolders)
{
    RecordingFolder source(m_journal, "source");
    RecordingProp plain(m_journal, "plain");
    CZebFolder from(&source);
    CZebFolder to(&plain);
    SBinary ids[] = {ID("a")};
    SBinaryArray list = {1, ids};
    EXPECT_EQ(Raised([&] { from.CopyMessages(&list, to, 0, nullptr, nullptr); }), E_NOINTERFACE);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(Releasing, SoftDeletionUsesTheStoresOperation)
{
    class Redirecting : public CZebMsgStore
    {
    public:
        using CZebMsgStore::CZebMsgStore;
        CZebFolder OpenSpecialFolder(ULONG tag, ULONG flags) override
        {
            m_tag = tag;
            m_flags = flags;
            return CZebFolder(m_bin);
        }
        IMAPIProp* m_bin = nullptr;
        ULONG m_tag = 0;
        ULONG m_flags = 0;
    };
    RecordingStore store(m_journal);
    RecordingFolder inbox(m_journal, "inbox");
    RecordingFolder bin(m_journal, "bin");
    RecordingMessage message(m_journal);
    message.m_bag.Set(PR_PARENT_ENTRYID, "in");
    store.m_openable.Add("m", &message, MAPI_MESSAGE);
    store.m_openable.Add("in", &inbox, MAPI_FOLDER);
    Redirecting object(&store);
    object.m_bin = &bin;
    SBinary ids[] = {ID("m")};
    SBinaryArray list = {1, ids};
    object.DeleteMessages(&list, false);
    EXPECT_EQ(object.m_tag, ULONG{PR_IPM_WASTEBASKET_ENTRYID});
    EXPECT_EQ(object.m_flags, ULONG{MAPI_BEST_ACCESS});
    EXPECT_EQ(Calls().back(), "inbox: CopyMessages([6D],IMAPIFolder,bin,0x0,progress null,0x1)");
}

namespace
{

/// An object below a folder "up", which a session opens.
class Walk : public Releasing
{
protected:
    Walk()
    {
        m_item.m_bag.Set(PR_OBJECT_TYPE, MAPI_MESSAGE);
        m_item.m_bag.Set(PR_PARENT_ENTRYID, "up");
    }
    bool Ask() { return m_object.IsChildOf(m_session, ID("far"), false); }

    RecordingMessage m_item{m_journal, "item"};
    RecordingFolder m_up{m_journal, "up"};
    RecordingSession m_double{m_journal};
    CZebSession m_session{&m_double};
    CZebMessage m_object{&m_item};
};

} // namespace

TEST_F(Walk, AFailingComparisonThrows)
{
    m_double.m_error = "the provider says";
    m_double.Fail("CompareEntryIDs", MAPI_E_UNKNOWN_ENTRYID);
    ExpectThrowIn("session/SESSION.cpp", [&] { Ask(); });
}

TEST_F(Walk, AParentWithoutAWrapperThrows)
{
    m_double.m_openable.Add("up", &m_up, 99);
    EXPECT_EQ(Thrown([&] { Ask(); }), MAPI_E_INVALID_TYPE);
    for (const std::string& call : Calls())
    {
        EXPECT_NE(call.rfind("up: ", 0), 0u) << call << ": it is asked for nothing";
    }
}

TEST_F(Walk, EndsAtAStore)
{
    RecordingStore store(m_journal);
    store.m_bag.Set(PR_OBJECT_TYPE, MAPI_STORE);
    store.m_bag.Set(PR_PARENT_ENTRYID, "far");
    m_double.m_openable.Add("up", &store, MAPI_STORE);
    EXPECT_FALSE(Ask());
    EXPECT_EQ(Calls().back(), "store: GetProps([0xFFE0003],0x0)") << "its parent is not asked for";
}

TEST_F(Walk, AnEmptySessionRaisesEPointer)
{
    m_session = CZebSession(nullptr);
    EXPECT_EQ(Raised([&] { Ask(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { m_object.IsChildOf(m_session, ID("far"), true); }), E_POINTER)
        << "comparing with the direct parent alone";
    Calls();
}

TEST_F(Walk, AFolderWithoutFolderTypeThrows)
{
    m_up.m_bag.Set(PR_OBJECT_TYPE, MAPI_FOLDER);
    m_up.m_bag.Set(PR_PARENT_ENTRYID, "far");
    m_double.m_openable.Add("up", &m_up, MAPI_FOLDER);
    EXPECT_EQ(Thrown([&] { Ask(); }), MAPI_E_INVALID_TYPE) << "the type alone is missing";
    Calls();
}
