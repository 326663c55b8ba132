// contents.recent: what the last changes of a place of messages were about.
#pragma once

#include "zebstore/storage/StoreParts.h"

#include <string>
#include <string_view>
#include <vector>

namespace zebstore
{

/// One entry: eight bytes, little-endian, the message's number shifted left by two bits over the event. The last entry
/// belongs to the place's change number, the one before it to the change number below, and so on.
struct RecentChange
{
    /// Messages are numbered from 1: 0 stands for all of the place at once.
    std::int64_t number = 0;
    RowEvent event = RowEvent::Modified;

    static RecentChange Everything() { return {}; }
    bool IsEverything() const { return number == 0; }
};

/// So many of the last changes are listed. Who looks on more seldom reads the place anew.
constexpr size_t MostRecent = 128;

/// Appends an entry and drops the oldest beyond MostRecent.
void AddRecent(std::string& recent, const RecentChange& change);

/// The last `count` entries, oldest first; fewer when there are fewer.
std::vector<RecentChange> LastRecent(std::string_view recent, size_t count);

/// True when it is made of whole entries, not too many, each with an event that there is.
bool IsRecentSound(std::string_view recent);

} // namespace zebstore
