// message-write: whole messages saved through MAPI, against the same rows by prepared statements. start-up: the tool as a
// process on a large store, against a small one.
#include "bench/Benches.h"
#include "bench/Process.h"
#include "bench/Sql.h"
#include "bench/Stores.h"

#include <array>

namespace bench
{

namespace
{

constexpr ULONG Recipients = 3, Files = 2;
constexpr size_t FileSize = 20 * 1024, BodySize = 4 * 1024;

/// A table of a store's file that saving a message writes rows into, and how the baseline inserts one.
struct WrittenTable
{
    const char* select;
    const char* insert;
};

constexpr std::array<WrittenTable, 5> WrittenTables = {{
    {"SELECT * FROM message ORDER BY id", "INSERT INTO message VALUES(?,?,?,?,?,?,?,?,?,?,?,?)"},
    {"SELECT * FROM recipient ORDER BY message, number", "INSERT INTO recipient VALUES(?,?,?)"},
    {"SELECT * FROM attachment ORDER BY message, number", "INSERT INTO attachment VALUES(?,?,?,?)"},
    {"SELECT * FROM large ORDER BY id", "INSERT INTO large VALUES(?,?)"},
    {"SELECT * FROM chunk ORDER BY id", "INSERT INTO chunk VALUES(?,?,?)"},
}};

struct MessageState
{
    std::string folder;
    ULONG count;
    std::array<std::vector<StoredRow>, WrittenTables.size()> rows;

    std::string OursPath() const { return folder + "/message-ours.zeb"; }
    std::string BaselinePath() const { return folder + "/message-baseline.zeb"; }
};

/// A new store in a profile of its own, opened for writing.
class NewStore
{
public:
    explicit NewStore(const std::string& path)
        : m_session(nullptr)
    {
        DeleteStore(path);
        MakeProfile("message", path);
        m_session = Zeb_GetMAPI().OpenSession(nullptr, "message");
        m_store = m_session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS);
        m_inbox = m_store.OpenInboxFolder(MAPI_BEST_ACCESS);
    }
    ~NewStore()
    {
        m_inbox.Free();
        m_store.Free();
        m_session.Logoff(0, 0, 0);
    }
    NewStore(const NewStore&) = delete;
    NewStore& operator=(const NewStore&) = delete;

    CZebFolder& Inbox() { return m_inbox; }

private:
    CZebSession m_session;
    CZebMsgStore m_store;
    CZebFolder m_inbox;
};

void SaveMessage(CZebFolder& inbox, CZebPropValArray& values, const std::string& file)
{
    CZebMessage message = inbox.CreateMessage(0);
    message.SetProps(values, false, nullptr);
    for (ULONG i = 0; i < Recipients; ++i)
    {
        message.AddRecipient(MAPI_TO, ZEBW("Grace Hopper"), ZEBW("grace@example.org"));
    }
    for (ULONG i = 0; i < Files; ++i)
    {
        message.AddAttachment(ZEBW("minutes.txt"), file.data(), static_cast<ULONG>(file.size()));
    }
    message.SaveChanges(KEEP_OPEN_READONLY);
}

double SaveByMapi(MessageState& state)
{
    NewStore store(state.OursPath());
    const std::string file(FileSize, 'x');
    const CStringW body(std::basic_string<WCHAR>(BodySize, WCHAR('b')).c_str());
    std::vector<std::unique_ptr<CZebPropValArray>> messages;
    for (ULONG number = 0; number < state.count; ++number)
    {
        messages.push_back(std::make_unique<CZebPropValArray>(12));
        FillMessage(*messages.back(), number);
        (*messages.back())[PR_BODY_W] = body;
    }
    return Seconds([&]
    {
        for (const auto& values : messages)
        {
            SaveMessage(store.Inbox(), *values, file);
        }
    });
}

/// The rows that the provider wrote. Each message wrote as many as the others.
void ReadWrittenRows(MessageState& state)
{
    SqlDatabase database = SqlOpen(state.OursPath());
    for (size_t table = 0; table < WrittenTables.size(); ++table)
    {
        SqlStatement select = SqlPrepare(database.get(), WrittenTables[table].select);
        while (sqlite3_step(select.get()) == SQLITE_ROW)
        {
            state.rows[table].emplace_back(select.get());
        }
        if (state.rows[table].size() % state.count != 0 || (table < 3 && state.rows[table].empty()))
        {
            throw std::runtime_error("message-write: the messages did not write the same number of rows.");
        }
    }
}

double SaveByHand(MessageState& state)
{
    if (state.rows.front().empty())
    {
        ReadWrittenRows(state);
    }
    NewStore(state.BaselinePath());
    SqlDatabase database = SqlOpen(state.BaselinePath());
    SqlStatement begin = SqlPrepare(database.get(), "BEGIN IMMEDIATE");
    SqlStatement update = SqlPrepare(database.get(), "UPDATE contents SET rows=rows+1, unread=unread+1, next=next+1, "
                                                     "change=change+1 WHERE container=(?1>>32)");
    SqlStatement commit = SqlPrepare(database.get(), "COMMIT");
    std::vector<SqlStatement> inserts;
    for (const WrittenTable& table : WrittenTables)
    {
        inserts.push_back(SqlPrepare(database.get(), table.insert));
    }
    return Seconds([&]
    {
        for (ULONG number = 0; number < state.count; ++number)
        {
            SqlRun(database.get(), begin.get());
            for (size_t table = 0; table < WrittenTables.size(); ++table)
            {
                const size_t each = state.rows[table].size() / state.count;
                for (size_t i = number * each; i < (number + 1) * each; ++i)
                {
                    state.rows[table][i].Bind(inserts[table].get());
                    SqlRun(database.get(), inserts[table].get());
                }
            }
            state.rows.front()[number].Bind(update.get());
            SqlRun(database.get(), update.get());
            SqlRun(database.get(), commit.get());
        }
    });
}

double SecondsOfStart(const std::string& profile)
{
    constexpr int Starts = 20;
    return Seconds([&]
    {
        for (int i = 0; i < Starts; ++i)
        {
            RunTool({"zeb", "inbox", "--limit", "1", "--profile", profile});
        }
    });
}

/// A profile on a benchmark store that nobody has open.
void MakeStartProfile(const std::string& folder, const char* profile, ULONG count)
{
    std::string path;
    {
        StoreOf store(folder, count);
        path = store.Path();
        store.Close();
    }
    MakeProfile(profile, path);
}

} // namespace

Measurement MessageWrite(const Options& options)
{
    auto state = std::make_shared<MessageState>();
    state->folder = options.folder;
    state->count = options.brief ? 100 : 5000;
    return {"message-write", 1.25, [state] { return SaveByMapi(*state); }, [state] { return SaveByHand(*state); },
            options.brief ? 1 : 5};
}

Measurement StartUp(const Options& options)
{
    MakeStartProfile(options.folder, "start-large", options.brief ? 2000 : 1000000);
    MakeStartProfile(options.folder, "start-small", 1000);
    return {"start-up", 1.2, [] { return SecondsOfStart("start-large"); }, [] { return SecondsOfStart("start-small"); },
            options.brief ? 1 : 5};
}

} // namespace bench
