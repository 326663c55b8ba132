// Rows through the cached table's window, and what drops it.
#include "CachedTables.h"
#include "platform/messages.h"

#include <cstring>
#include <functional>
#include <new>

using namespace zeb::test;
using zeb::platform::WindowMessage;

TEST_F(CachedTable, ASmallTableIsReadOnce)
{
    HasRows(10);
    OpenTable table(&m_double);
    Calls();
    EXPECT_EQ(At(table, 0), 0);
    EXPECT_EQ(Calls(), Miss("0"));
    EXPECT_TRUE(Hits(table, 9));
    EXPECT_TRUE(Hits(table, 4));
}

TEST_F(CachedTable, AMissCentersTheRow)
{
    HasRows(1000);
    OpenTable table(&m_double);
    Calls();
    EXPECT_EQ(At(table, 500), 500);
    EXPECT_EQ(Calls(), Miss("475"));
    EXPECT_TRUE(Hits(table, 475));
    EXPECT_TRUE(Hits(table, 524));
    EXPECT_EQ(At(table, 525), 525);
    EXPECT_EQ(Calls(), Miss("500"));
    EXPECT_EQ(At(table, 474), 474);
    EXPECT_EQ(Calls(), Miss("449"));
    EXPECT_EQ(At(table, 25), 25);
    EXPECT_EQ(Calls(), Miss("0"));
    EXPECT_EQ(At(table, 999), 999);
    EXPECT_EQ(Calls(), Miss("974"));
}

TEST_F(CachedTable, AnIndexTooLargeIsRefused)
{
    HasRows(10);
    OpenTable table(&m_double);
    At(table, 0);
    EXPECT_EQ(Thrown([&] { table[10]; }), E_INVALIDARG);
    EXPECT_TRUE(Hits(table, 9));
    m_double.m_claimedCount = 0xFFFFFFFF;
    EXPECT_EQ(Thrown([&] { table[0xFFFFFFFF]; }), E_INVALIDARG);
    Calls();
    EXPECT_EQ(Thrown([&] { table[0xFFFFFFFE]; }), E_INVALIDARG) << "no seek reaches that far";
    EXPECT_EQ(Calls(), (Lines{"table: GetRowCount(0x0)"}));
    EXPECT_EQ(Thrown([&] { table[0x80000019]; }), E_INVALIDARG);
    Calls();
    EXPECT_EQ(Thrown([&] { table[0x80000018]; }), MAPI_E_NOT_FOUND) << "the last that a seek reaches";
    EXPECT_EQ(Calls(), Miss("2147483647"));
}

TEST_F(CachedTable, AVanishedRowIsNotFound)
{
    HasRows(10);
    m_double.m_claimedCount = 20;
    OpenTable table(&m_double);
    EXPECT_EQ(Thrown([&] { table[15]; }), MAPI_E_NOT_FOUND);
    EXPECT_TRUE(Hits(table, 9));
}

TEST_F(CachedTable, AMissingSetEmptiesTheWindow)
{
    HasRows(10);
    OpenTable table(&m_double);
    m_double.m_givesNothing = true;
    EXPECT_EQ(Thrown([&] { table[3]; }), MAPI_E_BAD_VALUE);
    m_double.m_givesNothing = false;
    EXPECT_FALSE(Hits(table, 3));
}

TEST_F(CachedTable, ANullSetLeavesNoRows)
{
    HasRows(100);
    OpenTable table(&m_double);
    At(table, 0);
    m_double.m_givesNothing = true;
    EXPECT_EQ(Thrown([&] { table[60]; }), MAPI_E_BAD_VALUE);
    m_double.m_givesNothing = false;
    EXPECT_EQ(m_memory.LiveRoots(), 0u);
    EXPECT_FALSE(Hits(table, 0));
    EXPECT_FALSE(Hits(table, 60));
}

TEST_F(CachedTable, FailuresBearTheirSource)
{
    HasRows(10);
    OpenTable table(&m_double);
    EXPECT_EQ(Thrown([&] { table[10]; }), E_INVALIDARG);
    m_double.m_claimedCount = 20;
    EXPECT_EQ(Thrown([&] { table[15]; }), MAPI_E_NOT_FOUND);
    const std::vector<std::string> texts = m_log.Texts();
    ASSERT_EQ(texts.size(), 2u);
    for (const std::string& text : texts)
    {
        EXPECT_NE(text.find("File zebapi/tables/CachedTable.cpp"), std::string::npos) << text;
    }
}

