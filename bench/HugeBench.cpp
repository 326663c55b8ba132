// store-huge: contents tables of 10,000,000 messages against those of 1,000,000; where all rows are touched, a row of each.
#include "bench/Benches.h"
#include "bench/HugeStore.h"
#include "bench/TableReads.h"

namespace bench
{

namespace
{

double SortOnce(HugeStore& store)
{
    const double seconds = Seconds([&]
    {
        CZebTable table = store.Inbox().GetContentsTable(MAPI_UNICODE);
        SortBySubject(table);
        ReadWindow(table, ListWindow);
    });
    return seconds / store.Count();
}

} // namespace

Measurement HugeOpen(const Options& options)
{
    const HugeStores stores = BothOf(options);
    return {"store-huge-open", 1.2, [=] { return OpenOnce(stores.first->Inbox(), stores.first->Count()); },
            [=] { return OpenOnce(stores.second->Inbox(), stores.second->Count()); }, options.brief ? 5 : 51};
}

Measurement HugeWindow(const Options& options)
{
    const HugeStores stores = BothOf(options);
    const auto sought = [](const std::shared_ptr<HugeStore>& store)
    { return std::make_shared<SoughtTable>(store, store->Inbox(), store->Count()); };
    auto huge = sought(stores.first), large = sought(stores.second);
    const int windows = options.brief ? 20 : 1000;
    return {"store-huge-window", 1.2, [=] { return huge->Windows(windows); }, [=] { return large->Windows(windows); },
            options.brief ? 3 : 11};
}

Measurement HugeSort(const Options& options)
{
    const HugeStores stores = BothOf(options);
    return {"store-huge-sort", 1.2, [=] { return SortOnce(*stores.first); }, [=] { return SortOnce(*stores.second); },
            options.brief ? 1 : 3};
}

} // namespace bench
