#include "zebstore/storage/FolderTable.h"

#include "platform/datetime.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/Text.h"

#include <algorithm>
#include <unordered_set>

namespace zebstore
{

namespace
{

constexpr int MostLevels = 500;
constexpr size_t LongestName = 32767; // in characters of 16 bits

#define ZEB_FOLDER_COLUMNS                                                                                             \
    "SELECT f.id, f.parent, f.type, n.rows, n.unread, a.rows, "                                                        \
    "(SELECT count(*) FROM folder c WHERE c.parent=f.id) FROM folder f "                                               \
    "JOIN contents n ON n.container=" ZEB_NORMAL_CONTENTS(                                                             \
        "f.id") " "                                                                                                    \
                "JOIN contents a ON a.container=" ZEB_ASSOCIATED_CONTENTS("f.id") " "

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

std::int64_t Now()
{
    const FILETIME time = zeb::platform::CurrentFileTime();
    return static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

std::string KeyOf(std::string_view name)
{
    return Folded(name, TextFold::IgnoreCase);
}

} // namespace

void FolderTable::ThrowGone(FolderId folder) const
{
    throw Error(MAPI_E_NOT_FOUND,
                "folder " + std::to_string(folder) + " does not exist in the store file '" + m_connection.Path() + "'");
}

void FolderTable::RequireNoCycle(bool isNew, FolderId folder) const
{
    if (!isNew)
    {
        throw Error(MAPI_E_CORRUPT_STORE, "the store file '" + m_connection.Path() + "' is damaged: folder " +
                                              std::to_string(folder) + " is below itself");
    }
}

void FolderTable::RefuseStandard(FolderId folder, const char* what) const
{
    if (IsStandard(folder))
    {
        throw Error(MAPI_E_NO_ACCESS,
                    "a standard folder of the store file '" + m_connection.Path() + "' cannot be " + what);
    }
}

void FolderTable::RequireNameIsFree(FolderId parent, std::string_view name, FolderId self)
{
    Require(!name.empty(), "the name of the folder is empty");
    if (name.size() > LongestName && WideFromStored(name).size() > LongestName)
    {
        throw Error(MAPI_E_STRING_TOO_LONG,
                    "the name of the folder is too long: at most " + std::to_string(LongestName) + " characters");
    }
    const FolderId found = Find(parent, name);
    if (found != 0 && found != self)
    {
        throw Error(MAPI_E_COLLISION, "the folder '" + std::string(name) + "' exists already");
    }
}

FolderId FolderTable::ParentOf(FolderId folder)
{
    Query query(m_connection.Db(), "SELECT parent FROM folder WHERE id=?");
    if (!query.Bind(1, folder).Step())
    {
        ThrowGone(folder);
    }
    return query.Number(0);
}

void FolderTable::RequireRoomBelow(FolderId parent)
{
    int levels = 1;
    for (FolderId at = parent; at != 0; at = ParentOf(at))
    {
        if (++levels > MostLevels)
        {
            throw Error(MAPI_E_TOO_COMPLEX,
                        "folders are nested too deep: at most " + std::to_string(MostLevels) + " levels are stored");
        }
    }
}

void FolderTable::DeleteRow(FolderId folder)
{
    std::vector<LargeReference> references;
    {
        Query query(m_connection.Db(), "SELECT props FROM folder WHERE id=?");
        if (query.Bind(1, folder).Step())
        {
            references = ReferencesIn(query.Bytes(0));
        }
    }
    DeleteReferences(m_connection.Db(), references);
    Query(m_connection.Db(), "DELETE FROM folder WHERE id=?").Bind(1, folder).Run();
}

void FolderTable::ClearContents(FolderId folder)
{
    m_messages.Clear({folder, false});
    m_messages.Clear({folder, true});
}

void FolderTable::RequireExists(FolderId folder)
{
    if (!Exists(folder))
    {
        ThrowGone(folder);
    }
}

FolderId FolderTable::Insert(FolderId id, FolderId parent, const PropertySet& properties, ULONG type)
{
    const std::string blob = WriteBlob(m_connection, properties);
    const std::string key = KeyOf(properties.Text(PR_DISPLAY_NAME_W));
    {
        Query query(m_connection.Db(), "INSERT INTO folder(id, parent, type, key, props, created, modified) "
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
    if (id > LastFolder)
    {
        throw Error(MAPI_E_TOO_BIG, "the store file '" + m_connection.Path() + "' has no number left for a folder");
    }
    m_contents.Insert({id, false});
    m_contents.Insert({id, true});
    return id;
}

FolderInfo FolderTable::Info(FolderId folder)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), ZEB_FOLDER_COLUMNS "WHERE f.id=?");
    if (!query.Bind(1, folder).Step())
    {
        ThrowGone(folder);
    }
    return ReadInfo(query);
}

bool FolderTable::Exists(FolderId folder)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT 1 FROM folder WHERE id=?");
    return query.Bind(1, folder).Step();
}

PropertySet FolderTable::Properties(FolderId folder)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT props FROM folder WHERE id=?");
    if (!query.Bind(1, folder).Step())
    {
        ThrowGone(folder);
    }
    return PropertyBlob(query.Bytes(0), m_connection, {"folder", folder}).Decode();
}

FolderTimes FolderTable::Times(FolderId folder)
{
    const std::lock_guard hold(m_connection.Lock());
    if (m_connection.Version() < FolderTimesVersion)
    {
        return {};
    }
    Query query(m_connection.Db(), "SELECT created, modified FROM folder WHERE id=?");
    query.Bind(1, folder);
    return query.Step() ? FolderTimes{query.Number(0), query.Number(1)} : FolderTimes{};
}

