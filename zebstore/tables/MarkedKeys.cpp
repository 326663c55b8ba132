#include "zebstore/tables/MarkedKeys.h"

#include <algorithm>

namespace zebstore
{

void MarkedKeys::Assign(std::vector<RowKey> keys)
{
    m_keys = std::move(keys);
    m_keys.shrink_to_fit();
}

void MarkedKeys::Settle(Mark& mark) const
{
    mark.atEnd = mark.index >= m_keys.size();
    mark.key = mark.atEnd ? 0 : m_keys[mark.index];
}

Mark MarkedKeys::MarkAt(size_t index) const
{
    Mark mark;
    mark.index = index;
    Settle(mark);
    return mark;
}

void MarkedKeys::Relocate(const std::vector<Mark*>& marks, const std::vector<RowKey>& before) const
{
    std::vector<RowKey> sorted;
    for (Mark* mark : marks)
    {
        Relocate(*mark, before, sorted);
    }
}

void MarkedKeys::Relocate(Mark& mark, const std::vector<RowKey>& before, std::vector<RowKey>& sorted) const
{
    const auto indexOf = [&](RowKey key)
    { return static_cast<size_t>(std::find(m_keys.begin(), m_keys.end(), key) - m_keys.begin()); };
    if (!mark.atEnd)
    {
        mark.index = indexOf(mark.key);
        if (mark.index < m_keys.size())
        {
            return;
        }
        mark.rowGone = true;
    }
    if (sorted.empty())
    {
        sorted = m_keys;
        std::sort(sorted.begin(), sorted.end());
    }
    const auto isLeft = [&](RowKey key) { return std::binary_search(sorted.begin(), sorted.end(), key); };
    const auto place = mark.atEnd ? before.end() : std::find(before.begin(), before.end(), mark.key);
    const auto next = std::find_if(place, before.end(), isLeft);
    // Without a next row, after all rows that were there before, wherever they are now.
    mark.index = next != before.end() ? indexOf(*next) : IndexAfter(before);
    Settle(mark);
}

size_t MarkedKeys::IndexAfter(std::vector<RowKey> before) const
{
    std::sort(before.begin(), before.end());
    const auto last = std::find_if(m_keys.rbegin(), m_keys.rend(),
                                   [&](RowKey key) { return std::binary_search(before.begin(), before.end(), key); });
    return static_cast<size_t>(m_keys.rend() - last);
}

void MarkedKeys::FindIndexes(std::vector<Place*>& places, bool areSorted) const
{
    if (places.empty())
    {
        return;
    }
    if (areSorted)
    {
        for (Place* place : places)
        {
            const auto found = std::lower_bound(m_keys.begin(), m_keys.end(), place->key);
            if (found != m_keys.end() && *found == place->key)
            {
                place->index = static_cast<size_t>(found - m_keys.begin());
            }
        }
        return;
    }
    std::sort(places.begin(), places.end(),
              [](const Place* left, const Place* right) { return left->key < right->key; });
    const RowKey least = places.front()->key;
    const RowKey most = places.back()->key;
    size_t left = places.size();
    for (size_t at = 0; at < m_keys.size() && left > 0; ++at)
    {
        const RowKey key = m_keys[at];
        if (key < least || key > most)
        {
            continue;
        }
        const auto found = std::lower_bound(places.begin(), places.end(), key,
                                            [](const Place* place, RowKey wanted) { return place->key < wanted; });
        if ((*found)->key == key)
        {
            (*found)->index = at;
            --left;
        }
    }
}

MarkedKeys::Edit::Edit(MarkedKeys& keys, const std::vector<Mark*>& marks)
    : m_keys(keys)
{
    for (Mark* mark : marks)
    {
        m_followers.push_back({mark});
    }
}

void MarkedKeys::Edit::Remove(std::vector<std::pair<size_t, bool>> indexes)
{
    if (indexes.empty())
    {
        return;
    }
    std::sort(indexes.begin(), indexes.end());
    for (Follower& follower : m_followers)
    {
        Mark& mark = *follower.mark;
        auto place = std::lower_bound(indexes.begin(), indexes.end(), std::pair<size_t, bool>(mark.index, false));
        // From a row that is gone to the next one that is left, which may come back at another place.
        for (; !mark.atEnd && place != indexes.end() && *place == std::pair<size_t, bool>(mark.index, false); ++place)
        {
            mark.rowGone = true;
            ++mark.index;
        }
        if (!mark.atEnd && place != indexes.end() && place->first == mark.index)
        {
            follower.isLifted = true;
            mark.key = m_keys[mark.index];
        }
        mark.index -= static_cast<size_t>(place - indexes.begin());
    }
    std::vector<RowKey>& keys = m_keys.m_keys;
    const auto at = [&](size_t index) { return keys.begin() + static_cast<std::ptrdiff_t>(index); };
    auto end = at(indexes.front().first);
    for (size_t i = 0; i < indexes.size(); ++i)
    {
        end = std::move(at(indexes[i].first + 1), i + 1 < indexes.size() ? at(indexes[i + 1].first) : keys.end(), end);
    }
    keys.erase(end, keys.end());
}

void MarkedKeys::Edit::Insert(size_t index, RowKey key)
{
    std::vector<RowKey>& keys = m_keys.m_keys;
    for (Follower& follower : m_followers)
    {
        Mark& mark = *follower.mark;
        if (follower.isLifted && mark.key == key)
        {
            mark.index = index;
            follower.isLifted = false;
        }
        // A mark at the end stays before a row that is appended.
        else if (mark.index > index || (mark.index == index && index < keys.size()))
        {
            ++mark.index;
        }
    }
    if (keys.size() == keys.capacity())
    {
        keys.reserve(keys.size() + keys.size() / 64 + 16);
    }
    keys.insert(keys.begin() + static_cast<std::ptrdiff_t>(index), key);
}

void MarkedKeys::Edit::Finish()
{
    for (const Follower& follower : m_followers)
    {
        m_keys.Settle(*follower.mark);
    }
}

} // namespace zebstore
