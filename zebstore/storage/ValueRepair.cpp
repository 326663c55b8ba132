#include "zebstore/storage/ValueRepair.h"

#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/MessageRow.h"
#include "zebstore/storage/PropertyBlob.h"

#include <algorithm>
#include <cstdio>

namespace zebstore
{

namespace
{

std::string HexOf(ULONG tag)
{
    char text[11];
    std::snprintf(text, sizeof(text), "0x%08X", static_cast<unsigned>(tag));
    return text;
}

} // namespace

// A table with property blobs. `rows` selects key, number (0 where there is none) and blob; `write` takes the blob, the
// key and the number.
struct ValueRepair::Table
{
    const char* owner;
    const char* rows;
    const char* write;
    const char* columns; // other columns that the properties can be rebuilt from; null: none
};

const ValueRepair::Table ValueRepair::Tables[] = {
    {"the store", "SELECT id, 0, props FROM store", "UPDATE store SET props=? WHERE id=? AND 0=?", nullptr},
    {"folder", "SELECT id, 0, props FROM folder", "UPDATE folder SET props=? WHERE id=? AND 0=?",
     "SELECT key FROM folder WHERE id=?"},
    {"message", "SELECT id, 0, props FROM message", "UPDATE message SET props=? WHERE id=? AND 0=?",
     "SELECT " ZEB_MESSAGE_COPIES " FROM message WHERE id=?"},
    {"a recipient of message", "SELECT message, number, props FROM recipient",
     "UPDATE recipient SET props=? WHERE message=? AND number=?", nullptr},
    {"an attachment of message", "SELECT message, number, props FROM attachment",
     "UPDATE attachment SET props=? WHERE message=? AND number=?", nullptr},
    {"address book entry", "SELECT id, 0, props FROM address", "UPDATE address SET props=? WHERE id=? AND 0=?",
     "SELECT key FROM address WHERE id=?"},
    {"the address book", "SELECT id, 0, props FROM directory WHERE props IS NOT NULL",
     "UPDATE directory SET props=? WHERE id=? AND 0=?", nullptr},
};

ValueRepair::ValueRepair(StoreConnection& store, const WorkReport& report)
    : m_store(store)
    , m_database(store.Db())
    , m_report(report)
{
    Query query(m_database, "SELECT (SELECT count(*) FROM message)+(SELECT count(*) FROM recipient)+(SELECT count(*) "
                            "FROM attachment)+(SELECT count(*) FROM folder)+(SELECT count(*) FROM address)");
    query.Step();
    m_whole = 2 * static_cast<std::uint64_t>(query.Number(0));
    Query pieces(m_database, "SELECT count(*) FROM chunk");
    pieces.Step();
    m_whole += static_cast<std::uint64_t>(pieces.Number(0));
}

void ValueRepair::Step()
{
    ++m_done;
    m_report.progress(std::min(m_done, m_whole), m_whole);
}

std::string ValueRepair::OwnerOf(const Table& table, const Row& row) const
{
    const std::string owner = table.owner;
    return owner.compare(0, 4, "the ") == 0 ? owner : owner + " " + std::to_string(row.key);
}

void ValueRepair::Write(const Table& table, const Row& row)
{
    Query(m_database, std::string(table.write)).BindBlob(1, row.blob).Bind(2, row.key).Bind(3, row.number).Run();
}

// The sort keys of a row are its texts without case: less than what was there, but more than nothing.
std::string ValueRepair::Replacement(const Table& table, const Row& row)
{
    PropertySet properties;
    if (table.columns != nullptr)
    {
        Query query(m_database, std::string(table.columns));
        query.Bind(1, row.key).Step();
        if (std::string_view(table.owner) != "message")
        {
            properties.SetText(PR_DISPLAY_NAME_W, query.Bytes(0));
        }
        else
        {
            AddCopies(properties, ReadCopies(query, 0));
        }
    }
    return WriteBlob(m_store, properties);
}

void ValueRepair::MendBlobs(const Table& table)
{
    std::vector<Row> changed;
    {
        Query query(m_database, std::string(table.rows));
        for (; query.Step(); Step())
        {
            Row row{query.Number(0), query.Number(1), {}};
            const std::string_view blob = query.Bytes(2);
            if (!PropertyBlob::IsSound(blob))
            {
                m_report.found(OwnerOf(table, row) + ": its properties cannot be read: replaced by what its row tells");
                changed.push_back(std::move(row));
            }
            else if (!PropertyBlob::IsAsWritten(blob))
            {
                m_report.found(OwnerOf(table, row) + ": its properties do not match their checksum: kept as they read");
                row.blob = PropertyBlob::Sealed(blob);
                changed.push_back(std::move(row));
            }
        }
    }
    for (Row& row : changed)
    {
        if (row.blob.empty())
        {
            row.blob = Replacement(table, row);
        }
        Write(table, row);
    }
}

void ValueRepair::MendPieces()
{
    std::vector<std::int64_t> changed;
    Query query(m_database, "SELECT id, bytes, sum FROM chunk");
    for (; query.Step(); Step())
    {
        if (query.IsNull(2) || PieceChecksum(query.Number(0), query.Bytes(1)) != query.Number(2))
        {
            changed.push_back(query.Number(0));
        }
    }
    for (const std::int64_t key : changed)
    {
        m_report.found("large value " + std::to_string(key >> ChunkBits) +
                       ": a piece of it does not match its checksum: kept as it reads");
        Query piece(m_database, "SELECT bytes FROM chunk WHERE id=?");
        piece.Bind(1, key).Step();
        const std::int64_t sum = PieceChecksum(key, piece.Bytes(0));
        Query(m_database, "UPDATE chunk SET sum=? WHERE id=?").Bind(1, sum).Bind(2, key).Run();
    }
}

void ValueRepair::MendContent()
{
    for (const Table& table : Tables)
    {
        MendBlobs(table);
    }
    MendPieces();
}

bool ValueRepair::IsWhole(const LargeReference& reference)
{
    const auto whole = [&](std::int64_t id, std::uint64_t size)
    {
        if (!CanBeLargeId(id))
        {
            return false;
        }
        Query value(m_database, "SELECT 1 FROM large WHERE id=?");
        return value.Bind(1, id).Step() && HasAllPieces(m_database, id, size);
    };
    return whole(reference.id, reference.size) &&
           (reference.form != LargeReference::OwnBytes || whole(reference.ownId, reference.ownSize));
}

// A property whose value is not whole goes; a value that another object has already is copied.
void ValueRepair::Rewrite(const Table& table, const Row& row)
{
    PropertySet properties = PropertyBlob(row.blob, m_store).Decode();
    std::vector<LargeReference> kept;
    for (const ULONG tag : properties.Tags())
    {
        const auto* value = dynamic_cast<const StoredLargeValue*>(properties.Large(tag).get());
        if (value == nullptr)
        {
            continue;
        }
        const LargeReference& reference = value->Reference();
        const std::vector<std::int64_t> ids = reference.Ids();
        if (!IsWhole(reference))
        {
            m_report.found(OwnerOf(table, row) + ": the value of its property " + HexOf(tag) +
                           " is not complete: the property is removed");
            properties.Remove(tag);
        }
        else if (std::any_of(ids.begin(), ids.end(), [&](std::int64_t id) { return m_taken.count(id) != 0; }))
        {
            m_report.found(OwnerOf(table, row) + ": the value of its property " + HexOf(tag) +
                           " belongs to another object too: copied");
        }
        else
        {
            m_taken.insert(ids.begin(), ids.end());
            kept.push_back(reference);
        }
    }
    const Row changed{row.key, row.number, WriteBlob(m_store, properties, kept)};
    Write(table, changed);
    for (const LargeReference& reference : ReferencesIn(changed.blob))
    {
        for (const std::int64_t id : reference.Ids())
        {
            m_taken.insert(id);
        }
    }
}

void ValueRepair::MendReferencesOf(const Table& table)
{
    std::vector<Row> changed;
    {
        Query query(m_database, std::string(table.rows));
        for (; query.Step(); Step())
        {
            const std::vector<LargeReference> references = ReferencesIn(query.Bytes(2));
            std::vector<std::int64_t> ids;
            bool sound = true;
            for (const LargeReference& reference : references)
            {
                sound = sound && IsWhole(reference);
                for (const std::int64_t id : reference.Ids())
                {
                    ids.push_back(id);
                }
            }
            std::sort(ids.begin(), ids.end());
            sound = sound && std::adjacent_find(ids.begin(), ids.end()) == ids.end() &&
                    std::none_of(ids.begin(), ids.end(), [&](std::int64_t id) { return m_taken.count(id) != 0; });
            if (sound)
            {
                m_taken.insert(ids.begin(), ids.end());
            }
            else
            {
                changed.push_back({query.Number(0), query.Number(1), std::string(query.Bytes(2))});
            }
        }
    }
    for (const Row& row : changed)
    {
        Rewrite(table, row);
    }
}

void ValueRepair::MendReferences()
{
    for (const Table& table : Tables)
    {
        MendReferencesOf(table);
    }
}

void ValueRepair::RemoveOrphans()
{
    for (const std::int64_t id : Query(m_database, "SELECT id FROM large").Numbers())
    {
        if (m_taken.count(id) == 0)
        {
            m_report.found("large value " + std::to_string(id) + " belongs to nothing: removed");
            DeleteLarge(m_database, id);
            Query(m_database, "DELETE FROM large WHERE id=?").Bind(1, id).Run(); // also a number that no value can have
        }
    }
    const std::vector<std::int64_t> pieces =
        Query(m_database, "SELECT id FROM chunk WHERE (id >> 24) NOT IN (SELECT id FROM large)").Numbers();
    if (pieces.empty())
    {
        return;
    }
    m_report.found(std::to_string(pieces.size()) + " pieces belong to no large value: removed");
    for (const std::int64_t piece : pieces)
    {
        Query(m_database, "DELETE FROM chunk WHERE id=?").Bind(1, piece).Run();
    }
}

} // namespace zebstore
