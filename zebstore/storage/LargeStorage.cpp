#include "zebstore/storage/LargeStorage.h"

#include "zebstore/storage/Checksum.h"
#include "zebstore/storage/Encoding.h"
#include "zebstore/storage/StoreFormat.h"

#include <sqlite3.h>

#include <algorithm>
#include <atomic>

namespace zebstore
{

namespace
{

constexpr size_t ChunkSize = 65536;
static_assert(LastLarge == (std::int64_t{1} << (62 - ChunkBits)) - 1, "keys of pieces are positive");
constexpr std::uint64_t MostBytes = std::uint64_t(ChunkSize) << ChunkBits;

/// The key of a piece. A damaged reference has a number that no value or piece can have.
std::int64_t ChunkId(std::int64_t value, std::uint64_t chunk)
{
    if (!CanBeLargeId(value) || chunk >= std::uint64_t(1) << ChunkBits)
    {
        throw Error(MAPI_E_CORRUPT_DATA, "the reference to a large value is damaged");
    }
    return (value << ChunkBits) | static_cast<std::int64_t>(chunk);
}

// A value in memory.
class BytesValue : public LargeValue
{
public:
    explicit BytesValue(std::string_view bytes)
        : m_bytes(bytes)
    {
    }
    std::uint64_t Size() const override { return m_bytes.size(); }
    size_t Read(std::uint64_t offset, void* to, size_t count) const override
    {
        if (offset >= m_bytes.size())
        {
            return 0;
        }
        return m_bytes.copy(static_cast<char*>(to), count, static_cast<size_t>(offset));
    }

private:
    std::string_view m_bytes;
};

std::int64_t WriteChunks(Database& database, const LargeValue& value, std::uint64_t& size)
{
    size = value.Size();
    if (size > MostBytes)
    {
        throw Error(MAPI_E_TOO_BIG, "a value is too large for the store file '" + database.Path() + "'");
    }
    // RETURNING would build a table of its own for each run.
    Query(database, "INSERT INTO large(size) VALUES(?)").Bind(1, static_cast<std::int64_t>(size)).Run();
    const std::int64_t id = sqlite3_last_insert_rowid(database.Handle());
    Query write(database, "INSERT INTO chunk(id, bytes, sum) VALUES(?, ?, ?)");
    std::string piece(static_cast<size_t>(std::min<std::uint64_t>(size, ChunkSize)), '\0');
    for (std::uint64_t offset = 0; offset < size; offset += ChunkSize)
    {
        const size_t count = value.Read(offset, &piece[0], piece.size());
        if (count != std::min<std::uint64_t>(size - offset, ChunkSize))
        {
            throw Error(MAPI_E_CORRUPT_DATA, "a large value ends before its size");
        }
        const std::int64_t key = ChunkId(id, offset / ChunkSize);
        const std::string_view bytes(piece.data(), count);
        write.Bind(1, key).BindBlob(2, bytes).Bind(3, PieceChecksum(key, bytes)).Run();
        write.Reset();
    }
    return id;
}

// Reads a value piece by piece while `test` holds for each.
template <class Test>
bool EveryPiece(const LargeValue& value, Test&& test)
{
    std::string piece(ChunkSize, '\0');
    for (std::uint64_t offset = 0;; offset += ChunkSize)
    {
        const size_t count = value.Read(offset, &piece[0], piece.size());
        if (!test(std::string_view(piece.data(), count)))
        {
            return false;
        }
        if (count < ChunkSize)
        {
            return true;
        }
    }
}

LargeReference WriteNarrow(Database& database, const LargeValue& value)
{
    LargeReference reference;
    if (EveryPiece(value, IsAscii))
    {
        reference.id = WriteChunks(database, value, reference.size);
        return reference;
    }
    std::string written(static_cast<size_t>(value.Size()), '\0');
    written.resize(value.Read(0, &written[0], written.size()));
    const std::string stored = StoredFromNarrow(written);
    reference.id = WriteChunks(database, BytesValue(stored), reference.size);
    reference.form = LargeReference::Utf8;
    if (stored == written)
    {
        return reference;
    }
    reference.form = LargeReference::OwnBytes;
    reference.ownId = WriteChunks(database, BytesValue(written), reference.ownSize);
    return reference;
}

// Small content is held in m_small, larger content in rows of temp.staged.
class TemporaryValue : public StagedValue
{
public:
    explicit TemporaryValue(std::shared_ptr<StoreConnection> store)
        : m_store(std::move(store))
    {
        static std::atomic<std::int64_t> next{1};
        m_id = next++;
    }

