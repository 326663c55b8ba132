#include "zebapi/SESSION.h"
#include "ObjectsTest.h"
#include "tests/support/doubles/RecordingContainers.h"
#include "tests/support/doubles/RecordingStore.h"
#include "zebapi/RowSet.h"

#include <functional>

using namespace zeb::test;

namespace
{

class Session : public ObjectsTest
{
protected:
    RecordingSession m_double{m_journal};
    CZebSession m_session{&m_double};
    const HWND m_window = reinterpret_cast<HWND>(static_cast<ULONG_PTR>(0xFFFFFFFF12345678ull));
};

} // namespace

TEST_F(Session, CopiesShareTheSession)
{
    m_double.NoteQueries();
    const CZebSession copy(m_session);
    EXPECT_TRUE(copy.IsValid());
    EXPECT_EQ(m_double.References(), 2u);
    EXPECT_TRUE(Calls().empty()) << "copying takes the reference, without a query";
    EXPECT_EQ(copy.GetInterface().Get(), &m_double);
    const CZebSession none;
    const CZebSession copyOfNone(none);
    EXPECT_FALSE(copyOfNone.IsValid());
    EXPECT_TRUE(m_log.Lines().empty());
    CZebSession assigned;
    assigned = m_session;
    EXPECT_EQ(Calls(), (Lines{"session: QueryInterface(IMAPISession)"}));
}

TEST_F(Session, AssigningAnEmptyOneLogsOnce)
{
    const CZebSession empty;
    m_session = empty;
    EXPECT_FALSE(m_session.IsValid());
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"MAPI_E_INTERFACE_NOT_SUPPORTED\""), 1u);
    EXPECT_EQ(m_double.References(), 0u);
}

TEST_F(Session, AssigningANonSessionLogsOnce)
{
    RecordingSession foreign(m_journal, "foreign");
    const CZebSession source(&foreign);
    foreign.RefuseInterfaces();
    m_session = source;
    EXPECT_FALSE(m_session.IsValid());
    EXPECT_TRUE(source.IsValid());
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(ThrowLines(), 1u);
    EXPECT_NE(m_log.Lines()[0].text.find("0x80004002"), std::string::npos);
    EXPECT_NE(m_log.Lines()[0].text.find("SESSION.cpp, line "), std::string::npos);
}

TEST_F(Session, AssigningItselfKeepsTheSession)
{
    const CZebSession& same = m_session;
    m_session = same;
    EXPECT_TRUE(m_session.IsValid());
    EXPECT_EQ(m_double.References(), 1u);
}

TEST_F(Session, AnEmptyOneLeavesTheTarget)
{
    CZebSession empty;
    RecordingProp object(m_journal);
    CZebPropObj target(&object);
    EXPECT_EQ(Raised([&] { empty.GetMsgStoresTable(); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenEntry(ID("a"), target, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenMsgStore(ID("a"), nullptr, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenAddressBook(nullptr, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.OpenDefaultMsgStore(nullptr, 0); }), E_POINTER);
    EXPECT_EQ(Raised([&] { empty.CompareEntryIDs(ID("a"), ID("b")); }), E_POINTER);
    EXPECT_TRUE(target.IsValid());
}

TEST_F(Session, LogoffPassesArgumentsAndDropsIt)
{
    m_session.Logoff(1, 2, 3);
    EXPECT_EQ(Calls(), (Lines{"session: Logoff(0x1,0x2,0x3)"}));
    EXPECT_FALSE(m_session.IsValid());
    EXPECT_EQ(m_double.References(), 0u);
}

TEST_F(Session, AFailingLogoffDropsTheSession)
{
    m_double.Fail("Logoff", MAPI_E_NETWORK_ERROR);
    m_double.m_error = "gone";
    m_session.Logoff(0, 0, 0);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"Ver:1, Error:gone, Component:session"), 1u);
    EXPECT_FALSE(m_session.IsValid());
}

TEST_F(Session, LogoffOfAnEmptySessionLogs)
{
    CZebSession empty;
    empty.Logoff(0, 0, 0);
    EXPECT_FALSE(empty.IsValid());
    EXPECT_EQ(m_log.Lines().size(), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: _com_error: 0x80004003, File: \""), 1u);
}

TEST_F(Session, PassesTheWindowAsUIParameter)
{
    RecordingStore store(m_journal);
    RecordingAddrBook book(m_journal);
    m_double.m_store = &store;
    m_double.m_addressBook = &book;
    {
        const CZebMsgStore opened = m_session.OpenMsgStore(ID("s"), m_window, 0x10);
        EXPECT_TRUE(opened.IsValid());
        EXPECT_EQ(store.References(), 1u);
        const CZebAddressBook openedBook = m_session.OpenAddressBook(nullptr, 1);
        EXPECT_EQ(book.References(), 1u);
        EXPECT_EQ(m_double.References(), 2u) << "the address book keeps the session";
    }
    EXPECT_EQ(m_double.References(), 1u);
    EXPECT_EQ(Calls(), (Lines{"session: OpenMsgStore(0xFFFFFFFF12345678,73,IMsgStore,0x10)",
                              "session: OpenAddressBook(0x0,null,0x1)"}));
}

