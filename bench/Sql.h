// The baselines' own access to SQLite: prepared statements, nothing else.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench
{

struct SqlClose
{
    void operator()(sqlite3* database) const { sqlite3_close(database); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using SqlDatabase = std::unique_ptr<sqlite3, SqlClose>;
using SqlStatement = std::unique_ptr<sqlite3_stmt, SqlClose>;

inline void SqlCheck(sqlite3* database, int code)
{
    if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE)
    {
        throw std::runtime_error(std::string("SQLite: ") + sqlite3_errmsg(database));
    }
}

inline SqlDatabase SqlOpen(const std::string& path)
{
    sqlite3* raw = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, nullptr);
    SqlDatabase database(raw);
    SqlCheck(raw, code);
    // Like the provider opens its files.
    SqlCheck(raw, sqlite3_exec(raw,
                               "PRAGMA foreign_keys=ON; PRAGMA synchronous=NORMAL; PRAGMA cache_size=-16384; "
                               "PRAGMA wal_autocheckpoint=4000",
                               nullptr, nullptr, nullptr));
    return database;
}

inline SqlStatement SqlPrepare(sqlite3* database, const char* sql)
{
    sqlite3_stmt* raw = nullptr;
    SqlCheck(database, sqlite3_prepare_v3(database, sql, -1, SQLITE_PREPARE_PERSISTENT, &raw, nullptr));
    return SqlStatement(raw);
}

/// Runs a statement without result rows, and resets it.
inline void SqlRun(sqlite3* database, sqlite3_stmt* statement)
{
    SqlCheck(database, sqlite3_step(statement));
    SqlCheck(database, sqlite3_reset(statement));
}

/// One row from SQLite; the values are SQLite's own copies.
class StoredRow
{
public:
    explicit StoredRow(sqlite3_stmt* statement)
    {
        for (int i = 0; i < sqlite3_column_count(statement); ++i)
        {
            m_values.push_back(sqlite3_value_dup(sqlite3_column_value(statement, i)));
        }
    }
    StoredRow(StoredRow&&) = default;
    StoredRow(const StoredRow&) = delete;
    ~StoredRow()
    {
        for (sqlite3_value* value : m_values)
        {
            sqlite3_value_free(value);
        }
    }
    void Bind(sqlite3_stmt* statement) const
    {
        for (size_t i = 0; i < m_values.size(); ++i)
        {
            sqlite3_bind_value(statement, static_cast<int>(i) + 1, m_values[i]);
        }
    }

private:
    std::vector<sqlite3_value*> m_values;
};

} // namespace bench
