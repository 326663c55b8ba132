#include "zebapi/CachedTable.h"
#include "ObjectsTest.h"
#include "platform/messages.h"

#include <atomic>
#include <thread>

using namespace zeb::test;
using zeb::platform::WindowMessage;

namespace
{

constexpr ULONG Column = PR_ROWID;

class OpenTable : public CZebCachedTable
{
public:
    using CZebCachedTable::CZebCachedTable;
    using CZebCachedTable::operator=;
    using CZebCachedTable::Bind;
    using CZebCachedTable::EmptyCache;
    using CZebCachedTable::Unbind;
};

class CachedTable : public ObjectsTest
{
protected:
    void HasRows(LONG count)
    {
        m_double.m_rows.clear();
        for (LONG i = 0; i < count; ++i)
        {
            m_double.m_rows.push_back({{Column, i, ""}});
        }
    }
    /// The number in row `index`, read through the cached table.
    LONG At(CZebCachedTable& table, ULONG index) { return table[index][Column].operator LONG(); }
    /// Whether the row came without reading the table.
    bool Hits(CZebCachedTable& table, ULONG index)
    {
        Calls();
        EXPECT_EQ(At(table, index), static_cast<LONG>(index));
        return Calls() == Lines{"table: GetRowCount(0x0)"};
    }

    RowTable m_double{m_journal};
};

Lines Miss(const std::string& start)
{
    return {"table: GetRowCount(0x0)", "table: SeekRow(0x0," + start + ",sought null)",
            "table: QueryRows(50,0x0)"};
}

} // namespace

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

TEST_F(CachedTable, AMissPutsTheRowTwentyFiveRowsIntoTheWindow)
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

TEST_F(CachedTable, AnIndexPastTheCountIsRefusedAndTheWindowStays)
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
}

TEST_F(CachedTable, ARowThatVanishedIsNotFoundAndTheWindowStays)
{
    HasRows(10);
    m_double.m_claimedCount = 20;
    OpenTable table(&m_double);
    EXPECT_EQ(Thrown([&] { table[15]; }), MAPI_E_NOT_FOUND);
    EXPECT_TRUE(Hits(table, 9));
}

TEST_F(CachedTable, ASetThatIsNotThereEmptiesTheWindow)
{
    HasRows(10);
    OpenTable table(&m_double);
    m_double.m_givesNothing = true;
    EXPECT_EQ(Thrown([&] { table[3]; }), MAPI_E_BAD_VALUE);
    m_double.m_givesNothing = false;
    EXPECT_FALSE(Hits(table, 3));
}

TEST_F(CachedTable, AFailedReadEmptiesTheWindowAndThrowsOn)
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

TEST_F(CachedTable, CursorSortRestrictionAndSearchDropTheWindow)
{
    HasRows(10);
    OpenTable table(&m_double);
    SPropValue value = {};
    value.ulPropTag = PR_SUBJECT_A;
    value.Value.lpszA = const_cast<char*>("x");
    SRestriction restriction = {};
    restriction.rt = RES_PROPERTY;
    restriction.res.resProperty.lpProp = &value;
    const std::function<void()> operations[] = {
        [&] { table.SortTable(nullptr); }, [&] { table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr); },
        [&] { EXPECT_TRUE(table.FindRow(nullptr, BOOKMARK_BEGINNING, 0)); },
        [&]
        {
            table.Restrict(&restriction, 0);
            HasRows(10);
        },
        [&] { table.EmptyCache(); }};
    for (const auto& operation : operations)
    {
        At(table, 0);
        EXPECT_TRUE(Hits(table, 1));
        operation();
        EXPECT_FALSE(Hits(table, 1));
    }
    m_double.Fail("SortTable", MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Thrown([&] { table.SortTable(nullptr); }), MAPI_E_TOO_COMPLEX);
    EXPECT_FALSE(Hits(table, 1)) << "also when the operation failed";
}

TEST_F(CachedTable, ColumnsAndPlainReadsLeaveTheWindow)
{
    HasRows(10);
    OpenTable table(&m_double);
    At(table, 0);
    table.SetColumns(1, PR_SUBJECT_A);
    EXPECT_TRUE(Hits(table, 1));
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    EXPECT_TRUE(Hits(table, 1));
}

TEST_F(CachedTable, EveryChangeDropsTheWindowAndPostsOneMessage)
{
    const HWND window = zeb::platform::CreateMessageWindow();
    ASSERT_NE(window, nullptr);
    HasRows(10);
    OpenTable table(&m_double);
    table.SetOwnerWindow(window);
    for (ULONG tableEvent = 0; tableEvent <= 12; ++tableEvent)
    {
        const bool changes = (tableEvent >= 1 && tableEvent <= 5) || tableEvent == TABLE_RELOAD;
        At(table, 0);
        m_double.Notify(tableEvent);
        EXPECT_EQ(Hits(table, 1), !changes) << tableEvent;
        WindowMessage message = {};
        EXPECT_EQ(zeb::platform::WaitWindowMessage(window, 0, message), changes) << tableEvent;
        if (changes)
        {
            EXPECT_EQ(message.message, 1175u);
            EXPECT_EQ(message.wParam, 0u);
            EXPECT_EQ(message.lParam, 0);
        }
        EXPECT_FALSE(zeb::platform::WaitWindowMessage(window, 0, message));
    }
    table.SetOwnerWindow(nullptr);
    m_double.Notify(TABLE_CHANGED);
    WindowMessage message = {};
    EXPECT_FALSE(zeb::platform::WaitWindowMessage(window, 0, message));
    zeb::platform::DestroyMessageWindow(window);
}