TEST_F(Session, SuccessWithoutAnObjectFails)
{
    EXPECT_EQ(Thrown([&] { m_session.OpenMsgStore(ID("s"), nullptr, 0); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Thrown([&] { m_session.OpenAddressBook(nullptr, 0); }), MAPI_E_CALL_FAILED);
    EXPECT_EQ(Thrown([&] { m_session.GetMsgStoresTable(); }), MAPI_E_CALL_FAILED);
    CZebContainer anything;
    m_double.m_openable.Add("a", nullptr, MAPI_FOLDER);
    EXPECT_EQ(Thrown([&] { m_session.OpenEntry(ID("a"), anything, 0); }), MAPI_E_CALL_FAILED);
}

TEST_F(Session, OpensEntriesAsTheTargetsInterface)
{
    RecordingFolder folder(m_journal);
    m_double.m_openable.Add("f", &folder, MAPI_FOLDER);
    CZebFolder target;
    m_session.OpenEntry(ID("f"), target, 0x10);
    EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(66,IMAPIFolder,0x10)"}));
    EXPECT_EQ(folder.References(), 1u);
}

TEST_F(Session, RefusesAFolderAsAMessage)
{
    RecordingFolder folder(m_journal);
    m_double.m_openable.Add("f", &folder, MAPI_FOLDER);
    CZebMessage target;
    EXPECT_EQ(Thrown([&] { m_session.OpenEntry(ID("f"), target, 0); }), MAPI_E_INVALID_TYPE);
    EXPECT_FALSE(target.IsValid());
    EXPECT_EQ(folder.References(), 0u);
}

TEST_F(Session, PlainObjectsTakeOnlyEightTypes)
{
    for (ULONG type = 0; type <= 12; ++type)
    {
        RecordingProp object(m_journal);
        m_double.m_openable.Add("o", &object, type);
        CZebPropObj target;
        const HRESULT thrown = Thrown([&] { m_session.OpenEntry(ID("o"), target, MAPI_BEST_ACCESS); });
        EXPECT_EQ(thrown, type >= MAPI_STORE && type <= MAPI_DISTLIST ? S_OK : MAPI_E_INVALID_TYPE) << type;
        EXPECT_EQ(target.IsValid(), thrown == S_OK) << type;
        EXPECT_EQ(object.References(), thrown == S_OK ? 1u : 0u) << type;
        EXPECT_EQ(Calls(), (Lines{"session: OpenEntry(6F,IMAPIProp,0x10)"}));
    }
}

TEST_F(Session, AFailureCarriesTheExtendedError)
{
    m_double.m_error = "denied";
    CZebMessage target;
    EXPECT_EQ(Described([&] { m_session.OpenEntry(ID("x"), target, 0); }),
              "Ver:1, Error:denied, Component:session, LowLewelError:2, Context:3 \n");
    EXPECT_EQ(Calls().back(), "session: GetLastError(0x8004010F,0x0)");
}

TEST_F(Session, EveryFailureCarriesTheExtendedError)
{
    RowTable stores(m_journal);
    stores.m_rows = {{{PR_ENTRYID, 0, "d"}, {PR_DEFAULT_STORE, 1, ""}}};
    m_double.m_stores = &stores;
    m_double.m_error = "denied";
    CZebPropObj target;
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"GetMsgStoresTable", [&] { m_session.GetMsgStoresTable(); }},
        {"OpenMsgStore", [&] { m_session.OpenMsgStore(ID("a"), nullptr, 0); }},
        {"OpenMsgStore", [&] { m_session.OpenDefaultMsgStore(nullptr, 0); }},
        {"OpenAddressBook", [&] { m_session.OpenAddressBook(nullptr, 0); }},
        {"CompareEntryIDs", [&] { m_session.CompareEntryIDs(ID("a"), ID("b")); }},
        {"OpenEntry", [&] { m_session.OpenEntry(ID("a"), target, 0); }},
    };
    for (const auto& [method, call] : calls)
    {
        RecordingSession failing(m_journal);
        failing.m_error = "denied";
        failing.m_stores = &stores;
        failing.Fail(method, MAPI_E_NO_ACCESS);
        m_session = CZebSession(&failing);
        EXPECT_EQ(Described(call), "Ver:1, Error:denied, Component:session, LowLewelError:2, Context:3 \n") << method;
        EXPECT_EQ(Calls().back(), "session: GetLastError(0x80070005,0x0)") << method;
        m_session.Logoff(0, 0, 0);
    }
}

TEST_F(Session, FailedOpensLeaveTheTargetEmpty)
{
    RecordingProp before(m_journal);
    CZebPropObj target(&before);
    EXPECT_EQ(Thrown([&] { m_session.OpenEntry(ID("x"), target, 0); }), MAPI_E_NOT_FOUND);
    EXPECT_FALSE(target.IsValid());
    EXPECT_EQ(before.References(), 0u);
}

