// What the cached table does about notifications, and when it is registered for them.
#include "CachedTables.h"
#include "platform/messages.h"

#include <atomic>
#include <functional>
#include <iterator>
#include <thread>
#include <utility>

using namespace zeb::test;
using zeb::platform::WindowMessage;

TEST_F(CachedTable, DerivedClassesReceiveOnlyTheEvent)
{
    class Derived : public CZebCachedTable
    {
    public:
        using CZebCachedTable::CZebCachedTable;
        void OnTableModified_ReloadCommon() override { ++m_others; }
        void OnTableModified_Changed() override { ++m_others; }
        void OnTableModified_Error() override { ++m_others; }
        void OnTableModified_Reload() override { ++m_others; }
        void OnTableModified_Row_Added(TABLE_NOTIFICATION*) override { ++m_others; }
        void OnTableModified_Row_Deleted(TABLE_NOTIFICATION*) override { ++m_others; }
        void OnTableModified_Row_Modified(TABLE_NOTIFICATION*) override { ++m_others; }
        int m_others = 0;
    };
    Derived table(&m_double);
    for (ULONG tableEvent = 0; tableEvent <= 10; ++tableEvent)
    {
        m_double.Notify(tableEvent);
    }
    EXPECT_EQ(table.m_others, 0);
}

TEST_F(CachedTable, AssigningMovesRegistrationNotOwnerWindow)
{
    RowTable other(m_journal, "other");
    const CZebTable plain(&other);
    const HWND window = zeb::platform::CreateMessageWindow();
    HasRows(10);
    {
        OpenTable table(&m_double);
        table.SetOwnerWindow(window);
        At(table, 3);
        Calls();
        table = plain;
        EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0xABABABAB0000004D)", "other: Advise(0x100)"}));
        EXPECT_EQ(m_memory.LiveRoots(), 0u) << "the rows of the old table are gone";
        EXPECT_EQ(m_double.References(), 0u);
        other.Notify(TABLE_RELOAD);
        WindowMessage message = {};
        EXPECT_TRUE(zeb::platform::WaitWindowMessage(window, 0, message));
    }
    EXPECT_EQ(Calls(), (Lines{"other: Unadvise(0xABABABAB0000004D)"})) << "destroying it unregisters";
    zeb::platform::DestroyMessageWindow(window);
}

TEST_F(CachedTable, EveryChangeDropsTheWindow)
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

TEST_F(CachedTable, ARowStaysReadableAfterDrops)
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

TEST_F(CachedTable, WindowsReadDuringNotificationsAreDropped)
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
    m_double.m_whileCounting = [&] { m_double.Notify(TABLE_ROW_ADDED); };
    EXPECT_FALSE(Hits(table, 3)) << "what came before the read is in it";
    m_double.m_whileCounting = nullptr;
    EXPECT_TRUE(Hits(table, 3));
    m_double.m_whileSeeking = [&] { m_double.Notify(TABLE_ROW_ADDED); };
    table.EmptyCache();
    EXPECT_FALSE(Hits(table, 3));
    m_double.m_whileSeeking = nullptr;
    EXPECT_FALSE(Hits(table, 3)) << "the seek may have been counted in old rows";
    EXPECT_TRUE(Hits(table, 3));
}

TEST_F(CachedTable, AssignmentBindsAndFreeUnbinds)
{
    HasRows(10);
    OpenTable table(&m_double);
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
    At(table, 0);
    Calls();
    table.Free();
    EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0xABABABAB0000004D)"}));
    EXPECT_FALSE(table.IsValid());
    EXPECT_EQ(m_double.References(), 0u);
    EXPECT_EQ(m_memory.LiveRoots(), 0u);
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
    unbound.Bind();
    EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0xABABABAB0000004D)", "table: Advise(0x100)"})) << "never twice at once";
}

TEST_F(CachedTable, AnEmptyOneIsNotBound)
{
    OpenTable table;
    EXPECT_EQ(m_log.Lines().size(), 0u);
    EXPECT_EQ(Raised([&] { table[0]; }), E_POINTER);
    EXPECT_TRUE(Calls().empty());
}

