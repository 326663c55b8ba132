// The folder tree of StoreFile.
#include "zebstore/storage/StoreFile.h"

#include "platform/datetime.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/Schema.h"
#include "zebstore/storage/StoreParts.h"
#include "zebstore/storage/Text.h"

#include <algorithm>

namespace zebstore
{

namespace
{

constexpr int MostLevels = 500;
constexpr size_t LongestName = 32767; // in characters of 16 bits
constexpr FolderId MostFolders = FolderId(1) << 30;

#define ZEB_FOLDER_COLUMNS                                                                                             \
    "SELECT f.id, f.parent, f.type, n.rows, n.unread, a.rows, "                                                        \
    "(SELECT count(*) FROM folder c WHERE c.parent=f.id) FROM folder f "                                               \
    "JOIN contents n ON n.container=f.id*2 JOIN contents a ON a.container=f.id*2+1 "

FolderInfo ReadInfo(const Query& query)
{
    FolderInfo info;
    info.id = query.Number(0);
    info.parent = query.Number(1);
    info.type = static_cast<ULONG>(query.Number(2));
    info.messages = static_cast<ULONG>(query.Number(3));
    info.unread = static_cast<ULONG>(query.Number(4));
    info.associated = static_cast<ULONG>(query.Number(5));
    info.subfolders = static_cast<ULONG>(query.Number(6));
    return info;
}

bool IsStandard(FolderId folder)
{
    return folder <= IdOf(StandardFolder::CommonViews);
}

void RefuseStandard(const StoreFile& store, FolderId folder, const char* what)
{
    if (IsStandard(folder))
    {
        throw Error(MAPI_E_NO_ACCESS,
                    std::string("A standard folder of the store file '") + store.Path() + "' can not be " + what + ".");
    }
}

std::int64_t Now()
{
    const FILETIME time = zeb::platform::CurrentFileTime();
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

std::string KeyOf(std::string_view name)
{
    return Folded(name, TextFold::IgnoreCase);
}

void RequireNameIsFree(StoreFile& store, FolderId parent, std::string_view name, FolderId self)
{
    Require(!name.empty(), "A folder needs a name.");
    if (name.size() > LongestName && WideFromStored(name).size() > LongestName)
    {
        throw Error(MAPI_E_STRING_TOO_LONG,
                    "A folder's name has at most " + std::to_string(LongestName) + " characters.");
    }
    const FolderId found = store.FindFolder(parent, name);
    if (found != 0 && found != self)
    {
        throw Error(MAPI_E_COLLISION, "The folder '" + std::string(name) + "' exists already.");
    }
}

FolderId ParentOf(StoreFile& store, FolderId folder)
{
    Query query(store.Connection(), "SELECT parent FROM folder WHERE id=?");
    query.Bind(1, folder);
    if (!query.Step())
    {
        throw Error(MAPI_E_NOT_FOUND, "The folder is not in the store file '" + store.Path() + "' any more.");
    }
    return query.Number(0);
}

void RequireRoomBelow(StoreFile& store, FolderId parent)
{
    int levels = 1;
    for (FolderId at = parent; at != 0; at = ParentOf(store, at))
    {
        if (++levels > MostLevels)
        {
            throw Error(MAPI_E_TOO_COMPLEX, "Folders can be nested " + std::to_string(MostLevels) + " deep.");
        }
    }
}

void DeleteEmptyFolder(StoreFile& store, FolderId folder)
{
    std::vector<LargeReference> references;
    {
        Query query(store.Connection(), "SELECT props FROM folder WHERE id=?");
        query.Bind(1, folder);
        if (query.Step())
        {
            references = ReferencesIn(query.Bytes(0));
        }
    }
    DeleteReferences(store.Connection(), references);
    Query(store.Connection(), "DELETE FROM folder WHERE id=?").Bind(1, folder).Run();
}

void ClearBoth(StoreFile& store, FolderId folder)
{
    ClearContents(store, ContainerOf(folder, false));
    ClearContents(store, ContainerOf(folder, true));
}

} // namespace

void RequireFolder(StoreFile& store, FolderId folder)
{
    if (!store.FolderExists(folder))
    {
        throw Error(MAPI_E_NOT_FOUND, "The folder is not in the store file '" + store.Path() + "' any more.");
    }
}

FolderId InsertFolder(StoreFile& store, FolderId id, FolderId parent, const PropertySet& properties, ULONG type)
{
    Database& database = store.Connection();
    std::vector<LargeReference> none;
    bool large = false;
    const std::string blob = WriteBlob(store, properties, none, large);
    const std::string key = KeyOf(properties.Text(PR_DISPLAY_NAME_W));
    {
        Query query(database, "INSERT INTO folder(id, parent, type, key, props, created, modified) "
                              "VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?6) RETURNING id");
        if (id == 0)
        {
            query.BindNull(1);
        }
        else
        {
            query.Bind(1, id);
        }
        if (parent == 0)
        {
            query.BindNull(2);
        }
        else
        {
            query.Bind(2, parent);
        }
        query.Bind(3, type).BindText(4, key).BindBlob(5, blob).Bind(6, Now()).Step();
        id = query.Number(0);
    }
    if (id >= MostFolders)
    {
        throw Error(MAPI_E_TOO_BIG, "The store file '" + store.Path() + "' has no number left for a folder.");
    }
    InsertContents(database, ContainerOf(id, false), id);
    InsertContents(database, ContainerOf(id, true), id);
    return id;
}

FolderInfo StoreFile::Folder(FolderId folder)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, ZEB_FOLDER_COLUMNS "WHERE f.id=?");
    query.Bind(1, folder);
    if (!query.Step())
    {
        throw Error(MAPI_E_NOT_FOUND, "The folder is not in the store file '" + m_path + "' any more.");
    }
    return ReadInfo(query);
}

