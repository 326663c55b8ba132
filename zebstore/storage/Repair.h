// Repairing and compacting a store's file.
#pragma once

#include "zebstore/storage/StoreFile.h"

#include <cstdint>
#include <functional>
#include <string>

namespace zebstore
{

/// Told of a long step as it goes on, on the thread that called. It must not throw and not use the store.
struct WorkReport
{
    /// One line (UTF-8, no full stop) for each thing that was wrong and what was done about it.
    std::function<void(const std::string& finding)> found;
    /// `done` of `whole` steps; 0 of 0 where it is not known.
    std::function<void(std::uint64_t done, std::uint64_t whole)> progress;
};

/// Copies a store's file as it is, committed changes of other connections included.
/// @throws Error MAPI_E_COLLISION when `to` exists
void CopyStore(const std::string& from, const std::string& to, const WorkReport& report);

/// Makes again what follows from the rows (counters, columns, indexes), removes what belongs to nothing, takes
/// properties off that cannot be read, and makes checksums match what is there. One transaction: all or nothing.
/// @throws Error MAPI_E_CORRUPT_STORE when pages of the database are damaged or something is still wrong afterwards
void RepairStore(StoreFile& store, const WorkReport& report);

/// Writes the file without the room that deleted content left. Nobody else may have the store open for writing.
/// @throws Error MAPI_E_BUSY, MAPI_E_NOT_ENOUGH_DISK (it needs up to twice the file's size for a while)
void CompactStore(StoreFile& store, const WorkReport& report);

} // namespace zebstore
