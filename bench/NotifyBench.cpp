// store-notify: one added row in an open, sorted table that is advised, against reading the table again.
#include "bench/Benches.h"
#include "bench/HugeStore.h"
#include "bench/TableReads.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stdexcept>

namespace bench
{

namespace
{

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
    Advised(std::shared_ptr<void> of, CZebFolder& folder, ULONG rows)
        : owner(std::move(of))
        , inbox(folder)
        , count(rows)
        , table(inbox.GetContentsTable(MAPI_UNICODE))
        , binder(&counter, nullptr)
    {
        SortBySubject(table);
        binder.Advise(table);
        RequireCount(count);
    }

    void RequireCount(ULONG expected)
    {
        if (table.GetRowCount() != expected)
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
            message = inbox.CreateMessage(0);
            message.SetProps(values, true, nullptr);
            counter.WaitFor(++heard);
            RequireCount(count + 1);
        });
        inbox.DeleteMessage(message.GetEntryID());
        counter.WaitFor(++heard);
        return seconds;
    }

    std::shared_ptr<void> owner;
    CZebFolder inbox;
    ULONG count;
    CZebTable table;
    RowCounter counter;
    CAdviseSinkBinder binder;
    int heard = 0;
};

/// The fastest of some: the first one after another store's may wait for the work that the other left.
double FastestAdd(Advised& advised)
{
    double fastest = advised.AddOne();
    for (int i = 1; i < 5; ++i)
    {
        fastest = std::min(fastest, advised.AddOne());
    }
    return fastest;
}

double ReadAgain(StoreOf& store)
{
    return Seconds([&]
    {
        CZebTable table = store.Inbox().GetContentsTable(MAPI_UNICODE);
        SortBySubject(table);
        ReadWindow(table, ListWindow);
    });
}

} // namespace

Measurement StoreNotify(const Options& options)
{
    auto store = std::make_shared<StoreOf>(options.folder, options.brief ? 5000 : 1000000);
    auto advised = std::make_shared<Advised>(store, store->Inbox(), store->Count());
    return {"store-notify", 0.001, [advised] { return advised->AddOne(); }, [store] { return ReadAgain(*store); },
            options.brief ? 3 : 11};
}

Measurement HugeNotify(const Options& options)
{
    const HugeStores stores = BothOf(options);
    const auto advised = [](const std::shared_ptr<HugeStore>& store)
    { return std::make_shared<Advised>(store, store->Inbox(), store->Count()); };
    auto huge = advised(stores.first), large = advised(stores.second);
    return {"store-huge-notify", 1.2, [huge] { return FastestAdd(*huge); }, [large] { return FastestAdd(*large); },
            options.brief ? 3 : 21};
}

} // namespace bench