    ~TemporaryValue() override
    {
        if (!m_spilled)
        {
            return;
        }
        const std::lock_guard hold(m_store->Lock());
        try
        {
            DropChunksFrom(0);
        }
        catch (const std::exception&)
        {
            // The rows die with the connection.
        }
    }

    std::uint64_t Size() const override
    {
        const std::lock_guard hold(m_store->Lock());
        return m_size;
    }

    size_t Read(std::uint64_t offset, void* to, size_t count) const override
    {
        const std::lock_guard hold(m_store->Lock());
        if (offset >= m_size)
        {
            return 0;
        }
        count = static_cast<size_t>(std::min<std::uint64_t>(count, m_size - offset));
        if (!m_spilled)
        {
            return m_small.copy(static_cast<char*>(to), count, static_cast<size_t>(offset));
        }
        for (size_t done = 0; done < count;)
        {
            const size_t within = (offset + done) % ChunkSize;
            const size_t part = std::min(count - done, ChunkSize - within);
            std::string chunk = Chunk((offset + done) / ChunkSize);
            chunk.resize(ChunkSize);
            chunk.copy(static_cast<char*>(to) + done, part, within);
            done += part;
        }
        return count;
    }

    void Write(std::uint64_t offset, const void* from, size_t count) override
    {
        const std::lock_guard hold(m_store->Lock());
        if (offset > MostBytes || count > MostBytes - offset)
        {
            throw Error(MAPI_E_TOO_BIG, "a stream cannot grow to this size");
        }
        const std::uint64_t end = std::max<std::uint64_t>(m_size, offset + count);
        if (!m_spilled && end > ChunkSize)
        {
            Spill();
        }
        if (!m_spilled)
        {
            m_small.resize(static_cast<size_t>(end));
            m_small.replace(static_cast<size_t>(offset), count, static_cast<const char*>(from), count);
        }
        else
        {
            WriteToChunks(offset, static_cast<const char*>(from), count);
        }
        m_size = end;
    }

    void SetSize(std::uint64_t size) override
    {
        const std::lock_guard hold(m_store->Lock());
        if (size > MostBytes)
        {
            throw Error(MAPI_E_TOO_BIG, "a stream cannot grow to this size");
        }
        if (!m_spilled && size > ChunkSize)
        {
            Spill();
        }
        if (!m_spilled)
        {
            m_small.resize(static_cast<size_t>(size));
        }
        else if (size < m_size)
        {
            CutChunks(size);
        }
        m_size = size;
    }

private:
    Database& Db() const { return m_store->Db(); }

    std::string Chunk(std::uint64_t number) const
    {
        Query query(Db(), "SELECT bytes FROM temp.staged WHERE id=?");
        query.Bind(1, ChunkId(m_id, number));
        return query.Step() ? std::string(query.Bytes(0)) : std::string();
    }

    void PutChunk(std::uint64_t number, std::string_view bytes)
    {
        Query query(Db(), "INSERT OR REPLACE INTO temp.staged(id, bytes) VALUES(?, ?)");
        query.Bind(1, ChunkId(m_id, number)).BindBlob(2, bytes).Run();
    }

    void DropChunksFrom(std::uint64_t number)
    {
        if (number >> ChunkBits != 0)
        {
            return; // no value has so many
        }
        Query query(Db(), "DELETE FROM temp.staged WHERE id BETWEEN ? AND ?");
        query.Bind(1, ChunkId(m_id, number)).Bind(2, LargeChunks(m_id).last).Run();
    }

    // Two statements: what is left when the second fails is the beginning of the value, and m_size is its size.
    void CutChunks(std::uint64_t size)
    {
        const std::uint64_t whole = (size + ChunkSize - 1) / ChunkSize;
        DropChunksFrom(whole);
        m_size = std::min(m_size, whole * ChunkSize);
        if (size % ChunkSize)
        {
            PutChunk(whole - 1, Chunk(whole - 1).substr(0, size % ChunkSize));
        }
    }

