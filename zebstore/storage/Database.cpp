#include "zebstore/storage/Database.h"

#include <sqlite3.h>

#include <atomic>

namespace zebstore
{

namespace
{

constexpr int BusyMilliseconds = 10000;

// Commits of this process, to any file; counted after they can be seen.
std::atomic<std::uint64_t> g_commitsHere{0};

HRESULT ResultOf(int code)
{
    switch (code & 0xFF)
    {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return MAPI_E_BUSY;
    case SQLITE_NOMEM:
    case SQLITE_TOOBIG:
        return MAPI_E_NOT_ENOUGH_MEMORY;
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_CANTOPEN:
        return MAPI_E_NO_ACCESS;
    case SQLITE_FULL:
        return MAPI_E_NOT_ENOUGH_DISK;
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
    // No statement fails by itself so: tables or rows of the file are not as they were written.
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
        return MAPI_E_CORRUPT_STORE;
    case SQLITE_IOERR:
        return MAPI_E_DISK_ERROR;
    default:
        return MAPI_E_CALL_FAILED;
    }
}

std::string SentenceOf(const std::string& path, int code, const std::string& detail)
{
    const std::string file = "the store file '" + path + "' ";
    switch (code & 0xFF)
    {
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return file + "is being written by another program";
    case SQLITE_READONLY:
        return file + "cannot be written: it is read-only";
    case SQLITE_PERM:
    case SQLITE_AUTH:
    case SQLITE_CANTOPEN:
        return file + "cannot be opened";
    case SQLITE_FULL:
        return file + "cannot grow: the disk is full";
    case SQLITE_CORRUPT:
        return file + "is damaged or truncated";
    case SQLITE_NOTADB:
        return file + "is not a database";
    case SQLITE_ERROR:
    case SQLITE_CONSTRAINT:
    case SQLITE_MISMATCH:
        return file + "is damaged: " + detail;
    default:
        return file + "cannot be used: " + detail;
    }
}

/// The name by which SQLite opens a file that no process writes; "file:///C:/x" for a path with a drive.
std::string ImmutableUri(const std::string& path)
{
    std::string uri = "file:";
    if (path.size() > 1 && path[1] == ':')
    {
        uri += "///";
    }
    for (const char each : path)
    {
        if (each == '\\')
        {
            uri += '/';
        }
        else if (each == '?' || each == '#' || each == '%')
        {
            constexpr char Digits[] = "0123456789ABCDEF";
            uri += {'%', Digits[each >> 4], Digits[each & 15]};
        }
        else
        {
            uri += each;
        }
    }
    return uri + "?immutable=1";
}

} // namespace

Database::Database(const std::string& path, Mode mode)
    : m_path(path)
{
    const int flags = mode == Mode::Immutable   ? SQLITE_OPEN_READONLY | SQLITE_OPEN_URI
                      : mode == Mode::ReadOnly  ? SQLITE_OPEN_READONLY
                      : mode == Mode::ReadWrite ? SQLITE_OPEN_READWRITE
                                                : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    const std::string name = mode == Mode::Immutable ? ImmutableUri(path) : path;
    const int code = sqlite3_open_v2(name.c_str(), &m_handle, flags, nullptr);
    if (code == SQLITE_OK)
    {
        sqlite3_extended_result_codes(m_handle, 1);
        sqlite3_busy_timeout(m_handle, BusyMilliseconds);
        return;
    }
    const Error error(ResultOf(code), SentenceOf(path, code, sqlite3_errstr(code)));
    sqlite3_close(m_handle);
    throw error;
}

Database::~Database()
{
    for (auto& each : m_statements)
    {
        sqlite3_finalize(each.second.statement);
    }
    sqlite3_close(m_handle);
}

void Database::Fail(int code) const
{
    const bool isLast = sqlite3_extended_errcode(m_handle) == code;
    throw Error(ResultOf(code), SentenceOf(m_path, code, isLast ? sqlite3_errmsg(m_handle) : sqlite3_errstr(code)));
}

bool Database::IsOfSystem(int code)
{
    const HRESULT result = ResultOf(code);
    return result == MAPI_E_DISK_ERROR || result == MAPI_E_NOT_ENOUGH_DISK || result == MAPI_E_NOT_ENOUGH_MEMORY ||
           result == MAPI_E_BUSY;
}

std::uint64_t Database::Commits()
{
    // What is read within a transaction is the state at its begin.
    if (!sqlite3_get_autocommit(m_handle) || sqlite3_txn_state(m_handle, nullptr) != SQLITE_TXN_NONE)
    {
        return 0;
    }
    const std::uint64_t here = g_commitsHere.load(std::memory_order_acquire);
    const auto now = std::chrono::steady_clock::now();
    if (m_commits != 0 && here == m_commitsHere && now - m_polled < m_pollInterval)
    {
        return m_commits;
    }
    // The data version is that of the last read of the file; the statement makes SQLite read it.
    Query(*this, "PRAGMA data_version").Run();
    std::uint32_t version = 0;
    const int code = sqlite3_file_control(m_handle, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    if (code != SQLITE_OK)
    {
        Fail(code);
    }
    if (m_commits == 0 || version != m_dataVersion)
    {
        m_dataVersion = version;
        ++m_commits;
    }
    m_commitsHere = here;
    m_polled = now;
    return m_commits;
}

void Database::Execute(const char* sql)
{
    const int code = sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr);
    g_commitsHere.fetch_add(1, std::memory_order_release);
    if (code != SQLITE_OK)
    {
        Fail(code);
    }
}

sqlite3_stmt* Database::Prepare(std::string_view sql, bool forLong)
{
    sqlite3_stmt* statement = nullptr;
    const int code = sqlite3_prepare_v3(m_handle, sql.data(), static_cast<int>(sql.size()),
                                        forLong ? SQLITE_PREPARE_PERSISTENT : 0, &statement, nullptr);
    if (code != SQLITE_OK)
    {
        Fail(code);
    }
    return statement;
}

Database::Prepared& Database::Cached(const char* literal)
{
    Prepared& prepared = m_statements[literal];
    if (prepared.statement == nullptr)
    {
        prepared.statement = Prepare(literal, true);
    }
    return prepared;
}

Query::Query(Database& database, const char* literal, Kept)
    : m_database(database)
{
    Database::Prepared& prepared = database.Cached(literal);
    if (prepared.busy)
    {
        m_statement = database.Prepare(literal, false);
        return;
    }
    prepared.busy = true;
    m_cached = &prepared;
    m_statement = prepared.statement;
}

Query::Query(Database& database, const std::string& sql)
    : m_database(database)
    , m_statement(database.Prepare(sql, false))
{
}

Query::~Query()
{
    if (m_cached == nullptr)
    {
        sqlite3_finalize(m_statement);
        return;
    }
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
    m_cached->busy = false;
}

void Query::Check(int code) const
{
    if (code != SQLITE_OK)
    {
        m_database.Fail(code);
    }
}

Query& Query::Bind(int index, std::int64_t number)
{
    Check(sqlite3_bind_int64(m_statement, index, number));
    return *this;
}

Query& Query::BindText(int index, std::string_view text)
{
    Check(sqlite3_bind_text64(m_statement, index, text.data() != nullptr ? text.data() : "", text.size(), SQLITE_STATIC,
                              SQLITE_UTF8));
    return *this;
}

Query& Query::BindBlob(int index, std::string_view bytes)
{
    Check(sqlite3_bind_blob64(m_statement, index, bytes.data() != nullptr ? bytes.data() : "", bytes.size(),
                              SQLITE_STATIC));
    return *this;
}

Query& Query::BindNull(int index)
{
    Check(sqlite3_bind_null(m_statement, index));
    return *this;
}

bool Query::Step()
{
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW)
    {
        return true;
    }
    if (code != SQLITE_DONE)
    {
        m_database.Fail(code);
    }
    return false;
}

