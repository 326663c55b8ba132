#include "zebstore/storage/AddressStorage.h"

#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/PropertyBlob.h"
#include "zebstore/storage/Text.h"

#include <algorithm>
#include <optional>

namespace zebstore
{

namespace
{

std::string NameKey(const PropertySet& properties)
{
    return SortKey(properties.Text(PR_DISPLAY_NAME_W));
}

[[noreturn]] void ThrowGone(const StoreFile& store, HRESULT code)
{
    throw Error(code, "the address book entry does not exist in the store file '" + store.Path() + "'");
}

// The references to large values of a stored entry; nothing when it is not there.
std::optional<std::vector<LargeReference>> LargeOf(StoreFile& store, AddressId address)
{
    Query query(store.Connection().Db(), "SELECT props FROM address WHERE id=?");
    if (!query.Bind(1, address).Step())
    {
        return std::nullopt;
    }
    return ReferencesIn(query.Bytes(0));
}

void BindMember(Query& query, int index, const ListMember& member)
{
    if (member.address != 0)
    {
        query.Bind(index, member.address).BindNull(index + 1);
    }
    else
    {
        query.BindNull(index).BindBlob(index + 1, member.entry);
    }
}

} // namespace

AddressStorage::AddressStorage(std::shared_ptr<StoreFile> store)
    : m_store(std::move(store))
{
}

bool AddressStorage::IsThere() const
{
    Query query(m_store->Connection().Db(), "SELECT 1 FROM sqlite_schema WHERE name='directory'");
    return query.Step();
}

void AddressStorage::Touch(std::int64_t rows) const
{
    Query(m_store->Connection().Db(), "UPDATE directory SET rows=rows+?, change=change+1").Bind(1, rows).Run();
}

ULONG AddressStorage::Count() const
{
    const std::lock_guard hold(m_store->Lock());
    if (!IsThere())
    {
        return 0;
    }
    Query query(m_store->Connection().Db(), "SELECT rows FROM directory");
    return query.Step() ? static_cast<ULONG>(query.Number(0)) : 0;
}

std::uint64_t AddressStorage::Generation() const
{
    const std::lock_guard hold(m_store->Lock());
    if (!IsThere())
    {
        return 0;
    }
    Query query(m_store->Connection().Db(), "SELECT change FROM directory");
    return query.Step() ? static_cast<std::uint64_t>(query.Number(0)) + 1 : 0;
}

PropertySet AddressStorage::Properties() const
{
    const std::lock_guard hold(m_store->Lock());
    if (!IsThere())
    {
        return {};
    }
    Query query(m_store->Connection().Db(), "SELECT props FROM directory");
    return query.Step() && !query.IsNull(0)
               ? PropertyBlob(query.Bytes(0), m_store->Connection(), {"the address book"}).Decode()
               : PropertySet();
}

void AddressStorage::SaveProperties(const PropertySet& properties) const
{
    const std::lock_guard hold(m_store->Lock());
    m_store->Connection().RequireWritable();
    Transaction transaction(m_store->Connection().Db());
    std::vector<LargeReference> kept;
    {
        Query query(m_store->Connection().Db(), "SELECT props FROM directory");
        if (query.Step())
        {
            kept = ReferencesIn(query.Bytes(0));
        }
    }
    const std::string blob = WriteBlob(m_store->Connection(), properties, kept);
    Query(m_store->Connection().Db(), "UPDATE directory SET change=change+1, props=?").BindBlob(1, blob).Run();
    DeleteReferences(m_store->Connection().Db(), kept);
    transaction.Commit();
}

bool AddressStorage::Exists(AddressId address) const
{
    const std::lock_guard hold(m_store->Lock());
    return IsThere() && Query(m_store->Connection().Db(), "SELECT 1 FROM address WHERE id=?").Bind(1, address).Step();
}

StoredAddress AddressStorage::Load(AddressId address) const
{
    const std::lock_guard hold(m_store->Lock());
    if (!IsThere())
    {
        ThrowGone(*m_store, MAPI_E_NOT_FOUND);
    }
    Query query(m_store->Connection().Db(), "SELECT type, change, props FROM address WHERE id=?");
    if (!query.Bind(1, address).Step())
    {
        ThrowGone(*m_store, MAPI_E_NOT_FOUND);
    }
    return {address, static_cast<ULONG>(query.Number(0)), query.Number(1),
            PropertyBlob(query.Bytes(2), m_store->Connection(), {"address book entry", address}).Decode()};
}

std::vector<AddressId> AddressStorage::Named(std::string_view displayName) const
{
    const std::lock_guard hold(m_store->Lock());
    if (!IsThere())
    {
        return {};
    }
    const std::string key = SortKey(displayName);
    Query query(m_store->Connection().Db(), "SELECT id FROM address WHERE key=? ORDER BY id");
    return query.BindText(1, key).Numbers();
}

AddressId AddressStorage::Create(ULONG type, const PropertySet& properties, AddressId list) const
{
    const std::lock_guard hold(m_store->Lock());
    m_store->Connection().RequireWritable();
    Database& database = m_store->Connection().Db();
    Transaction transaction(database);
    const std::string blob = WriteBlob(m_store->Connection(), properties);
    const std::string key = NameKey(properties);
    Query(database, "INSERT INTO address(type, change, key, props) VALUES(?, 1, ?, ?)")
        .Bind(1, type)
        .BindText(2, key)
        .BindBlob(3, blob)
        .Run();
    AddressId made = 0;
    {
        Query query(database, "SELECT last_insert_rowid()");
        query.Step();
        made = query.Number(0);
    }
    if (list != 0)
    {
        AddMembers(list, {{made, std::string()}});
    }
    Touch(1);
    transaction.Commit();
    return made;
}

std::int64_t AddressStorage::Save(AddressId address, const PropertySet& properties, std::int64_t change) const
{
    const std::lock_guard hold(m_store->Lock());
    m_store->Connection().RequireWritable();
    Database& database = m_store->Connection().Db();
    Transaction transaction(database);
    std::optional<std::vector<LargeReference>> kept = LargeOf(*m_store, address);
    if (!kept)
    {
        ThrowGone(*m_store, MAPI_E_OBJECT_DELETED);
    }
    std::int64_t now = 0;
    {
        Query query(database, "SELECT change FROM address WHERE id=?");
        query.Bind(1, address).Step();
        now = query.Number(0);
    }
    if (change != 0 && change != now)
    {
        throw Error(MAPI_E_OBJECT_CHANGED, "the address book entry in the store file '" + m_store->Path() +
                                               "' was changed since it was opened");
    }
    const std::string blob = WriteBlob(m_store->Connection(), properties, *kept);
    const std::string key = NameKey(properties);
    Query(database, "UPDATE address SET change=?2, key=?3, props=?4 WHERE id=?1")
        .Bind(1, address)
        .Bind(2, now + 1)
        .BindText(3, key)
        .BindBlob(4, blob)
        .Run();
    DeleteReferences(database, *kept);
    Touch(0);
    transaction.Commit();
    return now + 1;
}

size_t AddressStorage::Delete(const std::vector<AddressId>& addresses) const
{
    const std::lock_guard hold(m_store->Lock());
    m_store->Connection().RequireWritable();
    Database& database = m_store->Connection().Db();
    Transaction transaction(database);
    size_t deleted = 0;
    for (const AddressId address : addresses)
    {
        const std::optional<std::vector<LargeReference>> large = LargeOf(*m_store, address);
        if (!large)
        {
            continue;
        }
        Query(database, "DELETE FROM address WHERE id=?").Bind(1, address).Run();
        DeleteReferences(database, *large);
        ++deleted;
    }
    Touch(-static_cast<std::int64_t>(deleted));
    transaction.Commit();
    return deleted;
}

void AddressStorage::RequireList(AddressId list) const
{
    Query query(m_store->Connection().Db(), "SELECT type FROM address WHERE id=?");
    if (!query.Bind(1, list).Step() || query.Number(0) != MAPI_DISTLIST)
    {
        ThrowGone(*m_store, MAPI_E_NOT_FOUND);
    }
}

std::vector<ListMember> AddressStorage::Members(AddressId list) const
{
    const std::lock_guard hold(m_store->Lock());
    const ReadScope snapshot(m_store->Connection().Db());
    if (!IsThere())
    {
        ThrowGone(*m_store, MAPI_E_NOT_FOUND);
    }
    RequireList(list);
    std::vector<ListMember> members;
    Query query(m_store->Connection().Db(), "SELECT address, entry FROM member WHERE list=? ORDER BY number");
    query.Bind(1, list);
    while (query.Step())
    {
        members.push_back({query.IsNull(0) ? 0 : query.Number(0), std::string(query.Bytes(1))});
    }
    return members;
}

void AddressStorage::AddMembers(AddressId list, const std::vector<ListMember>& members) const
{
    const std::lock_guard hold(m_store->Lock());
    m_store->Connection().RequireWritable();
    Database& database = m_store->Connection().Db();
    Transaction transaction(database);
    RequireList(list);
    std::vector<ListMember> present = Members(list);
    std::int64_t next = 1;
    {
        Query query(database, "SELECT max(number) FROM member WHERE list=?");
        if (query.Bind(1, list).Step() && !query.IsNull(0))
        {
            next = query.Number(0) + 1;
        }
    }
    for (const ListMember& member : members)
    {
        if (std::find(present.begin(), present.end(), member) != present.end())
        {
            continue;
        }
        if (member.address != 0 && !Exists(member.address))
        {
            ThrowGone(*m_store, MAPI_E_NOT_FOUND);
        }
        Query query(database, "INSERT INTO member(list, number, address, entry) VALUES(?, ?, ?, ?)");
        query.Bind(1, list).Bind(2, next++);
        BindMember(query, 3, member);
        query.Run();
        present.push_back(member);
    }
    Touch(0);
    transaction.Commit();
}

size_t AddressStorage::RemoveMembers(AddressId list, const std::vector<ListMember>& members) const
{
    const std::lock_guard hold(m_store->Lock());
    m_store->Connection().RequireWritable();
    Database& database = m_store->Connection().Db();
    Transaction transaction(database);
    const size_t before = Members(list).size();
    for (const ListMember& member : members)
    {
        Query query(database, "DELETE FROM member WHERE list=?1 AND address IS ?2 AND entry IS ?3");
        query.Bind(1, list);
        BindMember(query, 2, member);
        query.Run();
    }
    const size_t removed = before - Members(list).size();
    Touch(0);
    transaction.Commit();
    return removed;
}

} // namespace zebstore
