// The header of zebstore store files, and files written by an older version.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zeb::tools
{

/// What the header of a store's file says. A write-ahead log next to the file may hold a later one.
struct StoreHeader
{
    uint32_t version = 0; ///< the file's version, see ZEBSTORE_FILE_VERSION
    uint32_t pageSize = 0;
    uint32_t pages = 0, freePages = 0;
};

/// Reads the header of a store's file. @return nothing for another or a missing file
std::optional<StoreHeader> ReadStoreHeader(const std::string& file);

/// Announces on standard error, when that is a terminal, that the store is about to be upgraded: opening such a file
/// for writing takes long, and MAPI has no progress for it. Prints nothing for other files.
/// @param file UTF-8; may be empty or missing
void AnnounceUpgrade(const std::string& file);

} // namespace zeb::tools
