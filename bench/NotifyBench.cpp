// store-notify: one added row in an open, sorted table that is advised, against reading the table again.
#include "bench/Benches.h"
#include "bench/Stores.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace bench
{

namespace
{

constexpr LONG Window = 50;

void Sort(CZebTable& table)
{
    table.SetColumns(4, PR_ENTRYID, PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_DELIVERY_TIME);
    CZebSortOrder order(PR_SUBJECT_W, TABLE_SORT_ASCEND);
    table.SortTable(order);
}

/// Counts notifications of single rows; any other notification invalidates the measurement.
class RowCounter : public CAdviseSinkDelegate
{
public:
    void OnTable_Modified(TABLE_NOTIFICATION* notification) override
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        const ULONG event = notification->ulTableEvent;
        m_spoilt = m_spoilt || (event != TABLE_ROW_ADDED && event != TABLE_ROW_DELETED);
        ++m_heard;
        m_changed.notify_all();
    }
    void WaitFor(int heard)
    {
        std::unique_lock<std::mutex> hold(m_lock);
        const auto isThere = [&] { return m_heard >= heard; };
        if (!m_changed.wait_for(hold, std::chrono::seconds(60), isThere) || m_spoilt)
        {
            throw std::runtime_error("store-notify received no notification of a single row.");
        }
    }

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    int m_heard = 0;
    bool m_spoilt = false;
};

/// The advised table, and how many notifications it has had.
struct Advised
{
    explicit Advised(std::shared_ptr<StoreOf> of)
        : store(std::move(of))
        , table(store->Inbox().GetContentsTable(MAPI_UNICODE))
        , binder(&counter, nullptr)
    {
        Sort(table);
        binder.Advise(table);
        RequireCount(store->Count());
    }

    void RequireCount(ULONG count)
    {
        if (table.GetRowCount() != count)
        {
            throw std::runtime_error("store-notify does not see the rows it should.");
        }
    }

    /// Saves a message, and deletes it again after the measurement.
    double AddOne()
    {
        CZebPropValArray values(12);
        FillMessage(values, 500 + static_cast<ULONG>(heard));
        CZebMessage message;
        const double seconds = Seconds([&]
        {
            message = store->Inbox().CreateMessage(0);
            message.SetProps(values, true, nullptr);
            counter.WaitFor(++heard);
            RequireCount(store->Count() + 1);
        });
        store->Inbox().DeleteMessage(message.GetEntryID());
        counter.WaitFor(++heard);
        return seconds;
    }

    std::shared_ptr<StoreOf> store;
    CZebTable table;
    RowCounter counter;
    CAdviseSinkBinder binder;
    int heard = 0;
};

double ReadAgain(StoreOf& store)
{
    return Seconds([&]
    {
        CZebTable table = store.Inbox().GetContentsTable(MAPI_UNICODE);
        Sort(table);
        CZebRowSet rows;
        table.QueryRows(&rows, Window, nullptr, nullptr);
        if (rows.Count() != Window)
        {
            throw std::runtime_error("A window did not hold the rows it should.");
        }
    });
}

} // namespace

Measurement StoreNotify(const Options& options)
{
    auto store = std::make_shared<StoreOf>(options.folder, options.brief ? 5000 : 1000000);
    auto advised = std::make_shared<Advised>(store);
    return {"store-notify", 0.001, [advised] { return advised->AddOne(); }, [store] { return ReadAgain(*store); },
            options.brief ? 3 : 11};
}

} // namespace bench