TEST_F(CachedTable, CountAndSeekFailuresAreThrown)
{
    HasRows(100);
    for (const char* method : {"GetRowCount", "SeekRow"})
    {
        RowTable failing(m_journal, "failing");
        failing.m_rows = m_double.m_rows;
        OpenTable table(&failing);
        At(table, 0);
        failing.Fail(method, MAPI_E_NETWORK_ERROR);
        EXPECT_EQ(Thrown([&] { table[60]; }), MAPI_E_NETWORK_ERROR) << method;
        const size_t kept = method[0] == 'G' ? 101 : 0;
        EXPECT_EQ(m_memory.LiveRoots(), kept != 0 ? 51u : 0u) << method << ": the window after it";
    }
    Calls();
}

TEST_F(CachedTable, ReadsThroughTheSlots)
{
    class Watched : public OpenTable
    {
    public:
        using OpenTable::OpenTable;
        ULONG GetRowCount() override
        {
            m_slots += "count ";
            return OpenTable::GetRowCount();
        }
        void SeekRow(ULONG origin, LONG rowCount, LONG* rowsSought) override
        {
            m_slots += "seek ";
            OpenTable::SeekRow(origin, rowCount, rowsSought);
        }
        void QueryRows(SRowSet** rows, LONG count, SRestriction* restriction, SSortOrderSet* order) override
        {
            m_slots += "query ";
            OpenTable::QueryRows(rows, count, restriction, order);
        }
        void EmptyCache() override
        {
            m_slots += "empty ";
            OpenTable::EmptyCache();
        }
        std::string m_slots;
    };
    HasRows(10);
    Watched table(&m_double);
    At(table, 3);
    EXPECT_EQ(table.m_slots, "count seek empty query ");
    table.m_slots.clear();
    m_double.Notify(TABLE_CHANGED);
    SSortOrderSet order = {};
    table.SortTable(&order);
    EXPECT_EQ(table.m_slots, "empty empty ");
}

TEST_F(CachedTable, AFailingSeekDropsTheWindow)
{
    class Refusing : public OpenTable
    {
    public:
        using OpenTable::OpenTable;
        void SeekRow(ULONG origin, LONG rowCount, LONG* rowsSought) override
        {
            if (m_refuses)
            {
                throw 7;
            }
            OpenTable::SeekRow(origin, rowCount, rowsSought);
        }
        bool m_refuses = false;
    };
    HasRows(100);
    Refusing table(&m_double);
    At(table, 3);
    table.m_refuses = true;
    EXPECT_THROW(table[60], int) << "the same exception";
    table.m_refuses = false;
    EXPECT_FALSE(Hits(table, 3));
}

TEST_F(CachedTable, AFailedReadEmptiesTheWindow)
{
    HasRows(100);
    OpenTable table(&m_double);
    At(table, 0);
    RowTable failing(m_journal, "failing");
    failing.m_claimedCount = 10;
    failing.Fail("QueryRows", MAPI_E_NETWORK_ERROR);
    OpenTable other(&failing);
    EXPECT_EQ(Thrown([&] { other[3]; }), MAPI_E_NETWORK_ERROR);
    Calls();
    EXPECT_EQ(Thrown([&] { other[3]; }), MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(Calls().size(), 3u) << "nothing was kept";
}

TEST_F(CachedTable, CursorAndSortDropTheWindow)
{
    HasRows(10);
    OpenTable table(&m_double);
    SPropValue value = {};
    value.ulPropTag = PR_SUBJECT_A;
    value.Value.lpszA = const_cast<char*>("x");
    SRestriction restriction = {};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty.lpProp = &value;
    SSortOrderSet order = {};
    const std::function<void()> operations[] = {[&] { table.SortTable(&order); },
                                                [&] { table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr); }, [&]
    { EXPECT_TRUE(table.FindRow(&restriction, BOOKMARK_BEGINNING, 0)); }, [&]
    {
        table.Restrict(&restriction, 0);
        HasRows(10);
    }, [&] { table.EmptyCache(); }};
    for (const auto& operation : operations)
    {
        At(table, 0);
        EXPECT_TRUE(Hits(table, 1));
        operation();
        EXPECT_FALSE(Hits(table, 1));
    }
    m_double.Fail("SortTable", MAPI_E_TOO_COMPLEX);
    m_double.Fail("FindRow", MAPI_E_NOT_FOUND);
    m_double.Fail("Restrict", MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Thrown([&] { table.SortTable(&order); }), MAPI_E_TOO_COMPLEX);
    EXPECT_FALSE(Hits(table, 1)) << "also when the operation failed";
    EXPECT_FALSE(table.FindRow(&restriction, BOOKMARK_BEGINNING, 0));
    EXPECT_FALSE(Hits(table, 1));
    EXPECT_EQ(Thrown([&] { table.Restrict(&restriction, 0); }), MAPI_E_TOO_COMPLEX);
    EXPECT_FALSE(Hits(table, 1));
}

