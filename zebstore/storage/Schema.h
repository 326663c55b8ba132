// The tables of a store file.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/StoreFormat.h"

namespace zebstore
{

/// Creates the tables of a new file, in the caller's transaction.
void CreateSchema(Database& database);

/// True for a store of an older version that UpgradeSchema can upgrade.
bool NeedsUpgrade(Database& database);
/// Upgrades a file of an older version in place; leaves any other as it is. Adds what later versions brought: below
/// ChecksumVersion a checksum to every row and piece, which reads and writes the whole file; an index, which reads it.
/// @throws Error MAPI_E_CORRUPT_STORE; the file is then as it was
void UpgradeSchema(Database& database);

/// Checks that the file is a store of this version, or of one that can still be read, with the tables of that version.
/// @return its version: below AddressBookVersion there is no address book
/// @throws Error MAPI_E_CORRUPT_STORE, MAPI_E_VERSION
std::int64_t CheckSchema(Database& database);

} // namespace zebstore
