// Default properties that every message and folder has even if no client wrote them, among them the keys by which
// synchronizing clients identify an object and its changes.
#pragma once

#include "zebstore/storage/ComputedProperties.h"

#include <string>
#include <string_view>

namespace zebstore
{

/// True for a property of messages that AddMessageDefault knows.
bool IsMessageDefault(ULONG tag);

/// Adds to `out` the default of a message for the property with the identifier of `tag`, which no client wrote.
/// @return false: nothing
bool AddMessageDefault(const MAPIUID& store, ULONG tag, const MessageOrigin& origin, PropertySet& out);

/// Adds to `out` the default of a folder for the property with the identifier of `tag`, which no client wrote: its
/// times and the keys of its last change. @return false: nothing
bool AddFolderDefault(const MAPIUID& store, ULONG tag, const FolderTimesReader& times, PropertySet& out);

/// A change key that a client wrote holds until the next change and then becomes one of its predecessors. Where no
/// client wrote a key or a list, none is added: both are derived from the number of the last change.
/// @param isNext true when the key in `properties` belongs to the previous change
void CompleteChangeKeys(const MAPIUID& store, bool isNext, PropertySet& properties);

/// A source or change key: 16 bytes of the store's key, then the number in 8 bytes, big-endian.
std::string SyncKey(const MAPIUID& store, std::int64_t number);

/// A change key that follows `before` (which may be empty, or of another store).
std::string NextChangeKey(const MAPIUID& store, const std::string& before);

/// A predecessor list with `key` in place of the older change of the same store. Format: for each store, in the order
/// of the identifiers, the length of the key (one byte) and the key.
std::string WithChange(std::string_view list, std::string_view key);

} // namespace zebstore
