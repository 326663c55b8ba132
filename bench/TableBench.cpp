// store-open, store-window, store-sort, store-memory: contents tables of a large folder.
#include "bench/Benches.h"
#include "bench/Sql.h"
#include "bench/Stores.h"
#include "bench/TableReads.h"

#include <malloc.h>
#include <stdexcept>

namespace bench
{

namespace
{

std::shared_ptr<StoreOf> Large(const Options& options)
{
    return std::make_shared<StoreOf>(options.folder, options.brief ? 5000 : 1000000);
}

std::shared_ptr<StoreOf> Small(const Options& options)
{
    return std::make_shared<StoreOf>(options.folder, 1000);
}

const ULONG SortTags[] = {PR_SUBJECT_W, PR_MESSAGE_DELIVERY_TIME};

double SortByTable(StoreOf& store)
{
    return Seconds([&]
    {
        for (const ULONG tag : SortTags)
        {
            CZebTable table = store.Inbox().GetContentsTable(MAPI_UNICODE);
            SetListColumns(table);
            CZebSortOrder order(tag, TABLE_SORT_ASCEND);
            table.SortTable(order);
            ReadWindow(table, ListWindow);
        }
    });
}

/// The same two lists of keys by SQLite, and the same first rows.
double SortBySql(sqlite3* database, const std::vector<const char*>& queries, ULONG expected)
{
    return Seconds([&]
    {
        for (const char* sql : queries)
        {
            SqlStatement select = SqlPrepare(database, sql);
            std::vector<long long> keys;
            int code = SQLITE_ROW;
            while ((code = sqlite3_step(select.get())) == SQLITE_ROW)
            {
                keys.push_back(sqlite3_column_int64(select.get(), 0));
            }
            SqlCheck(database, code);
            if (keys.size() != expected)
            {
                throw std::runtime_error("store-sort did not see every row.");
            }
            Keep(static_cast<unsigned long long>(keys.front()));
        }
    });
}

size_t HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

} // namespace

Measurement StoreOpen(const Options& options)
{
    auto large = Large(options);
    auto few = Small(options);
    return {"store-open", 5, [large] { return OpenOnce(large->Inbox(), large->Count()); },
            [few] { return OpenOnce(few->Inbox(), few->Count()); }, options.brief ? 5 : 51};
}

Measurement StoreWindow(const Options& options)
{
    const auto sought = [](const std::shared_ptr<StoreOf>& store)
    { return std::make_shared<SoughtTable>(store, store->Inbox(), store->Count()); };
    auto large = sought(Large(options)), few = sought(Small(options));
    const int windows = options.brief ? 20 : 1000;
    return {"store-window", 1.5, [=] { return large->Windows(windows); }, [=] { return few->Windows(windows); },
            options.brief ? 3 : 11};
}

Measurement StoreSort(const Options& options)
{
    auto store = Large(options);
    auto database = std::make_shared<SqlDatabase>(SqlOpen(store->Path()));
    const std::vector<const char*> queries = {"SELECT id FROM message ORDER BY subject, id",
                                              "SELECT id FROM message ORDER BY delivered, id"};
    return {"store-sort", 1.2, [store] { return SortByTable(*store); },
            [=] { return SortBySql(database->get(), queries, store->Count()); }, options.brief ? 3 : 7};
}

Measurement StoreMemory(const Options& options)
{
    auto large = Large(options);
    const auto bytesPerRow = [large]
    {
        const size_t before = HeapInUse();
        CZebTable table = large->Inbox().GetContentsTable(MAPI_UNICODE);
        SetListColumns(table);
        CZebSortOrder order(PR_SUBJECT_W, TABLE_SORT_ASCEND);
        table.SortTable(order);
        table.SeekRow(BOOKMARK_BEGINNING, static_cast<LONG>(large->Count() / 2), nullptr);
        ReadWindow(table, ListWindow);
        const size_t after = HeapInUse();
        return static_cast<double>(after > before ? after - before : 0) / large->Count();
    };
    return {"store-memory", 16, bytesPerRow, nullptr, 3};
}

} // namespace bench