TEST_F(CachedTable, ARowStaysReadableWhenANotificationDropsTheWindow)
{
    HasRows(10);
    OpenTable table(&m_double);
    const CZebRow row = table[3];
    const size_t blocks = m_memory.LiveRoots();
    m_double.Notify(TABLE_ROW_ADDED);
    EXPECT_EQ(row[Column].operator LONG(), 3);
    EXPECT_EQ(m_memory.LiveRoots(), blocks);
    EXPECT_FALSE(Hits(table, 3));
    EXPECT_EQ(m_memory.LiveRoots(), blocks) << "the next read freed the old rows";
}

TEST_F(CachedTable, AWindowReadDuringANotificationIsGivenOutOnceAndNotKept)
{
    HasRows(10);
    OpenTable table(&m_double);
    m_double.m_whileReading = [&] { m_double.Notify(TABLE_ROW_ADDED); };
    EXPECT_EQ(At(table, 3), 3);
    m_double.m_whileReading = [&]
    {
        std::thread provider([&] { m_double.Notify(TABLE_ROW_ADDED); });
        provider.join();
    };
    EXPECT_FALSE(Hits(table, 3));
    m_double.m_whileReading = nullptr;
    EXPECT_FALSE(Hits(table, 3));
    EXPECT_TRUE(Hits(table, 3));
}

TEST_F(CachedTable, IsBoundFromAnInterfaceAndByAssignmentAndUnboundByFree)
{
    HasRows(10);
    OpenTable table(&m_double);
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
    At(table, 0);
    Calls();
    table.Free();
    EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0x4D)"}));
    EXPECT_FALSE(table.IsValid());
    EXPECT_EQ(m_double.References(), 0u);
    const CZebTable plain(&m_double);
    table = plain;
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
    EXPECT_FALSE(Hits(table, 0));
    table.Unbind();
    Calls();
    OpenTable unbound(plain);
    EXPECT_TRUE(unbound.IsValid());
    EXPECT_TRUE(Calls().empty()) << "made from a table, it is not registered";
    unbound.Bind();
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
}

TEST_F(CachedTable, AnEmptyOneIsNotBoundAndReadingItRaisesAComError)
{
    OpenTable table;
    EXPECT_EQ(m_log.Lines().size(), 0u);
    EXPECT_EQ(Raised([&] { table[0]; }), E_POINTER);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(CachedTable, AssigningAnEmptyTableEmptiesAndLogs)
{
    HasRows(10);
    OpenTable table(&m_double);
    const CZebTable empty;
    table = empty;
    EXPECT_FALSE(table.IsValid());
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(m_double.References(), 0u);
}

TEST_F(CachedTable, AProviderThatRefusesNotificationsLeavesTheTableWorking)
{
    HasRows(10);
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    OpenTable table(&m_double);
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(At(table, 5), 5);
}

TEST_F(CachedTable, ScrollsWhileNotificationsArriveOnAnotherThread)
{
    HasRows(200);
    OpenTable table(&m_double);
    std::atomic<bool> stop{false};
    std::thread provider(
        [&]
        {
            while (!stop)
            {
                m_double.Notify(TABLE_ROW_MODIFIED);
                std::this_thread::yield();
            }
        });
    for (ULONG i = 0; i < 2000; ++i)
    {
        const ULONG index = (i * 7) % 200;
        const CZebRow row = table[index];
        ASSERT_EQ(row[Column].operator LONG(), static_cast<LONG>(index));
    }
    stop = true;
    provider.join();
    Calls();
}

TEST_F(CachedTable, MayGoWhileNotificationsArrive)
{
    HasRows(10);
    IMAPIAdviseSink* sink = nullptr;
    for (int i = 0; i < 500; ++i)
    {
        auto table = std::make_unique<CZebCachedTable>(&m_double);
        sink = m_double.Sink();
        sink->AddRef();
        std::atomic<bool> started{false};
        std::atomic<bool> stop{false};
        std::thread provider(
            [&]
            {
                NOTIFICATION notification = {};
                notification.ulEventType = fnevTableModified;
                notification.info.tab.ulTableEvent = TABLE_CHANGED;
                while (!stop)
                {
                    sink->OnNotify(1, &notification);
                    started = true;
                }
            });
        while (!started)
        {
            std::this_thread::yield();
        }
        At(*table, 3);
        table.reset();
        stop = true;
        provider.join();
        sink->Release();
    }
    Calls();
}
