#include "zebstore/storage/RecentChanges.h"

#include "zebstore/storage/Encoding.h"

#include <algorithm>

namespace zebstore
{

namespace
{

constexpr size_t ChangeSize = sizeof(std::uint64_t);
constexpr int KindBits = 2;
constexpr std::uint64_t KindMask = (1 << KindBits) - 1;
constexpr std::uint64_t AllMessages = 0;

std::uint64_t EntryAt(std::string_view recent, size_t index)
{
    return ReadNumber<std::uint64_t>(recent, index * ChangeSize);
}

void Append(std::string& recent, std::uint64_t number, RowChange::Kind kind)
{
    AppendNumber(recent, number << KindBits | static_cast<std::uint64_t>(kind));
}

} // namespace

void AddRecent(std::string& recent, MessageId message, RowChange::Kind kind)
{
    if (recent.size() >= MostRecent * ChangeSize)
    {
        recent.erase(0, recent.size() - (MostRecent - 1) * ChangeSize);
    }
    Append(recent, static_cast<std::uint64_t>(ContentsKey::NumberOf(message)), kind);
}

std::string RecentReplaced()
{
    std::string recent;
    Append(recent, AllMessages, RowChange::Kind::Modified);
    return recent;
}

RowChanges LastRecent(std::string_view recent, ContentsKey contents, std::uint64_t count)
{
    const size_t entries = recent.size() / ChangeSize;
    const size_t listed = static_cast<size_t>(std::min<std::uint64_t>(count, entries));
    RowChanges changes;
    for (size_t i = entries - listed; i < entries; ++i)
    {
        const std::uint64_t entry = EntryAt(recent, i);
        if (entry >> KindBits == AllMessages)
        {
            return {RowChanges::Extent::Replaced, {}};
        }
        const auto number = static_cast<std::int64_t>(entry >> KindBits);
        changes.rows.push_back({static_cast<RowChange::Kind>(entry & KindMask), contents.Message(number), {}});
    }
    if (listed < count)
    {
        return {};
    }
    changes.extent = RowChanges::Extent::Listed;
    return changes;
}

bool IsRecentSound(std::string_view recent)
{
    const size_t entries = recent.size() / ChangeSize;
    if (entries * ChangeSize != recent.size() || entries > MostRecent)
    {
        return false;
    }
    for (size_t i = 0; i < entries; ++i)
    {
        if ((EntryAt(recent, i) & KindMask) > static_cast<std::uint64_t>(RowChange::Kind::Modified))
        {
            return false;
        }
    }
    return true;
}

} // namespace zebstore