void Query::Run()
{
    while (Step())
    {
    }
}

std::vector<std::int64_t> Query::Numbers(size_t expected)
{
    std::vector<std::int64_t> numbers;
    numbers.reserve(expected);
    while (Step())
    {
        numbers.push_back(Number(0));
    }
    return numbers;
}

void Query::Reset()
{
    sqlite3_reset(m_statement);
}

std::int64_t Query::Number(int column) const
{
    return sqlite3_column_int64(m_statement, column);
}

std::string_view Query::Bytes(int column) const
{
    const void* bytes = sqlite3_column_blob(m_statement, column);
    const int size = sqlite3_column_bytes(m_statement, column);
    if (bytes == nullptr && size == 0 && sqlite3_errcode(m_database.m_handle) == SQLITE_NOMEM)
    {
        m_database.Fail(SQLITE_NOMEM);
    }
    return {static_cast<const char*>(bytes), static_cast<size_t>(size)};
}

bool Query::IsNull(int column) const
{
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

Transaction::Transaction(Database& database)
    : m_database(database)
{
    if (database.m_depth == 0)
    {
        Query(database, "BEGIN IMMEDIATE").Run();
        database.m_doomed = false;
    }
    ++database.m_depth;
}

Transaction::~Transaction()
{
    if (m_open)
    {
        RollBack();
    }
}

void Transaction::RollBack() noexcept
{
    m_open = false;
    m_database.m_doomed = true;
    if (--m_database.m_depth > 0)
    {
        return;
    }
    // Some failures have ended the transaction already.
    if (!sqlite3_get_autocommit(m_database.m_handle))
    {
        sqlite3_exec(m_database.m_handle, "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Transaction::Commit()
{
    if (m_database.m_depth > 1)
    {
        --m_database.m_depth;
        m_open = false;
        return;
    }
    if (m_database.m_doomed)
    {
        throw Error(MAPI_E_CALL_FAILED, "a part of the change to the store file '" + m_database.m_path + "' failed");
    }
    Query(m_database, "COMMIT").Run();
    g_commitsHere.fetch_add(1, std::memory_order_release);
    m_open = false;
    --m_database.m_depth;
    if (m_database.m_observer != nullptr)
    {
        m_database.m_observer->Committed();
    }
}

ReadScope::ReadScope(Database& database)
    : m_database(database)
{
    if (sqlite3_get_autocommit(database.Handle()))
    {
        Query(database, "BEGIN").Run();
        m_began = true;
    }
}

ReadScope::~ReadScope()
{
    if (m_began && !sqlite3_get_autocommit(m_database.Handle()))
    {
        sqlite3_exec(m_database.Handle(), "COMMIT", nullptr, nullptr, nullptr);
    }
}

} // namespace zebstore
