// The baselines' own access to SQLite: prepared statements, nothing else.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <stdexcept>
#include <string>

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

} // namespace bench
