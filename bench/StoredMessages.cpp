#include "bench/StoredMessages.h"

namespace bench
{

namespace
{

constexpr const char* Selects[] = {"SELECT * FROM message ORDER BY id",
                                   "SELECT * FROM recipient ORDER BY message, number"};
constexpr const char* Inserts[] = {"INSERT INTO message VALUES(?,?,?,?,?,?,?,?,?,?,?,?)",
                                   "INSERT INTO recipient VALUES(?,?,?)"};

bool HasRows(sqlite3* database, const char* sql)
{
    SqlStatement select = SqlPrepare(database, sql);
    return sqlite3_step(select.get()) == SQLITE_ROW;
}

} // namespace

StoredMessages::StoredMessages(const std::string& path, size_t count)
{
    SqlDatabase database = SqlOpen(path);
    for (size_t table = 0; table < Tables; ++table)
    {
        SqlStatement select = SqlPrepare(database.get(), Selects[table]);
        while (sqlite3_step(select.get()) == SQLITE_ROW)
        {
            m_rows[table].push_back({sqlite3_column_int64(select.get(), 0), StoredRow(select.get())});
        }
    }
    if (m_rows[0].size() != count || HasRows(database.get(), "SELECT 1 FROM attachment") ||
        HasRows(database.get(), "SELECT 1 FROM large"))
    {
        throw std::runtime_error("'" + path + "' does not hold the messages that it should.");
    }
}

void StoredMessages::InsertInto(const std::string& path) const
{
    SqlDatabase database = SqlOpen(path);
    sqlite3* const raw = database.get();
    SqlStatement begin = SqlPrepare(raw, "BEGIN IMMEDIATE");
    SqlStatement message = SqlPrepare(raw, Inserts[0]);
    SqlStatement recipient = SqlPrepare(raw, Inserts[1]);
    SqlStatement update = SqlPrepare(raw, "UPDATE contents SET rows=rows+1, unread=unread+1, next=next+1, "
                                          "change=change+1 WHERE container=(?1>>32)");
    SqlStatement commit = SqlPrepare(raw, "COMMIT");
    auto next = m_rows[1].begin();
    for (const Keyed& each : m_rows[0])
    {
        SqlRun(raw, begin.get());
        each.row.Bind(message.get());
        SqlRun(raw, message.get());
        for (; next != m_rows[1].end() && next->message == each.message; ++next)
        {
            next->row.Bind(recipient.get());
            SqlRun(raw, recipient.get());
        }
        SqlCheck(raw, sqlite3_bind_int64(update.get(), 1, each.message));
        SqlRun(raw, update.get());
        SqlRun(raw, commit.get());
    }
}

} // namespace bench
