#include "zebstore/storage/StoreFile.h"

#include "zebstore/base/Guard.h"

#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/storage/StoreParts.h"

#include <filesystem>
#include <fstream>
#include <random>

namespace zebstore
{

namespace
{

namespace fs = std::filesystem;

struct StandardName
{
    StandardFolder folder;
    StandardFolder parent;
    ULONG type;
    const char* name;
};

constexpr StandardName StandardNames[] = {
    {StandardFolder::Root, StandardFolder::Root, FOLDER_ROOT, ""},
    {StandardFolder::IpmSubtree, StandardFolder::Root, FOLDER_GENERIC, "Top of Personal Folders"},
    {StandardFolder::Inbox, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Inbox"},
    {StandardFolder::Outbox, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Outbox"},
    {StandardFolder::DeletedItems, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Deleted Items"},
    {StandardFolder::SentItems, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Sent Items"},
    {StandardFolder::Contacts, StandardFolder::IpmSubtree, FOLDER_GENERIC, "Contacts"},
    {StandardFolder::Finder, StandardFolder::Root, FOLDER_GENERIC, "Search Root"},
    {StandardFolder::Views, StandardFolder::Root, FOLDER_GENERIC, "Personal Views"},
    {StandardFolder::CommonViews, StandardFolder::Root, FOLDER_GENERIC, "Common Views"},
};

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
                    "The store file '" + path + "' is no store: it has only " + std::to_string(size) + " bytes.");
    }
}

// SQLite takes a last page that is cut short for one that ends in zeros. Without a log beside it the file must have
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
        throw Error(MAPI_E_CORRUPT_STORE, "The store file '" + path + "' is cut short.");
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
}

void FillNewStore(StoreFile& store, const std::string& displayName)
{
    Database& database = store.Connection();
    const GUID uid = NewGuid();
    PropertySet properties;
    properties.SetText(PR_DISPLAY_NAME_W, displayName);
    std::vector<LargeReference> none;
    bool large = false;
    const std::string blob = WriteBlob(store, properties, none, large);
    Query(database, "INSERT INTO store(id, uid, props) VALUES(1, ?, ?)")
        .BindBlob(1, {reinterpret_cast<const char*>(&uid), sizeof(uid)})
        .BindBlob(2, blob)
        .Run();
    InsertContents(database, 0, 0);
    for (const StandardName& each : StandardNames)
    {
        PropertySet folder;
        folder.SetText(PR_DISPLAY_NAME_W, each.name);
        const FolderId parent = each.folder == StandardFolder::Root ? 0 : IdOf(each.parent);
        InsertFolder(store, IdOf(each.folder), parent, folder, each.type);
    }
    store.SetReceiveFolder("", IdOf(StandardFolder::Inbox));
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
              "' is opened as one that nobody writes: neither it nor its folder can be written");
    return database;
}

} // namespace

StoreFile::StoreFile() = default;
StoreFile::~StoreFile() = default;

void StoreFile::RequireWritable() const
{
    if (m_readOnly)
    {
        throw Error(MAPI_E_NO_ACCESS, "The store file '" + m_path + "' can only be read.");
    }
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
        throw Error(MAPI_E_COLLISION, "The store file '" + path + "' exists already.");
    }
    const std::shared_ptr<StoreFile> store(new StoreFile);
    store->m_path = path;
    try
    {
        store->m_database = std::make_unique<Database>(path, Database::Mode::Create);
        Database& database = *store->m_database;
        database.Execute("PRAGMA journal_mode=WAL");
        Configure(database, options);
        Transaction transaction(database);
        CreateSchema(database);
        store->m_version = SchemaVersion;
        FillNewStore(*store, displayName);
        transaction.Commit();
    }
    catch (...)
    {
        const bool made = store->m_database != nullptr;
        store->m_database.reset();
        if (made)
        {
            RemoveFiles(path);
        }
        throw;
    }
    store->ReadUid();
    return store;
}

std::shared_ptr<StoreFile> StoreFile::Open(const std::string& path, const OpenOptions& options)
{
    if (!Exists(path))
    {
        throw Error(MAPI_E_NOT_FOUND, "The store file '" + path + "' does not exist.");
    }
    if (!fs::is_regular_file(fs::u8path(path)))
    {
        throw Error(MAPI_E_CORRUPT_STORE, "The store file '" + path + "' is not a file.");
    }
    if (!options.readOnly && MayNotBeWritten(path))
    {
        throw Error(MAPI_E_NO_ACCESS, "The store file '" + path + "' is read-only.");
    }
    RequireHeader(path);
    const std::shared_ptr<StoreFile> store(new StoreFile);
    store->m_path = path;
    store->m_readOnly = options.readOnly;
    store->m_database =
        options.readOnly ? OpenToRead(path) : std::make_unique<Database>(path, Database::Mode::ReadWrite);
    if (!options.readOnly && NeedsUpgrade(*store->m_database))
    {
        RequireWholePages(path);
        TraceNote("the store file '" + path +
                  "' is of an older version: it is upgraded, which reads and writes all of it");
        UpgradeSchema(*store->m_database);
    }
    store->m_version = CheckSchema(*store->m_database);
    RequireWholePages(path);
    Configure(*store->m_database, options);
    store->ReadUid();
    return store;
}

