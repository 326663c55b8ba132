#include "zebstore/storage/Schema.h"

namespace zebstore
{

namespace
{

struct TableSql
{
    const char* name;
    const char* sql;
};

// folder.key is the sort key of the folder's name; siblings never share one.
//
// contents has a row for each place of messages: container = 2 * folder + 1 for associated ones. `next` is
// the number that the next message gets, so numbers are never given twice; `change` rises with every
// transaction that touches a row of the place. Container 0 holds the messages inside attachments, and its
// `change` stands for the folder tree. `recent` lists the rows that the last changes were about (see
// StoreContents.cpp), so that an open table learns what happened without a search.
//
// A message's id is its container, shifted left by 32 bits, plus its number: the messages of a folder lie
// side by side, in the order in which they came, and a save appends to one page. The columns before `props`
// are copies of properties by which tables sort and restrict; the three texts are sort keys. message.props,
// attachment.props ... are property blobs (see PropertyBlob.h).
//
// A large value is cut into pieces; chunk.id is the value's id, shifted left by 24 bits, plus the piece's
// number.
constexpr TableSql Tables[] = {
    {"store",
     "CREATE TABLE store(id INTEGER PRIMARY KEY CHECK(id=1), uid BLOB NOT NULL, props BLOB NOT NULL)"},
    {"folder",
     "CREATE TABLE folder(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER REFERENCES folder(id), "
     "type INTEGER NOT NULL, key TEXT NOT NULL, props BLOB NOT NULL, UNIQUE(parent, key))"},
    {"contents", "CREATE TABLE contents(container INTEGER PRIMARY KEY, folder INTEGER REFERENCES folder(id) "
                 "ON DELETE CASCADE, rows INTEGER NOT NULL, unread INTEGER NOT NULL, next INTEGER NOT NULL, "
                 "change INTEGER NOT NULL, recent BLOB)"},
    {"message",
     "CREATE TABLE message(id INTEGER PRIMARY KEY, change INTEGER NOT NULL, flags INTEGER NOT NULL, "
     "size INTEGER NOT NULL, parts INTEGER NOT NULL, delivered INTEGER, submitted INTEGER, "
     "modified INTEGER, class TEXT, subject TEXT, sender TEXT, props BLOB NOT NULL)"},
    {"recipient",
     "CREATE TABLE recipient(message INTEGER NOT NULL REFERENCES message(id) "
     "ON UPDATE CASCADE ON DELETE CASCADE, "
     "number INTEGER NOT NULL, props BLOB NOT NULL, PRIMARY KEY(message, number)) WITHOUT ROWID"},
    {"attachment", "CREATE TABLE attachment(message INTEGER NOT NULL REFERENCES message(id) "
                   "ON UPDATE CASCADE ON DELETE CASCADE, "
                   "number INTEGER NOT NULL, embedded INTEGER, props BLOB NOT NULL, "
                   "PRIMARY KEY(message, number)) WITHOUT ROWID"},
    {"large", "CREATE TABLE large(id INTEGER PRIMARY KEY AUTOINCREMENT, size INTEGER NOT NULL)"},
    {"chunk", "CREATE TABLE chunk(id INTEGER PRIMARY KEY, bytes BLOB NOT NULL)"},
    {"named",
     "CREATE TABLE named(id INTEGER PRIMARY KEY CHECK(id BETWEEN 32768 AND 65534), guid BLOB NOT NULL, "
     "kind INTEGER NOT NULL, number INTEGER NOT NULL, name TEXT NOT NULL, UNIQUE(guid, kind, number, name))"},
    {"receive", "CREATE TABLE receive(class TEXT PRIMARY KEY COLLATE NOCASE, folder INTEGER NOT NULL "
                "REFERENCES folder(id) ON DELETE CASCADE) WITHOUT ROWID"},
};

std::int64_t ReadPragma(Database& database, const char* sql)
{
    Query query(database, sql);
    return query.Step() ? query.Number(0) : 0;
}

constexpr std::int32_t OldSchemaVersion = 1;

void WriteVersion(Database& database)
{
    database.Execute(("PRAGMA user_version=" + std::to_string(SchemaVersion)).c_str());
}

} // namespace

void CreateSchema(Database& database)
{
    for (const TableSql& table : Tables)
        database.Execute(table.sql);
    database.Execute(("PRAGMA application_id=" + std::to_string(ApplicationId)).c_str());
    WriteVersion(database);
}

void UpgradeSchema(Database& database)
{
    const auto isOld = [&]
    {
        return ReadPragma(database, "PRAGMA application_id") == ApplicationId &&
               ReadPragma(database, "PRAGMA user_version") == OldSchemaVersion;
    };
    if (!isOld())
        return;
    Transaction transaction(database);
    if (!isOld()) // another process was quicker
        return;
    database.Execute("ALTER TABLE contents ADD COLUMN recent BLOB");
    WriteVersion(database);
    CheckSchema(database);
    transaction.Commit();
}

void CheckSchema(Database& database)
{
    const std::string file = "The store file '" + database.Path() + "' ";
    if (ReadPragma(database, "PRAGMA application_id") != ApplicationId)
        throw Error(MAPI_E_CORRUPT_STORE, file + "is a database, but not a store.");
    const std::int64_t version = ReadPragma(database, "PRAGMA user_version");
    if (version > SchemaVersion)
        throw Error(MAPI_E_VERSION, file + "has the schema version " + std::to_string(version) +
                                        "; this program knows versions up to " +
                                        std::to_string(SchemaVersion) + ".");
    if (version == OldSchemaVersion)
        throw Error(MAPI_E_VERSION,
                    file + "has the old schema version 1; it must be opened for writing once.");
    if (version != SchemaVersion)
        throw Error(MAPI_E_CORRUPT_STORE,
                    file + "has the impossible schema version " + std::to_string(version) + ".");
    Query query(database, "SELECT sql FROM sqlite_schema WHERE type='table' AND name=?");
    for (const TableSql& table : Tables)
    {
        query.BindText(1, table.name);
        if (!query.Step() || query.Bytes(0) != table.sql)
            throw Error(MAPI_E_CORRUPT_STORE,
                        file + "is damaged: its table '" + table.name + "' is not as it must be.");
        query.Reset();
    }
}

} // namespace zebstore