    void WriteToChunks(std::uint64_t offset, const char* from, size_t count)
    {
        for (size_t done = 0; done < count;)
        {
            const std::uint64_t number = (offset + done) / ChunkSize;
            const size_t within = (offset + done) % ChunkSize;
            const size_t part = std::min(count - done, ChunkSize - within);
            if (part == ChunkSize)
            {
                PutChunk(number, {from + done, part});
            }
            else
            {
                std::string chunk = Chunk(number);
                if (chunk.size() < within + part)
                {
                    chunk.resize(within + part);
                }
                chunk.replace(within, part, from + done, part);
                PutChunk(number, chunk);
            }
            done += part;
        }
    }

    void Spill()
    {
        WriteToChunks(0, m_small.data(), m_small.size());
        m_spilled = true;
        std::string().swap(m_small);
    }

    std::shared_ptr<StoreConnection> m_store;
    std::int64_t m_id = 0;
    std::uint64_t m_size = 0;
    bool m_spilled = false;
    std::string m_small;
};

} // namespace

std::int64_t PieceChecksum(std::int64_t key, std::string_view bytes)
{
    return static_cast<std::int64_t>(Checksum(bytes, static_cast<std::uint64_t>(key)));
}

std::string LargeReference::Encoded() const
{
    std::string bytes(1, static_cast<char>(form));
    AppendNumber(bytes, id);
    AppendNumber(bytes, size);
    if (form == OwnBytes)
    {
        AppendNumber(bytes, ownId);
        AppendNumber(bytes, ownSize);
    }
    return bytes;
}

LargeReference LargeReference::Decode(std::string_view bytes)
{
    LargeReference reference;
    reference.form = static_cast<Form>(ReadNumber<unsigned char>(bytes));
    reference.id = ReadNumber<std::int64_t>(bytes, 1);
    reference.size = ReadNumber<std::uint64_t>(bytes, 9);
    if (reference.form == OwnBytes)
    {
        reference.ownId = ReadNumber<std::int64_t>(bytes, 17);
        reference.ownSize = ReadNumber<std::uint64_t>(bytes, 25);
    }
    return reference;
}

std::vector<std::int64_t> LargeReference::Ids() const
{
    if (form == OwnBytes)
    {
        return {id, ownId};
    }
    return {id};
}

StoredLargeValue::StoredLargeValue(std::shared_ptr<StoreConnection> store, const LargeReference& reference)
    : m_store(std::move(store))
    , m_reference(reference)
{
}

bool StoredLargeValue::IsPlainHere() const
{
    return m_reference.form == LargeReference::Plain ||
           (m_reference.form == LargeReference::Utf8 && NarrowFromStored("\xC3\xA9") == "\xC3\xA9");
}

size_t StoredLargeValue::ReadChunks(std::int64_t id, std::uint64_t size, std::uint64_t offset, void* to,
                                    size_t count) const
{
    if (offset >= size)
    {
        return 0;
    }
    count = static_cast<size_t>(std::min<std::uint64_t>(count, size - offset));
    const bool hasSums = m_store->Version() >= ChecksumVersion;
    Query query = hasSums ? Query(m_store->Db(), "SELECT bytes, sum FROM chunk WHERE id=?")
                          : Query(m_store->Db(), "SELECT bytes FROM chunk WHERE id=?");
    for (size_t done = 0; done < count;)
    {
        const size_t within = (offset + done) % ChunkSize;
        const std::int64_t key = ChunkId(id, (offset + done) / ChunkSize);
        query.Bind(1, key);
        if (!query.Step())
        {
            throw Error(MAPI_E_OBJECT_DELETED,
                        "a large value of the store file '" + m_store->Path() + "' was replaced");
        }
        const std::string_view chunk = query.Bytes(0);
        // A piece that is read in small steps is verified once.
        if (hasSums && m_verified != key && PieceChecksum(key, chunk) != query.Number(1))
        {
            throw Error(MAPI_E_CORRUPT_DATA, "a large value of the store file '" + m_store->Path() + "' is damaged");
        }
        m_verified = key;
        const size_t part = std::min(count - done, ChunkSize - within);
        if (chunk.size() < within + part)
        {
            throw Error(MAPI_E_CORRUPT_DATA, "a large value of the store file '" + m_store->Path() + "' is truncated");
        }
        chunk.copy(static_cast<char*>(to) + done, part, within);
        done += part;
        query.Reset();
    }
    return count;
}

std::string StoredLargeValue::ReadAll(std::int64_t id, std::uint64_t size) const
{
    // Piece by piece: a damaged reference may have any size, and the first missing piece ends the read.
    std::string bytes;
    while (bytes.size() < size)
    {
        const size_t done = bytes.size();
        bytes.resize(done + static_cast<size_t>(std::min<std::uint64_t>(size - done, ChunkSize)));
        ReadChunks(id, size, done, &bytes[done], bytes.size() - done);
    }
    return bytes;
}

void StoredLargeValue::Convert() const
{
    if (m_converted)
    {
        return;
    }
    const std::string stored = ReadAll(m_reference.id, m_reference.size);
    std::string own;
    if (m_reference.form == LargeReference::OwnBytes)
    {
        own = ReadAll(m_reference.ownId, m_reference.ownSize);
    }
    m_text = !own.empty() && StoredFromNarrow(own) == stored ? own : NarrowFromStored(stored);
    m_converted = true;
}

std::uint64_t StoredLargeValue::Size() const
{
    if (IsPlainHere())
    {
        return m_reference.size;
    }
    const std::lock_guard hold(m_store->Lock());
    Convert();
    return m_text.size();
}

size_t StoredLargeValue::Read(std::uint64_t offset, void* to, size_t count) const
{
    const std::lock_guard hold(m_store->Lock());
    if (IsPlainHere())
    {
        return ReadChunks(m_reference.id, m_reference.size, offset, to, count);
    }
    Convert();
    return BytesValue(m_text).Read(offset, to, count);
}

void PrepareStaging(Database& database)
{
    database.Execute("CREATE TEMP TABLE staged(id INTEGER PRIMARY KEY, bytes BLOB NOT NULL)");
}

std::shared_ptr<StagedValue> MakeStagedValue(std::shared_ptr<StoreConnection> store)
{
    return std::make_shared<TemporaryValue>(std::move(store));
}

LargeReference WriteLarge(Database& database, ULONG type, const LargeValue& value)
{
    if (type == PT_STRING8)
    {
        return WriteNarrow(database, value);
    }
    LargeReference reference;
    reference.id = WriteChunks(database, value, reference.size);
    return reference;
}

LargeReference WriteLarge(Database& database, ULONG type, std::string_view encoded)
{
    if (type == PT_STRING8)
    {
        const std::string narrow = NarrowOf(encoded);
        return WriteNarrow(database, BytesValue(narrow));
    }
    if (type != PT_UNICODE)
    {
        return WriteLarge(database, type, BytesValue(encoded));
    }
    const zeb::platform::WideString wide = WideFromStored(encoded);
    const BytesValue bytes({reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(WCHAR)});
    return WriteLarge(database, type, bytes);
}

bool CanBeLargeId(std::int64_t id)
{
    return id > 0 && id <= LastLarge;
}

ChunkRange LargeChunks(std::int64_t id)
{
    return {ChunkId(id, 0), ChunkId(id, (std::uint64_t(1) << ChunkBits) - 1)};
}

bool HasAllPieces(Database& database, std::int64_t id, std::uint64_t size)
{
    const ChunkRange chunks = LargeChunks(id);
    // The length of a blob is known without reading it.
    Query query(
        database,
        "SELECT id, iif(typeof(bytes)='blob', length(bytes), -1) FROM chunk WHERE id BETWEEN ? AND ? ORDER BY id");
    query.Bind(1, chunks.first).Bind(2, chunks.last);
    std::uint64_t found = 0;
    for (std::int64_t key = chunks.first; query.Step(); ++key)
    {
        const auto bytes = static_cast<std::uint64_t>(query.Number(1));
        if (query.Number(0) != key || found >= size || bytes != std::min<std::uint64_t>(size - found, ChunkSize))
        {
            return false;
        }
        found += bytes;
    }
    return found == size;
}

void DeleteReferences(Database& database, const std::vector<LargeReference>& references)
{
    for (const LargeReference& reference : references)
    {
        for (const std::int64_t id : reference.Ids())
        {
            DeleteLarge(database, id);
        }
    }
}

void DeleteLarge(Database& database, std::int64_t id)
{
    if (!CanBeLargeId(id)) // a damaged reference must not keep its message from being deleted
    {
        return;
    }
    const ChunkRange chunks = LargeChunks(id);
    Query(database, "DELETE FROM chunk WHERE id BETWEEN ? AND ?").Bind(1, chunks.first).Bind(2, chunks.last).Run();
    Query(database, "DELETE FROM large WHERE id=?").Bind(1, id).Run();
}

} // namespace zebstore
