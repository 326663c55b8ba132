// One SQLite connection: statements, transactions, errors.
#pragma once

#include "zebstore/base/Error.h"
#include "zebstore/storage/CommitObserver.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace zebstore
{

/// Owns the connection and its prepared statements. Threads: one at a time, under the lock of StoreConnection.
class Database
{
public:
    enum class Mode
    {
        ReadOnly,
        /// As ReadOnly, without locks and with no other writer: for a file in a folder that cannot be written.
        Immutable,
        ReadWrite,
        Create,
    };

    /// @param path UTF-8
    /// @throws Error as Fail says
    Database(const std::string& path, Mode mode);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Runs one or more statements without results.
    void Execute(const char* sql);
    const std::string& Path() const { return m_path; }
    sqlite3* Handle() const { return m_handle; }

    /// Becomes another number with each commit to the file, of any connection of any process; reads no table. A
    /// commit of this process is seen at once, one of another process after the poll interval at most. 0 when that
    /// is unknown: in a transaction or a read of this connection.
    std::uint64_t Commits();
    /// For how long Commits does without a poll of the file while this process commits nothing: 10 microseconds unless
    /// set. A poll locks the file twice, and a table asks for its count with each row.
    void SetPollInterval(std::chrono::steady_clock::duration interval) { m_pollInterval = interval; }
    /// From now on `observer` (not owned) is called after each commit of this connection; null when there is no observer.
    void SetCommitObserver(CommitObserver* observer) { m_observer = observer; }

    /// Throws the Error that says what SQLite's code means for this file.
    [[noreturn]] void Fail(int code) const;
    /// Whether SQLite's code tells of the disk or of memory, not of the content of the file.
    static bool IsOfSystem(int code);

private:
    friend class Query;
    friend class Transaction;

    struct Prepared
    {
        sqlite3_stmt* statement = nullptr;
        bool busy = false;
    };
    Prepared& Cached(const char* literal);
    sqlite3_stmt* Prepare(std::string_view sql, bool forLong);

    std::string m_path;
    sqlite3* m_handle = nullptr;
    std::unordered_map<const void*, Prepared> m_statements; // by the address of the literal
    CommitObserver* m_observer = nullptr;
    int m_depth = 0; // of transactions
    bool m_doomed = false;
    std::uint32_t m_dataVersion = 0; // at the last call of Commits
    std::uint64_t m_commits = 0;
    std::uint64_t m_commitsHere = 0; // the process's commits at the last poll
    std::chrono::steady_clock::time_point m_polled;
    std::chrono::steady_clock::duration m_pollInterval = std::chrono::microseconds(10);
};

/// One run of a statement. Text and blobs are bound without a copy: they must live until the query ends.
class Query
{
public:
    /// @param sql a literal: the statement is prepared once for each literal and kept.
    template <size_t N>
    Query(Database& database, const char (&sql)[N])
        : Query(database, &sql[0], Kept{})
    {
    }
    /// A statement of its own.
    Query(Database& database, const std::string& sql);
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    /// Parameters count from 1.
    Query& Bind(int index, std::int64_t number);
    Query& BindText(int index, std::string_view text);
    Query& BindBlob(int index, std::string_view bytes);
    Query& BindNull(int index);

    /// @return true while there is a row.
    bool Step();
    /// Steps to the end.
    void Run();
    /// Steps to the end. @return the first column of all rows
    std::vector<std::int64_t> Numbers(size_t expected = 0);
    /// For the next run with other parameters.
    void Reset();

    /// Columns count from 0; views live until the next Step.
    std::int64_t Number(int column) const;
    std::string_view Bytes(int column) const;
    bool IsNull(int column) const;

private:
    struct Kept
    {
    };
    Query(Database& database, const char* literal, Kept);

    void Check(int code) const;
    Database& m_database;
    Database::Prepared* m_cached = nullptr;
    sqlite3_stmt* m_statement = nullptr;
};

/// A write transaction; inside another one it is a part of that. Without Commit it is rolled back.
class Transaction
{
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    /// @throws Error also when a part of the transaction failed before; it is then rolled back.
    void Commit();

private:
    void RollBack() noexcept;
    Database& m_database;
    bool m_open = true;
};

/// A read transaction; no-op inside a write transaction or another read transaction.
class ReadScope
{
public:
    explicit ReadScope(Database& database);
    ~ReadScope();
    ReadScope(const ReadScope&) = delete;
    ReadScope& operator=(const ReadScope&) = delete;

private:
    Database& m_database;
    bool m_began = false;
};

} // namespace zebstore
