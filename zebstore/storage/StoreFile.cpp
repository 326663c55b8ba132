#include "zebstore/storage/StoreFile.h"

#include "zebstore/base/Guard.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/storage/StandardFolders.h"
#include "zebstore/storage/StoreCheck.h"

#include <filesystem>
#include <fstream>
#include <random>

namespace zebstore
{

namespace
{

namespace fs = std::filesystem;

GUID NewGuid()
{
    std::random_device random;
    GUID guid{};
    unsigned char bytes[sizeof(GUID)];
    for (unsigned char& byte : bytes)
    {
        byte = static_cast<unsigned char>(random());
    }
    // The marks of a random identifier.
    bytes[7] = static_cast<unsigned char>((bytes[7] & 0x0F) | 0x40);
    bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
    std::memcpy(static_cast<void*>(&guid), bytes, sizeof(guid));
    return guid;
}

// A file without a single write permission counts as read-only for everybody, root included.
bool MayNotBeWritten(const std::string& path)
{
    std::error_code failure;
    const fs::perms permissions = fs::status(fs::u8path(path), failure).permissions();
    const fs::perms write = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    return !failure && (permissions & write) == fs::perms::none;
}

constexpr size_t HeaderSize = 100; // of a database

// SQLite takes a file without a whole header for a database without tables.
void RequireHeader(const std::string& path)
{
    std::error_code failure;
    const std::uintmax_t size = fs::file_size(fs::u8path(path), failure);
    if (!failure && size < HeaderSize)
    {
        throw Error(MAPI_E_CORRUPT_STORE,
                    "the store file '" + path + "' is not a store: it has only " + std::to_string(size) + " bytes");
    }
}

// SQLite takes a last page that is cut short for one that ends in zeros. Without a log next to it the file must have
// all the pages that its header counts; with one, SQLite itself finds what is missing.
void RequireWholePages(const std::string& path)
{
    std::error_code failure;
    const std::uintmax_t log = fs::file_size(fs::u8path(path + "-wal"), failure);
    if (!failure && log > 0)
    {
        return;
    }
    unsigned char header[HeaderSize] = {};
    std::ifstream file(fs::u8path(path), std::ios::binary);
    if (!file.read(reinterpret_cast<char*>(header), sizeof(header)))
    {
        return; // too short for a database: SQLite says so
    }
    const auto bigEndian = [&](size_t at, size_t size)
    {
        std::uint64_t number = 0;
        for (size_t i = 0; i < size; ++i)
        {
            number = (number << 8) | header[at + i];
        }
        return number;
    };
    const std::uint64_t pageSize = bigEndian(16, 2) == 1 ? 65536 : bigEndian(16, 2);
    const std::uintmax_t size = fs::file_size(fs::u8path(path), failure);
    if (!failure && size < pageSize * bigEndian(28, 4))
    {
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + path + "' is truncated");
    }
}

void Configure(Database& database, const StoreFile::OpenOptions& options)
{
    database.Execute("PRAGMA foreign_keys=ON");
    database.Execute("PRAGMA cell_size_check=ON"); // a damaged page is seen when it is read
    database.Execute(options.fullDurability ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
    database.Execute("PRAGMA cache_size=-16384");
    // A save writes two pages to the log; at 16 MB they are carried over, many saves to a page together.
    database.Execute("PRAGMA wal_autocheckpoint=4000");
    PrepareStaging(database);
    database.SetCommitObserver(options.observer);
}

void RemoveFiles(const std::string& path)
{
    std::error_code ignored;
    for (const char* suffix : {"", "-wal", "-shm", "-journal"})
    {
        fs::remove(fs::u8path(path + suffix), ignored);
    }
}

bool HasLog(const std::string& path)
{
    std::error_code error;
    const std::uintmax_t size = fs::file_size(fs::u8path(path + "-wal"), error);
    return !error && size > 0;
}

/// A database in WAL mode needs files next to it even to be read. Where none can be made and
/// there is no log to be read, the file is read alone.
std::unique_ptr<Database> OpenToRead(const std::string& path)
{
    auto database = std::make_unique<Database>(path, Database::Mode::ReadOnly);
    try
    {
        database->Execute("SELECT 1 FROM sqlite_master");
        return database;
    }
    catch (const Error& error)
    {
        if (HasLog(path) || (error.Code() != MAPI_E_NO_ACCESS && error.Code() != MAPI_E_DISK_ERROR))
        {
            throw;
        }
    }
    database = std::make_unique<Database>(path, Database::Mode::Immutable);
    TraceNote("the store file '" + path +
              "' is opened as a file that never changes: neither it nor its folder can be written");
    return database;
}

} // namespace

StoreFile::StoreFile(std::unique_ptr<Database> database, bool readOnly, std::int64_t version)
    : m_connection(std::make_shared<StoreConnection>(std::move(database), readOnly, version))
    , m_contents(*m_connection)
    , m_recipients(*m_connection)
    , m_attachments(*m_connection)
    , m_texts(*m_connection)
    , m_messages(*m_connection, m_contents, m_recipients, m_attachments, m_texts)
    , m_folders(*m_connection, m_contents, m_messages)
    , m_namedProperties(*m_connection)
    , m_receiveFolders(*m_connection, m_folders)
{
}

bool StoreFile::Exists(const std::string& path)
{
    std::error_code failure;
    return fs::exists(fs::u8path(path), failure);
}

std::shared_ptr<StoreFile> StoreFile::Create(const std::string& path, const std::string& displayName,
                                             const OpenOptions& options)
{
    if (Exists(path))
    {
        throw Error(MAPI_E_COLLISION, "the store file '" + path + "' exists already");
    }
    std::unique_ptr<Database> database;
    std::shared_ptr<StoreFile> store;
    try
    {
        database = std::make_unique<Database>(path, Database::Mode::Create); // a failure may leave an empty file
        database->Execute("PRAGMA journal_mode=WAL");
        Configure(*database, options);
        store.reset(new StoreFile(std::move(database), false, SchemaVersion));
        store->Fill(displayName);
        store->ReadUid();
    }
    catch (...)
    {
        store.reset();
        database.reset();
        RemoveFiles(path);
        throw;
    }
    return store;
}

void StoreFile::Fill(const std::string& displayName)
{
    StoreTransaction transaction(*m_connection);
    Database& database = m_connection->Db();
    CreateSchema(database);
    const GUID uid = NewGuid();
    PropertySet properties;
    properties.SetText(PR_DISPLAY_NAME_W, displayName);
    const std::string blob = WriteBlob(*m_connection, properties);
    Query(database, "INSERT INTO store(id, uid, props) VALUES(1, ?, ?)")
        .BindBlob(1, {reinterpret_cast<const char*>(&uid), sizeof(uid)})
        .BindBlob(2, blob)
        .Run();
    m_contents.Insert(ContentsKey::Embedded());
    for (const StandardName& each : StandardNames)
    {
        PropertySet folder;
        folder.SetText(PR_DISPLAY_NAME_W, each.name);
        m_folders.Insert(IdOf(each.folder), each.Parent(), folder, each.type);
    }
    m_receiveFolders.Set("", IdOf(StandardFolder::Inbox));
    transaction.Commit();
}

std::shared_ptr<StoreFile> StoreFile::Open(const std::string& path, const OpenOptions& options)
{
    if (!Exists(path))
    {
        throw Error(MAPI_E_NOT_FOUND, "the store file '" + path + "' does not exist");
    }
    if (!fs::is_regular_file(fs::u8path(path)))
    {
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + path + "' is not a file");
    }
    if (!options.readOnly && MayNotBeWritten(path))
    {
        throw Error(MAPI_E_NO_ACCESS, "the store file '" + path + "' is read-only");
    }
    RequireHeader(path);
    std::unique_ptr<Database> database =
        options.readOnly ? OpenToRead(path) : std::make_unique<Database>(path, Database::Mode::ReadWrite);
    if (!options.readOnly && NeedsUpgrade(*database))
    {
        RequireWholePages(path);
        TraceNote("the store file '" + path +
                  "' is of an older version: it is upgraded, which reads and writes all of it");
        UpgradeSchema(*database);
    }
    const std::int64_t version = CheckSchema(*database);
    RequireWholePages(path);
    Configure(*database, options);
    const std::shared_ptr<StoreFile> store(new StoreFile(std::move(database), options.readOnly, version));
    store->ReadUid();
    return store;
}