bool StoreFile::FolderExists(FolderId folder)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT 1 FROM folder WHERE id=?");
    return query.Bind(1, folder).Step();
}

PropertySet StoreFile::FolderProperties(FolderId folder)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Query query(*m_database, "SELECT props FROM folder WHERE id=?");
    query.Bind(1, folder);
    if (!query.Step())
    {
        throw Error(MAPI_E_NOT_FOUND, "The folder is not in the store file '" + m_path + "' any more.");
    }
    return PropertyBlob(query.Bytes(0), *this, {"folder", folder}).Decode();
}

FolderTimes StoreFile::TimesOfFolder(FolderId folder)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    if (m_version < FolderTimesVersion)
    {
        return {};
    }
    Query query(*m_database, "SELECT created, modified FROM folder WHERE id=?");
    query.Bind(1, folder);
    return query.Step() ? FolderTimes{query.Number(0), query.Number(1)} : FolderTimes{};
}

std::vector<FolderInfo> StoreFile::FoldersUnder(FolderId folder, bool wholeTree)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const ReadScope moment(*m_database);
    RequireFolder(*this, folder);
    std::vector<FolderInfo> found;
    std::vector<FolderInfo> waiting{FolderInfo{}};
    waiting[0].id = folder;
    while (!waiting.empty())
    {
        const FolderInfo above = waiting.back();
        waiting.pop_back();
        if (above.depth > 0)
        {
            found.push_back(above);
        }
        if (above.depth > 0 && (!wholeTree || above.subfolders == 0))
        {
            continue;
        }
        const size_t before = waiting.size();
        Query query(*m_database, ZEB_FOLDER_COLUMNS "WHERE f.parent=? ORDER BY f.key");
        query.Bind(1, above.id);
        while (query.Step())
        {
            waiting.push_back(ReadInfo(query));
            waiting.back().depth = above.depth + 1;
        }
        // The first sibling is taken next.
        std::reverse(waiting.begin() + static_cast<std::ptrdiff_t>(before), waiting.end());
    }
    return found;
}

FolderId StoreFile::FindFolder(FolderId parent, std::string_view utf8Name)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const std::string key = KeyOf(utf8Name);
    Query query(*m_database, "SELECT id FROM folder WHERE parent=? AND key=?");
    query.Bind(1, parent).BindText(2, key);
    return query.Step() ? query.Number(0) : 0;
}

FolderId StoreFile::CreateFolder(FolderId parent, const PropertySet& properties, ULONG type)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    RequireFolder(*this, parent);
    RequireRoomBelow(*this, parent);
    RequireNameIsFree(*this, parent, properties.Text(PR_DISPLAY_NAME_W), 0);
    const FolderId folder = InsertFolder(*this, 0, parent, properties, type);
    TouchTree(*m_database);
    transaction.Commit();
    return folder;
}

