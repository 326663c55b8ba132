// Repairing and compacting a store's file.
#pragma once

#include "zebstore/storage/StoreFile.h"
#include "zebstore/storage/WorkReport.h"

#include <string>

namespace zebstore
{

/// Copies a store's file as it is, committed changes of other connections included.
/// @throws Error MAPI_E_COLLISION when `to` exists
void CopyStore(const std::string& from, const std::string& to, const WorkReport& report);

/// Rebuilds what follows from the rows (counters, columns, indexes), removes what belongs to nothing and properties that
/// cannot be read, and makes checksums match what is there. One transaction: all or nothing.
/// @throws Error MAPI_E_CORRUPT_STORE when pages of the database are damaged or something is still wrong afterwards
void RepairStore(StoreFile& store, const WorkReport& report);

/// Writes the file without the space that deleted content left. No other process may have it open for writing.
/// @throws Error MAPI_E_BUSY, MAPI_E_NOT_ENOUGH_DISK (it needs up to twice the file's size for a while)
void CompactStore(StoreFile& store, const WorkReport& report);

} // namespace zebstore
