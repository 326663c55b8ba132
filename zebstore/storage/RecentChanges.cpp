#include "zebstore/storage/RecentChanges.h"

#include "zebstore/storage/Encoding.h"

#include <algorithm>

namespace zebstore
{

namespace
{

constexpr size_t EntrySize = sizeof(std::uint64_t);

} // namespace

void AddRecent(std::string& recent, const RecentChange& change)
{
    if (recent.size() >= MostRecent * EntrySize)
    {
        recent.erase(0, recent.size() - (MostRecent - 1) * EntrySize);
    }
    AppendNumber(recent, static_cast<std::uint64_t>(change.number) << 2 | static_cast<std::uint64_t>(change.event));
}

std::vector<RecentChange> LastRecent(std::string_view recent, size_t count)
{
    const size_t first = recent.size() / EntrySize - std::min(count, recent.size() / EntrySize);
    std::vector<RecentChange> changes;
    for (size_t at = first * EntrySize; at + EntrySize <= recent.size(); at += EntrySize)
    {
        const auto entry = ReadNumber<std::uint64_t>(recent.substr(at));
        changes.push_back({static_cast<std::int64_t>(entry >> 2), static_cast<RowEvent>(entry & 3)});
    }
    return changes;
}

bool IsRecentSound(std::string_view recent)
{
    const std::vector<RecentChange> changes = LastRecent(recent, MostRecent);
    return changes.size() * EntrySize == recent.size() &&
           std::all_of(changes.begin(), changes.end(),
                       [](const RecentChange& change) { return change.event <= RowEvent::Modified; });
}

} // namespace zebstore
