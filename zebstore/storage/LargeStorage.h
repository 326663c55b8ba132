// Large values in the store file, and those that are being written.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/LargeValue.h"
#include "zebstore/storage/StoreConnection.h"

#include <string>
#include <vector>

namespace zebstore
{

/// The longest value, in bytes, that is stored in a property blob; longer ones are stored in chunks.
constexpr size_t InlineLimit = 4096;

/// The position of a large value in the file, as property blobs hold it (17 or 33 bytes).
struct LargeReference
{
    enum Form : unsigned char
    {
        Plain = 0,   ///< the chunks are what a stream shows, on either system
        Utf8 = 1,    ///< narrow text whose bytes are UTF-8
        OwnBytes = 2 ///< narrow text: the UTF-8 text, and a second value with the bytes as they were written
    };
    Form form = Plain;
    std::int64_t id = 0;
    std::uint64_t size = 0;
    std::int64_t ownId = 0; ///< with OwnBytes
    std::uint64_t ownSize = 0;

    std::string Encoded() const;
    static LargeReference Decode(std::string_view bytes);
    /// The numbers of its values: one, or two with OwnBytes.
    std::vector<std::int64_t> Ids() const;
};

/// A large value of a store; keeps the store open.
class StoredLargeValue : public LargeValue
{
public:
    StoredLargeValue(std::shared_ptr<StoreConnection> store, const LargeReference& reference);

    /// @throws Error MAPI_E_OBJECT_DELETED when the value has been replaced since.
    std::uint64_t Size() const override;
    size_t Read(std::uint64_t offset, void* to, size_t count) const override;

    const LargeReference& Reference() const { return m_reference; }
    const StoreConnection* Store() const { return m_store.get(); }

private:
    bool IsPlainHere() const;
    void Convert() const;
    size_t ReadChunks(std::int64_t id, std::uint64_t size, std::uint64_t offset, void* to, size_t count) const;
    std::string ReadAll(std::int64_t id, std::uint64_t size) const;

    std::shared_ptr<StoreConnection> m_store;
    LargeReference m_reference;
    // Under the store's lock.
    mutable std::int64_t m_verified = 0; // the key of the piece that was read last
    mutable bool m_converted = false;
    mutable std::string m_text;
};

/// Creates the temporary table of values that are being written; once for each connection.
void PrepareStaging(Database& database);
std::shared_ptr<StagedValue> MakeStagedValue(std::shared_ptr<StoreConnection> store);

/// Copies a value into the file, in the caller's transaction, a piece at a time.
/// @param type PT_STRING8, PT_UNICODE or PT_BINARY
LargeReference WriteLarge(Database& database, ULONG type, const LargeValue& value);
/// The same from encoded bytes.
LargeReference WriteLarge(Database& database, ULONG type, std::string_view encoded);
/// Deletes a value's pieces; does nothing when there is none, or when no value can have this `id`.
void DeleteLarge(Database& database, std::int64_t id);
/// Deletes the pieces of references that are no longer used.
void DeleteReferences(Database& database, const std::vector<LargeReference>& references);
/// Whether a value can have this number: false only for a damaged reference.
bool CanBeLargeId(std::int64_t id);
/// The checksum of a piece, as the table chunk keeps it.
std::int64_t PieceChecksum(std::int64_t key, std::string_view bytes);
/// A piece's key is the value's number, shifted left by these bits, plus the piece's number.
constexpr int ChunkBits = 24;
/// The keys that the pieces of a value have.
struct ChunkRange
{
    std::int64_t first;
    std::int64_t last;
};
/// @throws Error MAPI_E_CORRUPT_DATA when no value can have this `id`.
ChunkRange LargeChunks(std::int64_t id);
/// Whether the file has the pieces of a value of this size, each with its number and size, and no others.
bool HasAllPieces(Database& database, std::int64_t id, std::uint64_t size);

} // namespace zebstore
