// Cached tables that scroll while another process changes their store.
//
// ZEB_SOAK_MESSAGES and ZEB_SOAK_SECONDS in the environment make it shorter or longer.
#include "platform/messages.h"
#include "platform/module.h"
#include "tests/integration/Host.h"

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <random>
#include <thread>
#include <vector>

namespace zeb::test
{
namespace
{

using Clock = std::chrono::steady_clock;

const bool g_untraced = g_hostsAreTraced = false;

/// How a table is arranged.
enum class Order
{
    Natural,
    Subject,
    Importance,
    Restricted
};

void Arrange(CZebTable& table, Order order)
{
    table.SetColumns(5, PR_ENTRYID, PR_SUBJECT_A, PR_SENDER_NAME_A, PR_DISPLAY_TO_A, PR_IMPORTANCE);
    if (order == Order::Subject)
    {
        CZebSortOrder sort(PR_SUBJECT_A, TABLE_SORT_ASCEND);
        table.SortTable(sort);
    }
    if (order == Order::Importance)
    {
        CZebSortOrder sort(PR_IMPORTANCE, TABLE_SORT_DESCEND);
        sort.Add(PR_SUBJECT_A, TABLE_SORT_ASCEND);
        table.SortTable(sort);
    }
    if (order == Order::Restricted)
    {
        SPropValue least = {};
        least.ulPropTag = PR_IMPORTANCE;
        least.Value.l = 1;
        SRestriction restriction = {};
        restriction.rt = RES_PROPERTY;
        restriction.res.resProperty = {RELOP_GE, PR_IMPORTANCE, &least};
        table.Restrict(&restriction, 0);
    }
}

std::string TextOf(const CZebRow& row)
{
    std::string text = row[PR_ENTRYID].String(true).GetString();
    for (const ULONG tag : {PR_SUBJECT_A, PR_SENDER_NAME_A, PR_DISPLAY_TO_A, PR_IMPORTANCE})
    {
        text += std::string(" | ") + row[tag].String(true).GetString();
    }
    return text;
}

/// A cached table that is scrolled, and the reference for the comparison.
class Scrolled
{
public:
    Scrolled(CZebFolder& folder, Order order)
        : m_folder(folder)
        , m_order(order)
    {
        CZebTable table = m_folder.GetContentsTable(0);
        Arrange(table, m_order);
        m_table = table;
    }

    CZebCachedTable& Table() { return m_table; }

    /// Reads a few rows somewhere. @throws CZebException* but for a row that vanished
    void ScrollOnce(std::mt19937& random)
    {
        const ULONG count = m_table.GetRowCount();
        if (count == 0)
        {
            return;
        }
        const ULONG first = random() % count;
        for (ULONG i = first; i < std::min(first + 30, count); ++i)
        {
            if (!ReadOnce(i))
            {
                return;
            }
        }
    }
    int Read() const { return m_read; }

    /// Compares with a fresh read: first the rows around the one read last, as far as the table keeps them, then all.
    /// @return what differs; empty when nothing does
    std::string Differs()
    {
        CZebTable fresh = m_folder.GetContentsTable(0);
        Arrange(fresh, m_order);
        CZebRowSet rows;
        fresh.QueryAllRows(&rows, nullptr, nullptr);
        const ULONG count = rows.Count();
        if (m_table.GetRowCount() != count)
        {
            return "the count is " + std::to_string(m_table.GetRowCount()) + ", not " + std::to_string(count);
        }
        const ULONG last = m_last;
        for (ULONG i = last > 25 ? last - 25 : 0; i < std::min(last + 25, count); ++i)
        {
            if (const std::string text = DifferingRow(rows, i); !text.empty())
            {
                return "kept " + text;
            }
        }
        for (ULONG i = 0; i < count; ++i)
        {
            if (const std::string text = DifferingRow(rows, i); !text.empty())
            {
                return text;
            }
        }
        return "";
    }

private:
    /// @return false when the row had vanished
    bool ReadOnce(ULONG index)
    {
        try
        {
            const CZebRow row = m_table[index];
            const CStringA sender = row[PR_SENDER_NAME_A].String(true);
            // A row deleted between reading the list and the values has no values.
            if (row.hasRealValue(PR_SENDER_NAME_A) && sender != row[PR_DISPLAY_TO_A].String(true))
            {
                m_mixed = TextOf(row);
            }
            m_last = index;
            ++m_read;
            return true;
        }
        catch (CZebException* exception)
        {
            const HRESULT result = exception->GetResult();
            if (result != E_INVALIDARG && result != MAPI_E_NOT_FOUND)
            {
                throw;
            }
            exception->Delete();
            return false;
        }
    }
    std::string DifferingRow(const CZebRowSet& rows, ULONG i)
    {
        if (!m_mixed.empty())
        {
            return "row of two states: " + m_mixed;
        }
        const std::string mine = TextOf(m_table[i]);
        const std::string fresh = TextOf(rows[i]);
        return mine == fresh ? "" : "row " + std::to_string(i) + ": " + mine + " instead of " + fresh;
    }

