// The numbers by which a store file is known: identifier, schema versions, bits of columns.
#pragma once

#include <cstdint>

namespace zebstore
{

/// "ZEBS", in the file's header.
constexpr std::int32_t ApplicationId = 0x5A454253;
constexpr std::int32_t SchemaVersion = 6;
/// The version that brought the address book.
constexpr std::int32_t AddressBookVersion = 3;
/// The version that brought checksums of property blobs and of the pieces of large values.
constexpr std::int32_t ChecksumVersion = 4;
/// The version that brought the times of folders.
constexpr std::int32_t FolderTimesVersion = 4;
/// The version that had an index of messages by date, and the bit of message.parts for those that were not in it.
constexpr std::int32_t DateIndexVersion = 5;
constexpr std::int64_t DateIndexBit = 16;
/// The version that brought runs of dates in its place.
constexpr std::int32_t DateRunsVersion = 6;

/// The tables that number their rows, and never give a number twice: the greatest number given to a row is in
/// sqlite_sequence.
constexpr std::int64_t LastFolder = (std::int64_t{1} << 30) - 1;
constexpr std::int64_t LastLarge = (std::int64_t{1} << 38) - 1;
constexpr std::int64_t LastAddress = (std::int64_t{1} << 62) - 1;
struct NumberedTable
{
    const char* name;
    std::int64_t last; ///< the greatest number that a row may have
};
constexpr NumberedTable NumberedFolders = {"folder", LastFolder};
constexpr NumberedTable NumberedAddresses = {"address", LastAddress};
constexpr NumberedTable NumberedTables[] = {NumberedFolders, {"large", LastLarge}, NumberedAddresses};

/// Bits of message.parts: which rows of other tables belong to a message, so that deleting one without them touches
/// nothing else.
enum MessageParts : std::int64_t
{
    HasLargeValues = 1,
    HasRecipients = 2,
    HasAttachments = 4,
    /// The bits for rows of other tables.
    AllParts = HasLargeValues | HasRecipients | HasAttachments,
    /// A sort key of the row is cut: a condition of SQL on it is checked again on the whole text.
    HasCutKeys = 8,
};

} // namespace zebstore
