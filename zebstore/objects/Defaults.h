// Properties that every message and folder has, whether or not somebody wrote them.
#pragma once

#include "zebstore/storage/ComputedProperties.h"

#include <string>
#include <string_view>

namespace zebstore
{

// What synchronizing clients know an object and its changes by.
constexpr ULONG PrSourceKey = PROP_TAG(PT_BINARY, 0x65E0);
constexpr ULONG PrParentSourceKey = PROP_TAG(PT_BINARY, 0x65E1);
constexpr ULONG PrChangeKey = PROP_TAG(PT_BINARY, 0x65E2);
constexpr ULONG PrPredecessorChangeList = PROP_TAG(PT_BINARY, 0x65E3);

/// True for a property of messages that AddMessageDefault knows.
bool IsMessageDefault(ULONG tag);

/// Adds to `out` what a message has as the property with the identifier of `tag`, which nobody wrote.
/// @return false: nothing
bool AddMessageDefault(const MAPIUID& store, ULONG tag, const MessageOrigin& origin, PropertySet& out);

/// Adds to `out` what a folder has as the property with the identifier of `tag`, which nobody wrote: its times
/// and the keys of its last change. @return false: nothing
bool AddFolderDefault(const MAPIUID& store, ULONG tag, const FolderTimesReader& times, PropertySet& out);

/// The key of a change that somebody wrote holds until the next one, and then is one of its predecessors. Where nobody
/// wrote a key or a list none is added: they follow from the number of the last change.
/// @param isNext true when the key in `properties` is of the change before
void CompleteChangeKeys(const MAPIUID& store, bool isNext, PropertySet& properties);

/// A source or change key: 16 bytes of the store, 8 of the number, the first the highest.
std::string SyncKey(const MAPIUID& store, std::int64_t number);

/// A change key that follows `before` (which may be empty, or of another store).
std::string NextChangeKey(const MAPIUID& store, const std::string& before);

/// A predecessor list with `key` in place of the older change of the same store: for each store, in the order of their
/// identifiers, the length of the key in a byte and the key.
std::string WithChange(std::string_view list, std::string_view key);

} // namespace zebstore