    CZebFolder& m_folder;
    const Order m_order;
    CZebCachedTable m_table;
    ULONG m_last = 0;
    int m_read = 0;
    std::string m_mixed;
};

/// The result of a thread.
struct Result
{
    std::vector<std::string> problems;
    int read = 0;
    int messages = 0;
};

int FromEnvironment(const char* name, int otherwise)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::atoi(text) : otherwise;
}

int Drain(HWND window)
{
    int count = 0;
    platform::WindowMessage message = {};
    while (platform::WaitWindowMessage(window, 0, message))
    {
        count += message.message == WM_CACHED_TABLE_CHANGED ? 1 : 0;
    }
    return count;
}

class Soak : public StoreHost
{
protected:
    /// Four tables of one folder on a thread of their own, until the writer has ended and all changes have arrived.
    void Scroll(CZebFolder folder, unsigned seed, Result& result)
    {
        const HWND window = platform::CreateMessageWindow();
        try
        {
            std::mt19937 random(seed);
            std::vector<std::unique_ptr<Scrolled>> tables;
            for (const Order order : {Order::Natural, Order::Subject, Order::Importance, Order::Restricted})
            {
                tables.push_back(std::make_unique<Scrolled>(folder, order));
                tables.back()->Table().SetOwnerWindow(window);
            }
            while (!m_writerEnded)
            {
                for (const auto& table : tables)
                {
                    table->ScrollOnce(random);
                }
                result.messages += Drain(window);
            }
            for (const auto& table : tables)
            {
                Compare(*table, result);
                result.read += table->Read();
            }
        }
        catch (CException* failure)
        {
            result.problems.emplace_back(Zeb_GetExceptionDescription(failure).GetString());
            failure->Delete();
        }
        result.messages += Drain(window);
        platform::DestroyMessageWindow(window);
    }
    /// The last notifications may not have arrived yet.
    static void Compare(Scrolled& table, Result& result)
    {
        std::string difference;
        for (const auto end = Clock::now() + std::chrono::seconds(10); Clock::now() < end;)
        {
            difference = table.Differs();
            if (difference.empty())
            {
                return;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        result.problems.push_back(difference);
    }

    std::atomic<bool> m_writerEnded{false};
};

} // namespace

TEST_F(Soak, EightCachedTablesFollowAnotherProcess)
{
    CZebFolder inbox = Inbox();
    CZebFolder moved = inbox.CreateFolder("moved", false, true, 0, nullptr, FOLDER_GENERIC);
    const std::string command = platform::OwnFolder() + ZEB_SOAK_WRITER + " \"" + File("test.zeb") + "\" " +
                                std::to_string(FromEnvironment("ZEB_SOAK_MESSAGES", 20000)) + " " +
                                std::to_string(FromEnvironment("ZEB_SOAK_SECONDS", 60));
    int status = -1;
    std::thread writer([&]
    {
        status = std::system(command.c_str());
        m_writerEnded = true;
    });
    Result results[2];
    std::thread first([&] { Scroll(inbox, 1, results[0]); });
    std::thread second([&] { Scroll(moved, 2, results[1]); });
    writer.join();
    first.join();
    second.join();
    EXPECT_EQ(status, 0) << command;
    EXPECT_GT(inbox.GetContentsTable(0).GetRowCount(), 0u);
    for (const Result& result : results)
    {
        for (const std::string& problem : result.problems)
        {
            ADD_FAILURE() << problem;
        }
        EXPECT_GT(result.read, 0);
        EXPECT_GT(result.messages, 0) << "the owner window heard of nothing";
        RecordProperty("rows read", result.read);
        std::printf("%d rows read, %d messages to the owner window\n", result.read, result.messages);
    }
}

} // namespace zeb::test
