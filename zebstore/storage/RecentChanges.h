// The change log of a folder's contents: the column contents.recent.
#pragma once

#include "zebstore/storage/RowChange.h"
#include "zebstore/storage/StoreIds.h"

#include <string>
#include <string_view>

namespace zebstore
{

// One entry: eight bytes, little-endian, the message's number shifted left by two bits over RowChange::Kind. The last
// entry belongs to the contents' change number, the one before it to the change number below, and so on. Messages are
// numbered from 1: the number 0 means that all messages were replaced.

/// Entries that the log holds at most. A reader that lags further reads the whole contents again.
constexpr size_t MostRecent = 128;

/// Appends an entry and drops the oldest beyond MostRecent.
void AddRecent(std::string& recent, MessageId message, RowChange::Kind kind);
/// The log of contents whose messages were all replaced.
std::string RecentReplaced();

/// The last `count` changes, oldest first; Unknown when fewer are listed, Replaced when one of them replaced all.
RowChanges LastRecent(std::string_view recent, ContentsKey contents, std::uint64_t count);

/// True when it consists of whole entries, not too many, each with a known kind.
bool IsRecentSound(std::string_view recent);

} // namespace zebstore
