// The tables of a store file.
#pragma once

#include "zebstore/storage/Database.h"

namespace zebstore
{

/// "ZEBS", in the file's header.
constexpr std::int32_t ApplicationId = 0x5A454253;
constexpr std::int32_t SchemaVersion = 4;
/// The version that brought the address book.
constexpr std::int32_t AddressBookVersion = 3;
/// The version that brought checksums of property blobs and of the pieces of large values.
constexpr std::int32_t ChecksumVersion = 4;
/// The version that brought the times of folders.
constexpr std::int32_t FolderTimesVersion = 4;

/// Bits of message.parts: what a message has beside its row, so that deleting one without them touches
/// nothing else.
enum MessageParts : std::int64_t
{
    HasLargeValues = 1,
    HasRecipients = 2,
    HasAttachments = 4,
    /// A sort key of the row stands for a longer text: what SQL says of it is checked again.
    HasCutKeys = 8,
};

/// Makes the tables of a new file, in the caller's transaction.
void CreateSchema(Database& database);

/// True for a store of an older version that UpgradeSchema brings to this one.
bool NeedsUpgrade(Database& database);
/// Brings a file of an older version to this one, in place; leaves any other as it is. Gives every row and piece its
/// checksum, and so reads and writes the whole file.
/// @throws Error MAPI_E_CORRUPT_STORE; the file is then as it was
void UpgradeSchema(Database& database);

/// Sees that the file is a store of this version, or of one that can still be read, with the tables that belong there.
/// @return its version: below AddressBookVersion there is no address book
/// @throws Error MAPI_E_CORRUPT_STORE, MAPI_E_VERSION
std::int64_t CheckSchema(Database& database);

} // namespace zebstore
