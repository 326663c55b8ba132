// The properties of one object as one blob of the file.
//
//   1 byte    version (2)
//   1 byte    0
//   2 bytes   count of properties
//   8 bytes   for each property, in the order of identifiers:
//               16-bit identifier
//               16-bit type; 0x8000 set: a large value
//               32-bit end of its bytes, counted from the end of this index
//   ...       the bytes of each property: encoded values (Encoding.h), or references to large values (LargeStorage.h)
//   8 bytes   checksum of all bytes before it
//
// Version 1, of files before schema version 4, has no checksum.
#pragma once

#include "zebstore/storage/LargeStorage.h"
#include "zebstore/storage/PropertySet.h"

#include <memory>
#include <vector>

namespace zebstore
{

/// Whose properties a blob holds, for the text of an error.
struct BlobOwner
{
    const char* what = "an object";
    std::int64_t id = 0; ///< 0: none
};

/// What is compared when a blob is opened.
enum class BlobCheck
{
    Checksum, ///< the index with the length of the bytes, and all bytes with their checksum
    Index     ///< the index alone, where the checksum was compared before
};

/// Reads single properties out of a blob without decoding the rest. The bytes must live as long as this.
class PropertyBlob : public ValueSource
{
public:
    /// @param store where large values are read from
    /// @throws Error MAPI_E_CORRUPT_DATA when the bytes do not match their checksum or their index
    PropertyBlob(std::string_view bytes, StoreConnection& store, const BlobOwner& owner = {},
                 BlobCheck check = BlobCheck::Checksum);

    EncodedValue Find(ULONG tag) const override;
    size_t Count() const { return m_count; }
    /// The property at a place of the index.
    EncodedValue At(size_t index) const;
    PropertySet Decode() const;
    /// What the blob and its large values add to the size of a message: all bytes but the checksum.
    static std::uint64_t SizeOf(std::string_view bytes);
    /// True when the index fits the bytes; the checksum is not looked at.
    static bool IsSound(std::string_view bytes);
    /// True when the bytes match their checksum; always where a blob has none.
    static bool IsAsWritten(std::string_view bytes);
    /// The same properties with a checksum that matches; the bytes as they are when the index does not fit.
    static std::string Sealed(std::string_view bytes);

private:
    ULONG RawTag(size_t index) const;
    std::string_view RawBytes(size_t index) const;
    EncodedValue Make(size_t index) const;

    std::string_view m_bytes;
    StoreConnection* m_store;
    size_t m_count = 0;
    mutable std::vector<std::shared_ptr<StoredLargeValue>> m_large;
};

/// References to large values of a blob that is to be replaced or deleted; none when it is damaged: a wrong reference
/// would name another object's value.
std::vector<LargeReference> ReferencesIn(std::string_view blob);

/// Encodes one set as a blob, its large values into chunks, in the caller's transaction.
class BlobWriter
{
public:
    /// @param kept references of the object's blob so far: large values among them stay where they are, and are taken
    ///   off the list; what is left on it is no longer used. Must outlive the writer.
    BlobWriter(StoreConnection& store, const PropertySet& properties, std::vector<LargeReference>& kept);

    /// True when the blob holds a reference.
    bool HasLarge() const { return m_hasLarge; }
    /// Bytes of all values: of the encodings, and of what a stream shows of those in chunks. Does not depend on the form
    /// in which a value was given.
    std::uint64_t ValueBytes() const { return m_valueBytes; }
    /// Replaces the value of a PT_LONG property that the set has.
    void ReplaceLong(ULONG tag, LONG value);
    /// The blob with its checksum; the writer is then empty.
    std::string Take();

private:
    void Add(const PropertySet::Item& item);
    std::string AddLarge(const PropertySet::Item& item);

    StoreConnection& m_store;
    std::vector<LargeReference>& m_kept;
    std::string m_index;
    std::string m_values;
    std::string m_buffer; // for the encoding of a small value that was given as a large one
    std::uint64_t m_valueBytes = 0;
    bool m_hasLarge = false;
};

/// The blob of a BlobWriter.
std::string WriteBlob(StoreConnection& store, const PropertySet& properties, std::vector<LargeReference>& kept);
/// The blob of an object that is new.
std::string WriteBlob(StoreConnection& store, const PropertySet& properties);

} // namespace zebstore