TEST_F(CachedTable, AssigningAnEmptyTableEmpties)
{
    HasRows(10);
    OpenTable table(&m_double);
    const CZebTable empty;
    table = empty;
    EXPECT_FALSE(table.IsValid());
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(m_double.References(), 0u);
}

TEST_F(CachedTable, WorksWithoutNotifications)
{
    HasRows(10);
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    OpenTable table(&m_double);
    EXPECT_EQ(Caught(), 1u);
    EXPECT_EQ(At(table, 5), 5);
    EXPECT_TRUE(Hits(table, 6));
    table.Free();
    EXPECT_TRUE(Calls().empty()) << "nothing to unregister";
}

TEST_F(CachedTable, ScrollsWhileNotificationsArrive)
{
    HasRows(200);
    OpenTable table(&m_double);
    std::atomic<bool> stop{false};
    std::thread provider([&]
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

namespace
{

/// A cached table that does something of its own in a notification, instead of what the base does.
class OwnHandler : public OpenTable
{
public:
    explicit OwnHandler(std::function<void(OwnHandler&)> handle)
        : m_handle(std::move(handle))
    {
    }
    ~OwnHandler() override { CZebCachedTable::Free(); }
    using OpenTable::operator=;
    void OnTable_Modified(TABLE_NOTIFICATION*) override { m_handle(*this); }

private:
    std::function<void(OwnHandler&)> m_handle;
};

} // namespace

TEST_F(CachedTable, RowsSurviveWhateverAHandlerCalls)
{
    HasRows(100);
    const CZebTable source(&m_double);
    SSortOrderSet order = {};
    SRestriction restriction = {};
    restriction.rt = RES_EXIST;
    const std::function<void(OwnHandler&)> handlers[] = {
        [](OwnHandler& table) { table.EmptyCache(); },
        [&](OwnHandler& table) { table.SortTable(&order); },
        [](OwnHandler& table) { table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr); },
        [&](OwnHandler& table) { table.FindRow(&restriction, BOOKMARK_BEGINNING, 0); },
        [](OwnHandler& table) { table.Restrict(nullptr, 0); },
        [](OwnHandler& table) { table.Unbind(); },
        [](OwnHandler& table) { table.Free(); },
    };
    for (size_t i = 0; i < std::size(handlers); ++i)
    {
        OwnHandler table(handlers[i]);
        table = source;
        const CZebRow row = table[30];
        const size_t blocks = m_memory.LiveRoots();
        std::thread([&] { m_double.Notify(TABLE_CHANGED); }).join();
        EXPECT_EQ(m_memory.LiveRoots(), blocks) << i;
        EXPECT_EQ(row[Column].operator LONG(), 30) << i;
        if (table.IsValid())
        {
            const bool unboundOnly = i == 5;
            EXPECT_EQ(Hits(table, 31), unboundOnly) << i;
        }
        table.Free();
        EXPECT_EQ(m_memory.LiveRoots(), 0u) << i;
    }
    Calls();
}

TEST_F(CachedTable, WindowsDroppedDuringReadsAreGone)
{
    HasRows(100);
    const CZebTable source(&m_double);
    OwnHandler table([](OwnHandler& notified) { notified.EmptyCache(); });
    table = source;
    m_double.m_whileReading = [&] { std::thread([&] { m_double.Notify(TABLE_CHANGED); }).join(); };
    EXPECT_EQ(At(table, 30), 30);
    m_double.m_whileReading = nullptr;
    EXPECT_FALSE(Hits(table, 31));
    EXPECT_TRUE(Hits(table, 32));
    Calls();
}

TEST_F(CachedTable, HandlersWithoutSinkDropTheWindow)
{
    HasRows(100);
    OpenTable table(&m_double);
    TABLE_NOTIFICATION notification = {};
    notification.ulTableEvent = TABLE_CHANGED;
    const CZebRow row = table[30];
    table.OnTable_Modified(&notification);
    EXPECT_EQ(row[Column].operator LONG(), 30);
    EXPECT_FALSE(Hits(table, 31));
    m_double.m_whileReading = [&] { table.OnTable_Modified(&notification); };
    EXPECT_EQ(At(table, 90), 90);
    m_double.m_whileReading = nullptr;
    EXPECT_FALSE(Hits(table, 91));
}
