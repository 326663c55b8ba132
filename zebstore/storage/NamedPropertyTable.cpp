#include "zebstore/storage/NamedPropertyTable.h"

#include "zebstore/storage/Encoding.h"

namespace zebstore
{

namespace
{

constexpr ULONG FirstNamed = 0x8000;
constexpr ULONG LastNamed = 0xFFFE;
// MAPI_E_NAMED_PROP_QUOTA_EXCEEDED, which the MAPI headers do not name.
constexpr HRESULT QuotaExceeded = static_cast<HRESULT>(0x80040900);

// A name as the table holds it.
struct NameRow
{
    std::string guid;
    std::int64_t kind = MNID_ID;
    std::int64_t number = 0;
    std::string name;
};

NameRow RowOf(const MAPINAMEID& name)
{
    Require(name.lpguid != nullptr, "the property set of a named property is null");
    Require(name.ulKind == MNID_ID || name.ulKind == MNID_STRING,
            "a named property is of no known kind: it has a number or a name");
    NameRow row;
    row.guid.assign(reinterpret_cast<const char*>(name.lpguid), sizeof(GUID));
    row.kind = name.ulKind;
    if (name.ulKind == MNID_ID)
    {
        row.number = name.Kind.lID;
        return row;
    }
    const WCHAR* text = name.Kind.lpwstrName;
    Require(text != nullptr && *text != 0, "the name of a named property is empty");
    row.name = StoredFromWide(text, zeb::platform::WideLength(text));
    return row;
}

ULONG Find(Database& database, const NameRow& row)
{
    Query query(database, "SELECT id FROM named WHERE guid=? AND kind=? AND number=? AND name=?");
    query.BindBlob(1, row.guid).Bind(2, row.kind).Bind(3, row.number).BindText(4, row.name);
    return query.Step() ? static_cast<ULONG>(query.Number(0)) : 0;
}

ULONG Add(Database& database, const NameRow& row)
{
    ULONG id = FirstNamed;
    {
        Query query(database, "SELECT max(id) FROM named");
        if (query.Step() && !query.IsNull(0))
        {
            id = static_cast<ULONG>(query.Number(0)) + 1;
        }
    }
    if (id > LastNamed)
    {
        throw Error(QuotaExceeded, "the store file '" + database.Path() + "' has no number left for a named property");
    }
    Query(database, "INSERT INTO named(id, guid, kind, number, name) VALUES(?, ?, ?, ?, ?)")
        .Bind(1, id)
        .BindBlob(2, row.guid)
        .Bind(3, row.kind)
        .Bind(4, row.number)
        .BindText(5, row.name)
        .Run();
    return id;
}

PropertyName NameOf(const Query& query)
{
    PropertyName name;
    name.id = static_cast<ULONG>(query.Number(0));
    name.set = ReadNumber<GUID>(query.Bytes(1));
    if (query.Number(2) == MNID_ID)
    {
        name.number = static_cast<LONG>(query.Number(3));
    }
    else
    {
        name.name = WideFromStored(query.Bytes(4));
    }
    return name;
}

} // namespace

std::vector<ULONG> NamedPropertyTable::Ids(const MAPINAMEID* const* names, size_t count, bool create)
{
    const std::lock_guard hold(m_connection.Lock());
    std::vector<NameRow> rows;
    for (size_t i = 0; i < count; ++i)
    {
        Require(names[i] != nullptr, "the name of a named property is null");
        rows.push_back(RowOf(*names[i]));
    }
    std::vector<ULONG> ids;
    bool complete = true;
    for (const NameRow& row : rows)
    {
        ids.push_back(Find(m_connection.Db(), row));
        complete = complete && ids.back() != 0;
    }
    if (complete || !create)
    {
        return ids;
    }
    Transaction transaction(m_connection.Db());
    for (size_t i = 0; i < count; ++i)
    {
        // Another process, or an equal name before this one, may have added it in the meantime.
        if (ids[i] == 0)
        {
            ids[i] = Find(m_connection.Db(), rows[i]);
        }
        if (ids[i] == 0)
        {
            ids[i] = Add(m_connection.Db(), rows[i]);
        }
    }
    transaction.Commit();
    return ids;
}

std::optional<PropertyName> NamedPropertyTable::Name(ULONG id)
{
    const std::lock_guard hold(m_connection.Lock());
    Query query(m_connection.Db(), "SELECT id, guid, kind, number, name FROM named WHERE id=?");
    query.Bind(1, id);
    if (!query.Step())
    {
        return std::nullopt;
    }
    return NameOf(query);
}

std::vector<PropertyName> NamedPropertyTable::All()
{
    const std::lock_guard hold(m_connection.Lock());
    std::vector<PropertyName> names;
    Query query(m_connection.Db(), "SELECT id, guid, kind, number, name FROM named ORDER BY id");
    while (query.Step())
    {
        names.push_back(NameOf(query));
    }
    return names;
}

} // namespace zebstore
