#include "zebstore/tables/RowDifference.h"

#include <algorithm>
#include <unordered_set>

namespace zebstore
{

namespace
{

// More changes than these are not listed one by one.
constexpr size_t MostListed = 128;

} // namespace

// `copy` holds those rows of a copy that are in their final order. Changed rows are put into it one by one; others are
// moved only when they are out of order.
RowChanges DifferenceOf(const std::vector<RowKey>& before, const std::vector<RowKey>& after,
                        const std::vector<RowChange>& changed)
{
    const std::unordered_set<RowKey> now(after.begin(), after.end());
    const std::unordered_set<RowKey> old(before.begin(), before.end());
    std::unordered_set<RowKey> touched;
    for (const RowChange& change : changed)
    {
        touched.insert(change.key);
    }
    RowChanges difference = RowChanges::None();
    std::vector<RowKey> copy;
    for (const RowKey key : before)
    {
        if (now.count(key) == 0)
        {
            difference.rows.push_back({RowChange::Kind::Deleted, key, {}});
        }
        else if (touched.count(key) == 0)
        {
            copy.push_back(key);
        }
    }
    for (size_t i = 0; i < after.size(); ++i)
    {
        const RowKey key = after[i];
        if (i < copy.size() && copy[i] == key)
        {
            continue;
        }
        if (difference.rows.size() >= MostListed)
        {
            return {};
        }
        const auto elsewhere = std::find(copy.begin(), copy.end(), key);
        if (elsewhere != copy.end())
        {
            copy.erase(elsewhere);
        }
        copy.insert(copy.begin() + static_cast<std::ptrdiff_t>(i), key);
        const RowChange::Kind kind = old.count(key) == 0 ? RowChange::Kind::Added : RowChange::Kind::Modified;
        difference.rows.push_back({kind, key, i > 0 ? std::optional<RowKey>(after[i - 1]) : std::nullopt});
    }
    return difference;
}

} // namespace zebstore
