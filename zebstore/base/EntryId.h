// Entry identifiers of the store, its folders and its messages.
#pragma once

#include "zebstore/zebstore.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace zebstore
{

/// What a folder or message identifier names.
struct ItemId
{
    ULONG objectType = 0; ///< MAPI_FOLDER or MAPI_MESSAGE
    std::int64_t key = 0; ///< the row's key in the store file
};

/// Sizes in bytes, the 20 of flags and provider UID included. All identifiers are long-term: their flags are
/// zero. Folder: type word 2, the key in 8 bytes (little-endian), 8 check bytes. Message: type word 3, the
/// same 16 bytes, then 16 zeros. The check bytes come from the store's UID, the kind and the key.
constexpr size_t FolderEntryIdSize = 20 + 18;
constexpr size_t MessageEntryIdSize = 20 + 34;

using FolderEntryId = std::array<BYTE, FolderEntryIdSize>;
using MessageEntryId = std::array<BYTE, MessageEntryIdSize>;

/// @param store the UID of the store file, which is the provider UID of its identifiers.
FolderEntryId MakeFolderEntryId(const MAPIUID& store, std::int64_t key);
MessageEntryId MakeMessageEntryId(const MAPIUID& store, std::int64_t key);

/// Reads an identifier of `store`'s folders and messages.
/// @throws Error MAPI_E_INVALID_ENTRYID when it is cut, of another store, or none at all.
ItemId ParseItemId(const MAPIUID& store, const void* bytes, size_t size);

/// The store's identifier: a wrapped store identifier (MUIDSTOREWRAP, version and flag bytes, the provider's
/// file name, zeros up to a multiple of four) around zero flags, the store's UID and the file's path in UTF-8
/// with its zero.
std::vector<BYTE> MakeStoreEntryId(const MAPIUID& store, const std::string& path);

struct StoreId
{
    MAPIUID uid{};
    std::string path;
};

/// @throws Error MAPI_E_INVALID_ENTRYID when it is not such an identifier.
StoreId ParseStoreEntryId(const void* bytes, size_t size);

/// True when the bytes begin as a wrapped store identifier does; they may still be cut.
bool LooksLikeStoreEntryId(const void* bytes, size_t size);

} // namespace zebstore