void StoreFile::ReadUid()
{
    Query query(*m_database, "SELECT uid FROM store WHERE id=1");
    if (!query.Step() || query.Bytes(0).size() != sizeof(GUID))
    {
        throw Error(MAPI_E_CORRUPT_STORE, "The store file '" + m_path + "' is damaged: it has no identity.");
    }
    m_uid = ReadNumber<GUID>(query.Bytes(0));
}

PropertySet StoreFile::Properties()
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT props FROM store WHERE id=1");
    query.Step();
    return PropertyBlob(query.Bytes(0), *this, {"the store"}).Decode();
}

void StoreFile::SaveProperties(const PropertySet& properties)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    std::vector<LargeReference> kept;
    {
        Query query(*m_database, "SELECT props FROM store WHERE id=1");
        query.Step();
        kept = ReferencesIn(query.Bytes(0));
    }
    bool large = false;
    const std::string blob = WriteBlob(*this, properties, kept, large);
    Query(*m_database, "UPDATE store SET props=? WHERE id=1").BindBlob(1, blob).Run();
    DeleteReferences(*m_database, kept);
    transaction.Commit();
}

StoreFile::ReceiveFolder StoreFile::ReceiveFolderOf(const std::string& messageClass)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT class, folder FROM receive WHERE class=?");
    for (std::string name = messageClass;;)
    {
        query.BindText(1, name);
        if (query.Step())
        {
            return {std::string(query.Bytes(0)), query.Number(1)};
        }
        query.Reset();
        if (name.empty())
        {
            throw Error(MAPI_E_NOT_FOUND, "The store file '" + m_path + "' has no receive folder.");
        }
        const size_t dot = name.rfind('.');
        name.resize(dot == std::string::npos ? 0 : dot);
    }
}

void StoreFile::SetReceiveFolder(const std::string& messageClass, FolderId folder)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Require(IsAscii(messageClass), "A message class is ASCII.");
    Require(folder != 0 || !messageClass.empty(), "The default receive folder can not be removed.");
    Transaction transaction(*m_database);
    Query(*m_database, "DELETE FROM receive WHERE class=?").BindText(1, messageClass).Run();
    if (folder != 0)
    {
        RequireFolder(*this, folder);
        Query(*m_database, "INSERT INTO receive(class, folder) VALUES(?, ?)")
            .BindText(1, messageClass)
            .Bind(2, folder)
            .Run();
    }
    transaction.Commit();
}

std::vector<StoreFile::ReceiveFolder> StoreFile::ReceiveFolders()
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    std::vector<ReceiveFolder> folders;
    Query query(*m_database, "SELECT class, folder FROM receive ORDER BY class");
    while (query.Step())
    {
        folders.push_back({std::string(query.Bytes(0)), query.Number(1)});
    }
    return folders;
}

std::shared_ptr<StagedValue> StoreFile::Stage()
{
    return MakeStagedValue(shared_from_this());
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

std::uint64_t StoreFile::Generation(FolderId folder, bool associated)
{
    return PlaceOf(folder, associated).generation;
}

ULONG StoreFile::Rows(FolderId folder, bool associated)
{
    return PlaceOf(folder, associated).rows;
}

// Asked at each call of a table: the file is read only when something was committed since.
StoreFile::Place StoreFile::PlaceOf(FolderId folder, bool associated)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const std::int64_t container = ContainerOf(folder, associated);
    const std::uint64_t commits = m_database->Commits();
    if (commits == 0)
    {
        return ReadPlace(container);
    }
    if (commits != m_placesOf)
    {
        m_places.clear();
        m_placesOf = commits;
    }
    const auto known = m_places.find(container);
    if (known != m_places.end())
    {
        return known->second;
    }
    return m_places[container] = ReadPlace(container);
}

StoreFile::Place StoreFile::ReadPlace(std::int64_t container)
{
    Query query(*m_database, "SELECT change, rows FROM contents WHERE container=?");
    query.Bind(1, container);
    if (!query.Step())
    {
        return {};
    }
    return {static_cast<std::uint64_t>(query.Number(0)) + 1, static_cast<ULONG>(query.Number(1))};
}

void StoreFile::RequireAllRows(FolderId folder, bool associated)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const ReadScope moment(*m_database);
    const std::int64_t container = ContainerOf(folder, associated);
    const ULONG counted = ReadPlace(container).rows;
    Query query(*m_database, "SELECT count(*) FROM message WHERE id BETWEEN ? AND ?");
    query.Bind(1, FirstOf(container)).Bind(2, LastOf(container)).Step();
    if (query.Number(0) != counted)
    {
        throw Error(MAPI_E_CORRUPT_STORE, "The store file '" + m_path + "' is damaged: of the " +
                                              std::to_string(counted) + " messages of folder " +
                                              std::to_string(folder) + " " + std::to_string(query.Number(0)) +
                                              " can be read.");
    }
}

// Between two changes of the tree the sum of all change numbers only rises; a deleted folder changes the tree.
std::uint64_t StoreFile::ChangeStamp()
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const ReadScope moment(*m_database);
    Query query(*m_database, "SELECT sum(change) FROM contents");
    query.Step();
    return (Generation(0, false) << 32) + (static_cast<std::uint64_t>(query.Number(0)) & 0xFFFFFFFF);
}

} // namespace zebstore
