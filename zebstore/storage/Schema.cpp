#include "zebstore/storage/Schema.h"

#include "zebstore/storage/DateRuns.h"
#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/PropertyBlob.h"

#include <sqlite3.h>

#include <new>

namespace zebstore
{

namespace
{

struct TableSql
{
    const char* name;
    const char* sql;
    std::int64_t since;          // the schema version that brought it
    const char* older = nullptr; // its statement in files before version 4, where that differs
};

// folder.key is the sort key of the folder's name; siblings never share one. Its times are those of FILETIME;
// null in a folder of an older file, until it is saved.
//
// contents has a row for each folder contents: container = 2 * folder, + 1 for associated messages. `next` is
// the number that the next message gets, so numbers are never given twice; `change` rises with every
// transaction that touches a row of the contents. Container 0 holds the messages inside attachments, and its
// `change` is the change number of the folder tree. `recent` lists the rows that the last changes were about (see
// RecentChanges.h), so that an open table learns what happened without a search.
//
// A message's id is its container, shifted left by 32 bits, plus its number: the messages of a folder lie
// side by side, in the order in which they came, and a save appends to one page. The columns before `props`
// are copies of properties by which tables sort and restrict; the three texts are sort keys. message.props,
// attachment.props ... are property blobs (see PropertyBlob.h). date_run gives the first rows of a folder that is
// sorted by date (see DateRuns.h).
//
// A large value is cut into pieces; chunk.id is the value's id, shifted left by 24 bits, plus the piece's
// number, and chunk.sum the checksum of the piece.
//
// address holds the entries of the address book; its key is the sort key of the entry's name, by which they are
// listed. A member of a list is either an entry of this file or the identifier of a foreign one. The one row of
// directory counts the entries, and its `change` rises with every transaction that touches the address book.
constexpr TableSql Tables[] = {
    {"store", "CREATE TABLE store(id INTEGER PRIMARY KEY CHECK(id=1), uid BLOB NOT NULL, props BLOB NOT NULL)", 1},
    {"folder",
     "CREATE TABLE folder(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER REFERENCES folder(id), "
     "type INTEGER NOT NULL, key TEXT NOT NULL, props BLOB NOT NULL, created INTEGER, modified INTEGER, "
     "UNIQUE(parent, key))",
     1,
     "CREATE TABLE folder(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER REFERENCES folder(id), "
     "type INTEGER NOT NULL, key TEXT NOT NULL, props BLOB NOT NULL, UNIQUE(parent, key))"},
    {"contents",
     "CREATE TABLE contents(container INTEGER PRIMARY KEY, folder INTEGER REFERENCES folder(id) "
     "ON DELETE CASCADE, rows INTEGER NOT NULL, unread INTEGER NOT NULL, next INTEGER NOT NULL, "
     "change INTEGER NOT NULL, recent BLOB)",
     1},
    {"message",
     "CREATE TABLE message(id INTEGER PRIMARY KEY, change INTEGER NOT NULL, flags INTEGER NOT NULL, "
     "size INTEGER NOT NULL, parts INTEGER NOT NULL, delivered INTEGER, submitted INTEGER, "
     "modified INTEGER, class TEXT, subject TEXT, sender TEXT, props BLOB NOT NULL)",
     1},
    {"date_run",
     "CREATE TABLE date_run(id INTEGER PRIMARY KEY, first INTEGER NOT NULL, last INTEGER NOT NULL, "
     "sum INTEGER NOT NULL, dates BLOB NOT NULL)",
     DateRunsVersion},
    {"date_run_first", "CREATE INDEX date_run_first ON date_run(id >> 32, first)", DateRunsVersion},
    {"date_run_last", "CREATE INDEX date_run_last ON date_run(id >> 32, last)", DateRunsVersion},
    {"recipient",
     "CREATE TABLE recipient(message INTEGER NOT NULL REFERENCES message(id) "
     "ON UPDATE CASCADE ON DELETE CASCADE, "
     "number INTEGER NOT NULL, props BLOB NOT NULL, PRIMARY KEY(message, number)) WITHOUT ROWID",
     1},
    {"attachment",
     "CREATE TABLE attachment(message INTEGER NOT NULL REFERENCES message(id) "
     "ON UPDATE CASCADE ON DELETE CASCADE, "
     "number INTEGER NOT NULL, embedded INTEGER, props BLOB NOT NULL, "
     "PRIMARY KEY(message, number)) WITHOUT ROWID",
     1},
    {"large", "CREATE TABLE large(id INTEGER PRIMARY KEY AUTOINCREMENT, size INTEGER NOT NULL)", 1},
    {"chunk", "CREATE TABLE chunk(id INTEGER PRIMARY KEY, bytes BLOB NOT NULL, sum INTEGER)", 1,
     "CREATE TABLE chunk(id INTEGER PRIMARY KEY, bytes BLOB NOT NULL)"},
    {"named",
     "CREATE TABLE named(id INTEGER PRIMARY KEY CHECK(id BETWEEN 32768 AND 65534), guid BLOB NOT NULL, "
     "kind INTEGER NOT NULL, number INTEGER NOT NULL, name TEXT NOT NULL, UNIQUE(guid, kind, number, name))",
     1},
    {"receive",
     "CREATE TABLE receive(class TEXT PRIMARY KEY COLLATE NOCASE, folder INTEGER NOT NULL "
     "REFERENCES folder(id) ON DELETE CASCADE) WITHOUT ROWID",
     1},
    {"address",
     "CREATE TABLE address(id INTEGER PRIMARY KEY AUTOINCREMENT, type INTEGER NOT NULL, change INTEGER NOT "
     "NULL, "
     "key TEXT NOT NULL, props BLOB NOT NULL)",
     3},
    {"address_by_name", "CREATE INDEX address_by_name ON address(key, id)", 3},
    {"member",
     "CREATE TABLE member(list INTEGER NOT NULL REFERENCES address(id) ON DELETE CASCADE, "
     "number INTEGER NOT NULL, address INTEGER REFERENCES address(id) ON DELETE CASCADE, entry BLOB, "
     "PRIMARY KEY(list, number)) WITHOUT ROWID",
     3},
    {"member_by_address", "CREATE INDEX member_by_address ON member(address)", 3},
    {"directory",
     "CREATE TABLE directory(id INTEGER PRIMARY KEY CHECK(id=1), rows INTEGER NOT NULL, "
     "change INTEGER NOT NULL, props BLOB)",
     3},
};

template <size_t N>
std::int64_t ReadPragma(Database& database, const char (&sql)[N])
{
    Query query(database, sql);
    return query.Step() ? query.Number(0) : 0;
}

// Version 1 did not list recent changes; without the list no table can be read.
constexpr std::int64_t FirstVersion = 1;
// Version 2 had no address book.
constexpr std::int64_t VersionWithoutAddresses = 2;

// Makes the tables that versions after `version` brought.
void AddTables(Database& database, std::int64_t version)
{
    for (const TableSql& table : Tables)
    {
        if (table.since > version)
        {
            database.Execute(table.sql);
        }
    }
    if (version <= VersionWithoutAddresses)
    {
        database.Execute("INSERT INTO directory(id, rows, change) VALUES(1, 0, 0)");
    }
}

void WriteVersion(Database& database)
{
    database.Execute(("PRAGMA user_version=" + std::to_string(SchemaVersion)).c_str());
}

// The version of a store that needs an upgrade, 0 for any other file.
std::int64_t OldVersion(Database& database)
{
    if (ReadPragma(database, "PRAGMA application_id") != ApplicationId)
    {
        return 0;
    }
    const std::int64_t version = ReadPragma(database, "PRAGMA user_version");
    return version >= FirstVersion && version < SchemaVersion ? version : 0;
}

std::string_view BytesOf(sqlite3_value* value)
{
    const void* bytes = sqlite3_value_blob(value);
    return {static_cast<const char*>(bytes), static_cast<size_t>(sqlite3_value_bytes(value))};
}

// Two functions for SQL: sealed(blob) and piece_sum(id, bytes).
void Seal(sqlite3_context* context, int, sqlite3_value** values)
{
    try
    {
        const std::string sealed = PropertyBlob::Sealed(BytesOf(values[0]));
        sqlite3_result_blob64(context, sealed.data(), sealed.size(), SQLITE_TRANSIENT);
    }
    catch (const std::bad_alloc&)
    {
        sqlite3_result_error_nomem(context);
    }
}

void SumPiece(sqlite3_context* context, int, sqlite3_value** values)
{
    sqlite3_result_int64(context, PieceChecksum(sqlite3_value_int64(values[0]), BytesOf(values[1])));
}

// What is damaged already cannot be distinguished from what is not, except where an index does not fit its bytes: that is left
// as it is.
void AddChecksums(Database& database)
{
    constexpr int Flags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
    const auto define = [&](const char* name, int arguments, auto* function)
    {
        const int code = sqlite3_create_function_v2(database.Handle(), name, arguments, Flags, nullptr, function,
                                                    nullptr, nullptr, nullptr);
        if (code != SQLITE_OK)
        {
            database.Fail(code);
        }
    };
    define("sealed", 1, Seal);
    define("piece_sum", 2, SumPiece);
    database.Execute("ALTER TABLE chunk ADD COLUMN sum INTEGER");
    database.Execute("UPDATE chunk SET sum=piece_sum(id, bytes)");
    for (const char* table : {"store", "folder", "message", "recipient", "attachment", "address", "directory"})
    {
        database.Execute(("UPDATE " + std::string(table) + " SET props=sealed(props) WHERE props IS NOT NULL").c_str());
    }
}

} // namespace

void CreateSchema(Database& database)
{
    AddTables(database, 0);
    database.Execute(("PRAGMA application_id=" + std::to_string(ApplicationId)).c_str());
    WriteVersion(database);
}

bool NeedsUpgrade(Database& database)
{
    return OldVersion(database) != 0;
}

void UpgradeSchema(Database& database)
{
    Transaction transaction(database);
    const std::int64_t version = OldVersion(database);
    if (version == 0) // another process was quicker
    {
        return;
    }
    if (version == FirstVersion)
    {
        database.Execute("ALTER TABLE contents ADD COLUMN recent BLOB");
    }
    if (version < ChecksumVersion)
    {
        database.Execute("ALTER TABLE folder ADD COLUMN created INTEGER");
        database.Execute("ALTER TABLE folder ADD COLUMN modified INTEGER");
    }
    if (version == DateIndexVersion)
    {
        const std::string bit = std::to_string(DateIndexBit);
        database.Execute("DROP INDEX message_by_date");
        database.Execute(("UPDATE message SET parts=parts-" + bit + " WHERE parts & " + bit).c_str());
    }
    AddTables(database, version);
    DateRuns runs(database);
    runs.Mend(runs.WrongGroups());
    if (version < ChecksumVersion)
    {
        AddChecksums(database);
    }
    WriteVersion(database);
    CheckSchema(database);
    transaction.Commit();
}

std::int64_t CheckSchema(Database& database)
{
    const std::string file = "the store file '" + database.Path() + "' ";
    if (ReadPragma(database, "PRAGMA application_id") != ApplicationId)
    {
        throw Error(MAPI_E_CORRUPT_STORE, file + "is a database, but not a store");
    }
    const std::int64_t version = ReadPragma(database, "PRAGMA user_version");
    if (version > SchemaVersion)
    {
        throw Error(MAPI_E_VERSION, file + "has the schema version " + std::to_string(version) +
                                        "; this program knows versions up to " + std::to_string(SchemaVersion));
    }
    if (version == FirstVersion)
    {
        throw Error(MAPI_E_VERSION, file + "has the old schema version 1; it must be opened for writing once");
    }
    if (version < FirstVersion)
    {
        throw Error(MAPI_E_CORRUPT_STORE, file + "has the impossible schema version " + std::to_string(version));
    }
    Query query(database, "SELECT sql FROM sqlite_schema WHERE name=?");
    for (const TableSql& table : Tables)
    {
        if (table.since > version)
        {
            continue;
        }
        query.BindText(1, table.name);
        const bool isOlder = table.older != nullptr && version < ChecksumVersion;
        if (!query.Step() || query.Bytes(0) != (isOlder ? table.older : table.sql))
        {
            throw Error(MAPI_E_CORRUPT_STORE, file + "is damaged: its table '" + table.name +
                                                  "' does not have the columns that it must have");
        }
        query.Reset();
    }
    return version;
}

} // namespace zebstore
