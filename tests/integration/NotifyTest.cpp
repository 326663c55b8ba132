// Notifications of the embedded provider through the library.
#include "tests/integration/Host.h"

#include "platform/module.h"

#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <mutex>
#include <thread>

namespace zeb::test
{
namespace
{

/// Counts notifications by event.
class Counter : public CAdviseSinkDelegate
{
public:
    void OnTable_Modified(TABLE_NOTIFICATION* notification) override
    {
        {
            const std::lock_guard<std::mutex> hold(m_lock);
            m_onOtherThread = m_onOtherThread && std::this_thread::get_id() != m_creator;
        }
        CAdviseSinkDelegate::OnTable_Modified(notification);
    }
    void OnTableModified_ReloadCommon() override { Count(m_whole); }
    void OnTableModified_Row_Added(TABLE_NOTIFICATION*) override { Count(m_added); }
    void OnTableModified_Row_Deleted(TABLE_NOTIFICATION*) override { Count(m_deleted); }
    void OnTableModified_Row_Modified(TABLE_NOTIFICATION*) override { Count(m_modified); }

    /// Waits for this number of notifications. @return false after ten seconds
    bool Has(int added, int modified, int deleted, int whole = 0)
    {
        std::unique_lock<std::mutex> hold(m_lock);
        return m_heard.wait_for(hold, std::chrono::seconds(10), [&]
        { return m_added == added && m_modified == modified && m_deleted == deleted && m_whole == whole; });
    }
    /// The growth of the table in rows, according to the notifications.
    bool HasGrownBy(int rows)
    {
        std::unique_lock<std::mutex> hold(m_lock);
        return m_heard.wait_for(hold, std::chrono::seconds(10),
                                [&] { return m_added - m_deleted == rows && m_whole == 0; });
    }
    bool WasAlwaysOnAnotherThread()
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        return m_onOtherThread;
    }

private:
    void Count(int& which)
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        ++which;
        m_heard.notify_all();
    }

    const std::thread::id m_creator = std::this_thread::get_id();
    std::mutex m_lock;
    std::condition_variable m_heard;
    bool m_onOtherThread = true;
    int m_added = 0;
    int m_deleted = 0;
    int m_modified = 0;
    int m_whole = 0;
};

class Notified : public StoreHost
{
protected:
    /// By importance, the most important first.
    CZebTable Sorted()
    {
        CZebTable table = Contents();
        table.SetColumns(3, PR_ENTRYID, PR_SUBJECT_A, PR_IMPORTANCE);
        CZebSortOrder order(PR_IMPORTANCE, TABLE_SORT_DESCEND);
        table.SortTable(order);
        return table;
    }
    static std::string SubjectOf(CZebCachedTable& table, ULONG row)
    {
        return table[row][PR_SUBJECT_A].String(true).GetString();
    }
    /// Reads the row again and again until it has this subject.
    static bool ComesToHave(CZebCachedTable& table, ULONG row, const char* subject)
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (SubjectOf(table, row) != subject)
        {
            if (std::chrono::steady_clock::now() > end)
            {
                return false;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }
    void RunChanger(int changes) const
    {
        const std::string command =
            zeb::platform::OwnFolder() + ZEB_STORE_CHANGER + " \"" + File("test.zeb") + "\" " + std::to_string(changes);
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }
};

TEST_F(Notified, ADelegateReceivesEveryRow)
{
    AddMessage("first", 1);
    CZebTable table = Sorted();
    Counter counter;
    CAdviseSinkBinder binder(&counter, &table);
    AddMessage("second", 2);
    EXPECT_TRUE(counter.Has(1, 0, 0));
    CZebFolder inbox = Inbox();
    CZebMessage message = inbox.CreateMessage(0);
    CZebPropValArray properties(1);
    properties[PR_SUBJECT_A] = "third";
    message.SetProps(properties, true, nullptr);
    EXPECT_TRUE(counter.Has(2, 0, 0));
    properties[PR_SUBJECT_A] = "changed";
    message.SetProps(properties, true, nullptr);
    EXPECT_TRUE(counter.Has(2, 1, 0));
    inbox.DeleteMessage(message.GetEntryID());
    EXPECT_TRUE(counter.Has(2, 1, 1));
    EXPECT_TRUE(counter.WasAlwaysOnAnotherThread());
    binder.Unadvise();
    AddMessage("unheard", 3);
    Counter witness;
    CAdviseSinkBinder other(&witness, &table);
    AddMessage("heard", 4);
    EXPECT_TRUE(witness.Has(1, 0, 0));
    EXPECT_TRUE(counter.Has(2, 1, 1));
}

TEST_F(Notified, ACachedTableShowsAdditions)
{
    AddMessage("first", 1);
    CZebCachedTable table(nullptr);
    table = Sorted();
    EXPECT_EQ(SubjectOf(table, 0), "first");
    AddMessage("urgent", 9);
    EXPECT_TRUE(ComesToHave(table, 0, "urgent"));
    EXPECT_EQ(SubjectOf(table, 1), "first");
}

TEST_F(Notified, AnotherProcessNotifiesRowByRow)
{
    CZebTable table = Sorted();
    const auto before = static_cast<int>(table.GetRowCount());
    Counter counter;
    CAdviseSinkBinder binder(&counter, &table);
    RunChanger(100);
    const auto after = static_cast<int>(table.GetRowCount());
    EXPECT_GT(after, before);
    EXPECT_TRUE(counter.HasGrownBy(after - before));
}

TEST_F(Notified, ACachedTableFollowsAnotherProcess)
{
    AddMessage("only", 0);
    CZebCachedTable table(nullptr);
    table = Sorted();
    EXPECT_EQ(SubjectOf(table, 0), "only");
    RunChanger(60);
    CZebTable fresh = Sorted();
    CZebRowSet rows;
    fresh.QueryRows(&rows, 50, nullptr, nullptr);
    ASSERT_GT(rows.Count(), 2u);
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        EXPECT_TRUE(ComesToHave(table, i, rows[i][PR_SUBJECT_A].String(true).GetString())) << i;
    }
}

TEST_F(Notified, DestroyingTablesDuringNotificationsIsSafe)
{
    CZebFolder inbox = Inbox();
    std::thread writer([&]
    {
        for (int i = 0; i < 100; ++i)
        {
            AddMessage("written", i);
        }
    });
    for (int i = 0; i < 100; ++i)
    {
        CZebCachedTable table(nullptr);
        table = inbox.GetContentsTable(MAPI_UNICODE);
        if (table.GetRowCount() > 0)
        {
            table[0];
        }
    }
    writer.join();
    EXPECT_EQ(inbox.GetContentsTable(0).GetRowCount(), 100u);
}

} // namespace
} // namespace zeb::test