void StoreFile::SaveFolderProperties(FolderId folder, const PropertySet& properties)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    const FolderId parent = ParentOf(*this, folder);
    const std::string name = properties.Text(PR_DISPLAY_NAME_W);
    if (parent != 0)
    {
        RequireNameIsFree(*this, parent, name, folder);
    }
    std::vector<LargeReference> kept;
    {
        Query query(*m_database, "SELECT props FROM folder WHERE id=?");
        query.Bind(1, folder).Step();
        kept = ReferencesIn(query.Bytes(0));
    }
    bool large = false;
    const std::string blob = WriteBlob(*this, properties, kept, large);
    const std::string key = KeyOf(name);
    Query(*m_database, "UPDATE folder SET key=?, props=?, modified=max(?, coalesce(modified, 0)+1) WHERE id=?")
        .BindText(1, key)
        .BindBlob(2, blob)
        .Bind(3, Now())
        .Bind(4, folder)
        .Run();
    DeleteReferences(*m_database, kept);
    TouchTree(*m_database);
    transaction.Commit();
}

void StoreFile::DeleteFolder(FolderId folder, bool withMessages, bool withFolders)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    RefuseStandard(*this, folder, "deleted");
    Transaction transaction(*m_database);
    const FolderInfo info = Folder(folder);
    if (info.subfolders > 0 && !withFolders)
    {
        throw Error(MAPI_E_HAS_FOLDERS, "The folder has subfolders.");
    }
    if (info.messages + info.associated > 0 && !withMessages)
    {
        throw Error(MAPI_E_HAS_MESSAGES, "The folder has messages.");
    }
    std::vector<FolderInfo> below = FoldersUnder(folder, true);
    below.insert(below.begin(), info);
    // Depth first order, so from the end every folder is empty when its turn comes.
    for (auto each = below.rbegin(); each != below.rend(); ++each)
    {
        ClearBoth(*this, each->id);
        DeleteEmptyFolder(*this, each->id);
    }
    TouchTree(*m_database);
    transaction.Commit();
}

void StoreFile::EmptyFolder(FolderId folder, bool withAssociated)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    Transaction transaction(*m_database);
    const std::vector<FolderInfo> below = FoldersUnder(folder, true);
    for (auto each = below.rbegin(); each != below.rend(); ++each)
    {
        ClearBoth(*this, each->id);
        if (!IsStandard(each->id) && Folder(each->id).subfolders == 0)
        {
            DeleteEmptyFolder(*this, each->id);
        }
    }
    ClearContents(*this, ContainerOf(folder, false));
    if (withAssociated)
    {
        ClearContents(*this, ContainerOf(folder, true));
    }
    TouchTree(*m_database);
    transaction.Commit();
}

void StoreFile::MoveFolder(FolderId folder, FolderId newParent, std::string_view newUtf8Name)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    RefuseStandard(*this, folder, "moved");
    Transaction transaction(*m_database);
    RequireFolder(*this, newParent);
    if (IsWithin(newParent, folder))
    {
        throw Error(MAPI_E_FOLDER_CYCLE, "A folder can not be moved below itself.");
    }
    RequireRoomBelow(*this, newParent);
    PropertySet properties = FolderProperties(folder);
    if (!newUtf8Name.empty())
    {
        properties.SetText(PR_DISPLAY_NAME_W, newUtf8Name);
    }
    RequireNameIsFree(*this, newParent, properties.Text(PR_DISPLAY_NAME_W), folder);
    {
        // The key of the old name may be taken there; the key of the new one is not.
        const std::string key = KeyOf(properties.Text(PR_DISPLAY_NAME_W));
        Query query(*m_database, "UPDATE folder SET parent=?, key=? WHERE id=?");
        query.Bind(1, newParent).BindText(2, key).Bind(3, folder).Run();
    }
    SaveFolderProperties(folder, properties);
    transaction.Commit();
}

bool StoreFile::IsWithin(FolderId folder, FolderId ancestor)
{
    const std::lock_guard<std::recursive_mutex> hold(m_lock);
    const ReadScope moment(*m_database);
    for (FolderId at = folder; at != 0; at = ParentOf(*this, at))
    {
        if (at == ancestor)
        {
            return true;
        }
    }
    return false;
}

} // namespace zebstore