TEST_F(CachedTable, DroppingOperationsPassTheirArguments)
{
    OpenTable table(&m_double);
    Calls();
    LONG sought = 0;
    table.SeekRow(BOOKMARK_END, -3, &sought);
    SRestriction restriction = {};
    EXPECT_TRUE(table.FindRow(&restriction, BOOKMARK_CURRENT, DIR_BACKWARD));
    EXPECT_EQ(Calls(), (Lines{"table: SeekRow(0x2,-3,sought given)", "table: FindRow(given,0x1,0x1)"}));
    SSortOrderSet order = {};
    table.SortTable(&order);
    table.Restrict(nullptr, TBL_BATCH);
    CZebTable plain(&m_double);
    const Lines cached = Calls();
    plain.SortTable(&order);
    plain.Restrict(nullptr, TBL_BATCH);
    EXPECT_EQ(Calls(), cached);
}

TEST_F(CachedTable, PlainReadsLeaveTheWindow)
{
    HasRows(10);
    OpenTable table(&m_double);
    At(table, 0);
    table.SetColumns(1, PR_SUBJECT_A);
    EXPECT_TRUE(Hits(table, 1));
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    EXPECT_TRUE(Hits(table, 1));
    table.QueryAllRows(&rows, nullptr, nullptr);
    EXPECT_TRUE(Hits(table, 1));
}

TEST_F(CachedTable, ACopySharesTableAndWindow)
{
    const HWND window = zeb::platform::CreateMessageWindow();
    const CZebTable plain(&m_double);
    CZebCachedTable table(plain);
    table.SetOwnerWindow(window);
    CZebCachedTable copy(table);
    CZebCachedTable assigned;
    assigned = static_cast<const CZebCachedTable&>(table);
    EXPECT_EQ(m_double.References(), 4u);
    EXPECT_TRUE(Calls().empty()) << "copying registers nothing";
    for (CZebCachedTable* of : {&copy, &assigned})
    {
        TABLE_NOTIFICATION notification = {};
        notification.ulTableEvent = TABLE_CHANGED;
        of->OnTable_Modified(&notification);
        WindowMessage message = {};
        EXPECT_TRUE(zeb::platform::WaitWindowMessage(window, 0, message));
        HasRows(60);
        EXPECT_EQ(At(*of, 50), 50);
        EXPECT_EQ(Calls(), Miss("25"));
    }
    zeb::platform::DestroyMessageWindow(window);
}

// Both would free the same rows and the same registration, so the copies are never destroyed here.
TEST_F(CachedTable, ACopyTakesRowsAndRegistration)
{
    HasRows(60);
    CZebCachedTable table(&m_double);
    At(table, 50);
    Calls();
    alignas(CZebCachedTable) unsigned char places[2][sizeof(CZebCachedTable)];
    auto* copy = new (places[0]) CZebCachedTable(table);
    auto* assigned = new (places[1]) CZebCachedTable;
    *assigned = static_cast<const CZebCachedTable&>(table);
    EXPECT_TRUE(Calls().empty());
    for (CZebCachedTable* of : {copy, assigned})
    {
        EXPECT_TRUE(Hits(*of, 25));
        // The binder comes after the bases, two numbers and the rows.
        EXPECT_EQ(std::memcmp(reinterpret_cast<char*>(of) + 56, reinterpret_cast<char*>(&table) + 56, 8), 0);
        m_double.Release();
    }
}

TEST_F(CachedTable, CheckedBindingRegistersASharedTable)
{
    const CZebTable shared(&m_double);
    CZebCachedTable table(shared);
    table.BindChecked();
    EXPECT_EQ(Calls(), Lines{"table: Advise(0x100)"});
    table.BindChecked();
    EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0xABABABAB0000004D)", "table: Advise(0x100)"}));
}

TEST_F(CachedTable, CheckedBindingThrowsWhyItFailed)
{
    HasRows(3);
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    OpenTable table(&m_double);
    EXPECT_EQ(Caught(), 1u) << "construction only logs it";
    EXPECT_EQ(Thrown([&] { table.BindChecked(); }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(At(table, 2), 2) << "the table is read without notifications";
    OpenTable none;
    EXPECT_EQ(Raised([&] { none.BindChecked(); }), E_POINTER);
}