std::vector<FolderInfo> FolderTable::Under(FolderId folder, bool wholeTree)
{
    const StoreSnapshot snapshot(m_connection);
    RequireExists(folder);
    std::vector<FolderInfo> found;
    std::unordered_set<FolderId> seen{folder};
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
        Query query(m_connection.Db(), ZEB_FOLDER_COLUMNS "WHERE f.parent=? ORDER BY f.key");
        query.Bind(1, above.id);
        while (query.Step())
        {
            waiting.push_back(ReadInfo(query));
            RequireNoCycle(seen.insert(waiting.back().id).second, waiting.back().id);
            waiting.back().depth = above.depth + 1;
        }
        // The first sibling is taken next.
        std::reverse(waiting.begin() + static_cast<std::ptrdiff_t>(before), waiting.end());
    }
    return found;
}

FolderId FolderTable::Find(FolderId parent, std::string_view utf8Name)
{
    const std::lock_guard hold(m_connection.Lock());
    const std::string key = KeyOf(utf8Name);
    Query query(m_connection.Db(), "SELECT id FROM folder WHERE parent=? AND key=?");
    query.Bind(1, parent).BindText(2, key);
    return query.Step() ? query.Number(0) : 0;
}

FolderId FolderTable::Create(FolderId parent, const PropertySet& properties, ULONG type)
{
    StoreTransaction transaction(m_connection);
    RequireExists(parent);
    RequireRoomBelow(parent);
    RequireNameIsFree(parent, properties.Text(PR_DISPLAY_NAME_W), 0);
    const FolderId folder = Insert(0, parent, properties, type);
    m_contents.TouchTree();
    transaction.Commit();
    return folder;
}

void FolderTable::SaveProperties(FolderId folder, const PropertySet& properties)
{
    StoreTransaction transaction(m_connection);
    const FolderId parent = ParentOf(folder);
    const std::string name = properties.Text(PR_DISPLAY_NAME_W);
    if (parent != 0)
    {
        RequireNameIsFree(parent, name, folder);
    }
    std::vector<LargeReference> kept;
    {
        Query query(m_connection.Db(), "SELECT props FROM folder WHERE id=?");
        query.Bind(1, folder).Step();
        kept = ReferencesIn(query.Bytes(0));
    }
    const std::string blob = WriteBlob(m_connection, properties, kept);
    const std::string key = KeyOf(name);
    Query(m_connection.Db(), "UPDATE folder SET key=?, props=?, modified=max(?, coalesce(modified, 0)+1) WHERE id=?")
        .BindText(1, key)
        .BindBlob(2, blob)
        .Bind(3, Now())
        .Bind(4, folder)
        .Run();
    DeleteReferences(m_connection.Db(), kept);
    m_contents.TouchTree();
    transaction.Commit();
}

void FolderTable::Delete(FolderId folder, bool withMessages, bool withFolders)
{
    RefuseStandard(folder, "deleted");
    StoreTransaction transaction(m_connection);
    const FolderInfo info = Info(folder);
    if (info.subfolders > 0 && !withFolders)
    {
        throw Error(MAPI_E_HAS_FOLDERS, "the folder has subfolders");
    }
    if (info.messages + info.associated > 0 && !withMessages)
    {
        throw Error(MAPI_E_HAS_MESSAGES, "the folder has messages");
    }
    std::vector<FolderInfo> below = Under(folder, true);
    below.insert(below.begin(), info);
    // Depth first order, so from the end every folder is empty when its turn comes.
    for (auto each = below.rbegin(); each != below.rend(); ++each)
    {
        ClearContents(each->id);
        DeleteRow(each->id);
    }
    m_contents.TouchTree();
    transaction.Commit();
}

void FolderTable::Empty(FolderId folder, bool withAssociated)
{
    StoreTransaction transaction(m_connection);
    const std::vector<FolderInfo> below = Under(folder, true);
    for (auto each = below.rbegin(); each != below.rend(); ++each)
    {
        ClearContents(each->id);
        if (!IsStandard(each->id) && Info(each->id).subfolders == 0)
        {
            DeleteRow(each->id);
        }
    }
    m_messages.Clear({folder, false});
    if (withAssociated)
    {
        m_messages.Clear({folder, true});
    }
    m_contents.TouchTree();
    transaction.Commit();
}

void FolderTable::Move(FolderId folder, FolderId newParent, std::string_view newUtf8Name)
{
    RefuseStandard(folder, "moved");
    StoreTransaction transaction(m_connection);
    RequireExists(newParent);
    if (IsWithin(newParent, folder))
    {
        throw Error(MAPI_E_FOLDER_CYCLE, "a folder cannot be moved below itself");
    }
    RequireRoomBelow(newParent);
    PropertySet properties = Properties(folder);
    if (!newUtf8Name.empty())
    {
        properties.SetText(PR_DISPLAY_NAME_W, newUtf8Name);
    }
    RequireNameIsFree(newParent, properties.Text(PR_DISPLAY_NAME_W), folder);
    {
        // The key of the old name may be taken there; the key of the new one is not.
        const std::string key = KeyOf(properties.Text(PR_DISPLAY_NAME_W));
        Query query(m_connection.Db(), "UPDATE folder SET parent=?, key=? WHERE id=?");
        query.Bind(1, newParent).BindText(2, key).Bind(3, folder).Run();
    }
    SaveProperties(folder, properties);
    transaction.Commit();
}

bool FolderTable::IsWithin(FolderId folder, FolderId ancestor)
{
    const StoreSnapshot snapshot(m_connection);
    std::unordered_set<FolderId> seen;
    for (FolderId at = folder; at != 0; at = ParentOf(at))
    {
        RequireNoCycle(seen.insert(at).second, at);
        if (at == ancestor)
        {
            return true;
        }
    }
    return false;
}

} // namespace zebstore
