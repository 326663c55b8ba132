// store-restrict: a content and a date restriction over a large folder, against the same WHERE in SQLite.
#include "bench/Benches.h"
#include "bench/Sql.h"
#include "bench/Stores.h"

#include <stdexcept>
#include <vector>

namespace bench
{

namespace
{

/// A word in one subject of eight, and the middle of the dates.
constexpr const char* Word = "budget";
constexpr long long Since = 132000000000000000ll + (1ll << 31) * 10000000ll;
constexpr LONG Window = 50;

/// Restricts a new table, counts its rows and reads the first ones.
size_t RestrictByTable(StoreOf& store)
{
    CZebTable table = store.Inbox().GetContentsTable(MAPI_UNICODE);
    table.SetColumns(4, PR_ENTRYID, PR_SUBJECT_W, PR_SENDER_NAME_W, PR_MESSAGE_DELIVERY_TIME);
    CZebRestrictionAllocator both;
    both.Allocate();
    both.CreateAnd(2);
    both[0].CreateContent(PR_SUBJECT_A, Word, FL_SUBSTRING | FL_IGNORECASE);
    const FILETIME since = {static_cast<DWORD>(Since), static_cast<DWORD>(Since >> 32)};
    both[1].CreateProp(PR_MESSAGE_DELIVERY_TIME, RELOP_GE) = since;
    table.Restrict(both, 0);
    const ULONG count = table.GetRowCount();
    CZebRowSet rows;
    table.QueryRows(&rows, Window, nullptr, nullptr);
    Keep(rows.Count());
    return count;
}

/// The same list of keys by SQLite. The column of subjects holds them in lower case.
size_t RestrictBySql(sqlite3* database)
{
    SqlStatement select = SqlPrepare(database, "SELECT id FROM message WHERE instr(subject, ?) > 0 "
                                               "AND delivered >= ? ORDER BY id");
    SqlCheck(database, sqlite3_bind_text(select.get(), 1, Word, -1, SQLITE_STATIC));
    SqlCheck(database, sqlite3_bind_int64(select.get(), 2, Since));
    std::vector<long long> keys;
    int code = SQLITE_ROW;
    while ((code = sqlite3_step(select.get())) == SQLITE_ROW)
    {
        keys.push_back(sqlite3_column_int64(select.get(), 0));
    }
    SqlCheck(database, code);
    return keys.size();
}

double Timed(const std::function<size_t()>& find, size_t* found)
{
    return Seconds([&] { *found = find(); });
}

} // namespace

Measurement StoreRestrict(const Options& options)
{
    auto store = std::make_shared<StoreOf>(options.folder, options.brief ? 5000 : 1000000);
    auto database = std::make_shared<SqlDatabase>(SqlOpen(store->Path()));
    auto found = std::make_shared<size_t>(0);
    return {"store-restrict", 1.2, [=] { return Timed([=] { return RestrictByTable(*store); }, found.get()); }, [=]
    {
        size_t expected = 0;
        const double seconds = Timed([=] { return RestrictBySql(database->get()); }, &expected);
        if (expected == 0 || expected != *found)
        {
            throw std::runtime_error("store-restrict found " + std::to_string(*found) + " messages, not " +
                                     std::to_string(expected) + ".");
        }
        return seconds;
    }, options.brief ? 3 : 11};
}

} // namespace bench