TEST_F(Session, ADefaultStoreNeedsAnIdentifier)
{
    const auto openWith = [&](const RowData& row)
    {
        RowTable table(m_journal);
        table.m_rows = {row};
        m_double.m_stores = &table;
        return Thrown([&] { m_session.OpenDefaultMsgStore(nullptr, 0); });
    };
    EXPECT_EQ(openWith({{PR_DEFAULT_STORE, 1, ""}}), MAPI_E_UNEXPECTED_ID);
    EXPECT_EQ(openWith({{PR_DEFAULT_STORE, 1, ""}, {PROP_TAG(PT_ERROR, PROP_ID(PR_ENTRYID)), 0, ""}}),
              MAPI_E_INVALID_TYPE);
    EXPECT_EQ(openWith({{PROP_TAG(PT_LONG, PROP_ID(PR_DEFAULT_STORE)), 1, ""}, {PR_ENTRYID, 0, "a"}}),
              MAPI_E_NOT_FOUND);
    for (const std::string& call : Calls())
    {
        EXPECT_EQ(call.find("OpenMsgStore"), std::string::npos) << call;
    }
}

TEST_F(Session, ComparesIdentifiers)
{
    EXPECT_TRUE(m_session.CompareEntryIDs(ID("ab"), ID("ab")));
    EXPECT_FALSE(m_session.CompareEntryIDs(ID("ab"), ID("cd")));
    EXPECT_EQ(Calls(), (Lines{"session: CompareEntryIDs(6162,6162,0x0)", "session: CompareEntryIDs(6162,6364,0x0)"}));
    m_double.Fail("CompareEntryIDs", MAPI_E_INVALID_ENTRYID);
    EXPECT_EQ(Thrown([&] { m_session.CompareEntryIDs(ID("ab"), ID("cd")); }), MAPI_E_INVALID_ENTRYID);
}

TEST_F(Session, TheFirstMarkedStoreIsDefault)
{
    RowTable table(m_journal);
    table.m_rows = {{{PR_ENTRYID, 0, "a"}},
                    {{PR_ENTRYID, 0, "b"}, {PR_DEFAULT_STORE, 0, ""}},
                    {{PR_ENTRYID, 0, "c"}, {PROP_TAG(PT_ERROR, PROP_ID(PR_DEFAULT_STORE)), 0, ""}},
                    {{PR_ENTRYID, 0, "d"}, {PR_DEFAULT_STORE, 1, ""}},
                    {{PR_ENTRYID, 0, "e"}, {PR_DEFAULT_STORE, 1, ""}}};
    RecordingStore store(m_journal);
    m_double.m_stores = &table;
    m_double.m_store = &store;
    EXPECT_TRUE(m_session.OpenDefaultMsgStore(m_window, 0x10).IsValid());
    EXPECT_EQ(Calls(), (Lines{"session: GetMsgStoresTable(0x0)", "table: QueryRows(2147483647,0x0)",
                              "session: OpenMsgStore(0xFFFFFFFF12345678,64,IMsgStore,0x10)"}));
}

TEST_F(Session, AProfileMayLackADefault)
{
    RowTable table(m_journal);
    m_double.m_stores = &table;
    EXPECT_EQ(Thrown([&] { m_session.OpenDefaultMsgStore(nullptr, 0); }), MAPI_E_NOT_FOUND);
    table.m_rows = {{{PR_ENTRYID, 0, "a"}}, {{PR_ENTRYID, 0, "b"}, {PR_DEFAULT_STORE, 0, ""}}};
    EXPECT_EQ(Thrown([&] { m_session.OpenDefaultMsgStore(nullptr, 0); }), MAPI_E_NOT_FOUND);
    table.m_givesNothing = true;
    EXPECT_EQ(Thrown([&] { m_session.OpenDefaultMsgStore(nullptr, 0); }), MAPI_E_NOT_FOUND);
}

TEST(MessageClass, IsASubclassByItsBeginning)
{
    EXPECT_TRUE(Zeb_IsClassSubclassOf("IPM.Note", "IPM.Note"));
    EXPECT_TRUE(Zeb_IsClassSubclassOf("ipm.note.Private", "IPM.Note"));
    EXPECT_TRUE(Zeb_IsClassSubclassOf("IPM.NoteX", "IPM.Note"));
    EXPECT_TRUE(Zeb_IsClassSubclassOf("IPM.Note", ""));
    EXPECT_FALSE(Zeb_IsClassSubclassOf("IPM.Not", "IPM.Note"));
    EXPECT_FALSE(Zeb_IsClassSubclassOf("IPM.Contact", "IPM.Note"));
    EXPECT_FALSE(Zeb_IsClassSubclassOf("", "IPM"));
    EXPECT_FALSE(Zeb_IsClassSubclassOf("IPM.Note", nullptr));
}
