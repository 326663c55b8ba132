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
    std::int64_t id = 0; ///< 0: not told
};

/// Reads single properties out of a blob without decoding the rest. The bytes must live as long as this.
class PropertyBlob : public ValueSource
{
public:
    /// @param store where large values are read from
    /// @throws Error MAPI_E_CORRUPT_DATA when the bytes do not match their checksum or their index
    PropertyBlob(std::string_view bytes, StoreFile& store, const BlobOwner& owner = {});

    EncodedValue Find(ULONG tag) const override;
    size_t Count() const { return m_count; }
    /// The property at a place of the index.
    EncodedValue At(size_t index) const;
    PropertySet Decode() const;
    /// The bytes without the checksum, which is the file's and not the object's: what a size tells of.
    static size_t SizeOf(std::string_view bytes);
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
    StoreFile* m_store;
    size_t m_count = 0;
    mutable std::vector<std::shared_ptr<StoredLargeValue>> m_large;
};

/// The bytes that WriteBlob stores for a value: of its encoding, or, when the value goes to chunks, of what a stream
/// shows of it. Does not depend on the form in which the value was given.
std::uint64_t StoredSize(const PropertySet::Item& item);

/// References to large values of a blob that is to be replaced or deleted; none when it is damaged, for a wrong
/// reference would name another object's value.
std::vector<LargeReference> ReferencesIn(std::string_view blob);

/// Writes a set as a blob, its large values into chunks, in the caller's transaction.
/// @param kept references of the object's blob so far: large values among them stay where they are, and are taken
///   off the list; what is left on it is no longer used.
/// @param hasLarge set to true when the blob holds a reference.
std::string WriteBlob(StoreFile& store, const PropertySet& properties, std::vector<LargeReference>& kept,
                      bool& hasLarge);

} // namespace zebstore
