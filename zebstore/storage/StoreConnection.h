// One connection to a store file: lock, transactions, snapshots.
#pragma once

#include "zebstore/base/Locks.h"
#include "zebstore/storage/Database.h"

#include <memory>
#include <string>

namespace zebstore
{

/// Owns the database connection of a store file and the lock that serializes its use. Large values share it, so it
/// lives as long as the last of them. Threads: any; whoever uses Db() holds Lock().
class StoreConnection : public std::enable_shared_from_this<StoreConnection>
{
public:
    /// @param version the schema version of the file
    StoreConnection(std::unique_ptr<Database> database, bool readOnly, std::int64_t version);

    const std::string& Path() const { return m_database->Path(); }
    bool IsReadOnly() const { return m_readOnly; }
    std::int64_t Version() const { return m_version; }
    /// @throws Error MAPI_E_NO_ACCESS, naming the file, when it is opened for reading only
    void RequireWritable() const;

    /// Recursive, for a caller that makes several calls which belong together.
    StoreLock& Lock() const { return m_lock; }
    Database& Db() const { return *m_database; }

private:
    const std::unique_ptr<Database> m_database;
    const bool m_readOnly;
    const std::int64_t m_version;
    mutable StoreLock m_lock;
};

/// The lock and a write transaction; inside another one it is a part of that. Without Commit it is rolled back.
class StoreTransaction
{
public:
    explicit StoreTransaction(const StoreConnection& connection)
        : m_hold(connection.Lock())
        , m_transaction(connection.Db())
    {
    }

    /// @throws Error also when a part of the transaction failed before; it is then rolled back.
    void Commit() { m_transaction.Commit(); }

private:
    const std::lock_guard<StoreLock> m_hold;
    Transaction m_transaction;
};

/// The lock and a read transaction: all that is read while it lives comes from one snapshot of the file.
class StoreSnapshot
{
public:
    explicit StoreSnapshot(const StoreConnection& connection)
        : m_hold(connection.Lock())
        , m_read(connection.Db())
    {
    }

private:
    const std::lock_guard<StoreLock> m_hold;
    const ReadScope m_read;
};

} // namespace zebstore
