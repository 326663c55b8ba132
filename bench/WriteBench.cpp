// store-write: messages saved one by one through MAPI, against the same rows by prepared statements.
// write-indexed: the same messages saved with the text index on, against off.
#include "bench/Benches.h"
#include "bench/Sql.h"
#include "bench/Stores.h"

#include <filesystem>
#include <vector>

namespace bench
{

namespace
{

struct WriteState
{
    std::string folder;
    ULONG count;
    std::vector<StoredRow> rows;

    std::string OursPath() const { return folder + "/write-ours.zeb"; }
    std::string BaselinePath() const { return folder + "/write-baseline.zeb"; }
};

double WriteByMapi(WriteState& state, const char* index = nullptr)
{
    MakeStore("write", state.OursPath(), index);
    CZebSession session = Zeb_GetMAPI().OpenSession(nullptr, "write");
    CZebMsgStore store = session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS);
    CZebFolder inbox = store.OpenInboxFolder(MAPI_BEST_ACCESS);
    // The values are created before the measurement, like the baseline's rows.
    std::vector<std::unique_ptr<CZebPropValArray>> messages;
    for (ULONG number = 0; number < state.count; ++number)
    {
        messages.push_back(std::make_unique<CZebPropValArray>(12));
        FillMessage(*messages.back(), number);
    }
    const double seconds = Seconds([&]
    {
        for (const auto& values : messages)
        {
            inbox.CreateMessage(0).SetProps(*values, true, nullptr);
        }
    });
    inbox.Free();
    store.Free();
    session.Logoff(0, 0, 0);
    return seconds;
}

/// The rows that the provider wrote, for the baseline.
void ReadRows(WriteState& state)
{
    SqlDatabase database = SqlOpen(state.OursPath());
    SqlStatement select = SqlPrepare(database.get(), "SELECT * FROM message ORDER BY id");
    while (sqlite3_step(select.get()) == SQLITE_ROW)
    {
        state.rows.emplace_back(select.get());
    }
    if (state.rows.size() != state.count)
    {
        throw std::runtime_error("store-write did not find every message it wrote.");
    }
}

double WriteByHand(WriteState& state)
{
    if (state.rows.empty())
    {
        ReadRows(state);
    }
    MakeStore("write", state.BaselinePath());
    SqlDatabase database = SqlOpen(state.BaselinePath());
    SqlStatement begin = SqlPrepare(database.get(), "BEGIN IMMEDIATE");
    SqlStatement insert = SqlPrepare(database.get(), "INSERT INTO message VALUES(?,?,?,?,?,?,?,?,?,?,?,?)");
    SqlStatement update = SqlPrepare(database.get(), "UPDATE contents SET rows=rows+1, unread=unread+1, next=next+1, "
                                                     "change=change+1 WHERE container=(?1>>32)");
    SqlStatement commit = SqlPrepare(database.get(), "COMMIT");
    return Seconds([&]
    {
        for (const StoredRow& row : state.rows)
        {
            SqlRun(database.get(), begin.get());
            row.Bind(insert.get());
            SqlRun(database.get(), insert.get());
            row.Bind(update.get());
            SqlRun(database.get(), update.get());
            SqlRun(database.get(), commit.get());
        }
    });
}

} // namespace

Measurement StoreWrite(const Options& options)
{
    auto state = std::make_shared<WriteState>();
    state->folder = options.folder;
    state->count = options.brief ? 500 : 100000;
    return {"store-write", 1.1, [state] { return WriteByMapi(*state); }, [state] { return WriteByHand(*state); },
            options.brief ? 1 : 5};
}

Measurement WriteIndexed(const Options& options)
{
    auto state = std::make_shared<WriteState>();
    state->folder = options.folder;
    state->count = options.brief ? 3000 : 100000;
    return {"write-indexed", 2, [state] { return WriteByMapi(*state, "on"); },
            [state] { return WriteByMapi(*state, "off"); }, options.brief ? 1 : 3};
}

} // namespace bench