void StoreFile::ReadUid()
{
    Query query(m_connection->Db(), "SELECT uid FROM store WHERE id=1");
    if (!query.Step() || query.Bytes(0).size() != sizeof(GUID))
    {
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + Path() + "' is damaged: it has no identifier");
    }
    m_uid = ReadNumber<GUID>(query.Bytes(0));
}

std::vector<std::string> StoreFile::CheckWhole()
{
    HRESULT ignored = S_OK;
    return CheckWhole(ignored);
}

std::vector<std::string> StoreFile::CheckWhole(HRESULT& failure)
{
    return CheckStore(*m_connection, m_texts, failure);
}

PropertySet StoreFile::Properties()
{
    const std::lock_guard hold(Lock());
    Query query(m_connection->Db(), "SELECT props FROM store WHERE id=1");
    query.Step();
    return PropertyBlob(query.Bytes(0), *m_connection, {"the store"}).Decode();
}

void StoreFile::SaveProperties(const PropertySet& properties)
{
    StoreTransaction transaction(*m_connection);
    std::vector<LargeReference> kept;
    {
        Query query(m_connection->Db(), "SELECT props FROM store WHERE id=1");
        query.Step();
        kept = ReferencesIn(query.Bytes(0));
    }
    const std::string blob = WriteBlob(*m_connection, properties, kept);
    Query(m_connection->Db(), "UPDATE store SET props=? WHERE id=1").BindBlob(1, blob).Run();
    DeleteReferences(m_connection->Db(), kept);
    transaction.Commit();
}

std::shared_ptr<StagedValue> StoreFile::Stage()
{
    return MakeStagedValue(m_connection);
}

std::shared_ptr<StagedValue> StoreFile::Stage(const LargeValue& value)
{
    std::shared_ptr<StagedValue> staged = Stage();
    std::string piece(65536, '\0');
    std::uint64_t offset = 0;
    size_t count = value.Read(offset, &piece[0], piece.size());
    while (count != 0)
    {
        staged->Write(offset, piece.data(), count);
        offset += count;
        count = value.Read(offset, &piece[0], piece.size());
    }
    return staged;
}

} // namespace zebstore
