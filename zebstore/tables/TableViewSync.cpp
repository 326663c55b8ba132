// How a view takes over what has changed in its source.
#include "zebstore/tables/TableView.h"

#include <algorithm>
#include <limits>
#include <unordered_set>

namespace zebstore
{

namespace
{

// A generation that no source has: the next Sync makes the view anew.
constexpr std::uint64_t NoGeneration = std::numeric_limits<std::uint64_t>::max();
constexpr size_t NoIndex = std::numeric_limits<size_t>::max();
// More rows than these are not told one by one.
constexpr size_t MostTold = 128;

} // namespace

void TableView::SetListener(ViewListener* listener)
{
    if (listener && !m_listener)
    {
        Sync();
        m_listener = listener;
        try
        {
            StartFollowing();
        }
        catch (...)
        {
            m_listener = nullptr;
            throw;
        }
        return;
    }
    m_listener = listener;
}

void TableView::StartFollowing()
{
    if (!m_listener)
    {
        return;
    }
    const std::shared_ptr<void> moment = m_rows->Snapshot();
    Sync();
    m_rows->Follow();
    if (!IsNatural() || !m_rows->KeysRise())
    {
        Load();
    }
    m_generation = m_rows->Generation();
}

void TableView::Sync()
{
    if (m_rows->Generation() == m_generation)
    {
        return;
    }
    const std::shared_ptr<void> moment = m_rows->Snapshot();
    const std::uint64_t generation = m_rows->Generation();
    if (!m_loaded && !IsNatural())
    {
        // Nothing is held yet.
        m_generation = generation;
        return;
    }
    try
    {
        TakeOver();
    }
    catch (...)
    {
        m_generation = NoGeneration;
        throw;
    }
    m_generation = generation;
}

void TableView::TakeOver()
{
    RowChanges touched;
    if (m_rows->KeysRise() || m_listener)
    {
        touched = m_rows->ChangesSince(m_generation);
    }
    const bool listed = touched.extent == RowChanges::Extent::Listed;
    if (listed && m_rows->KeysRise())
    {
        if (m_loaded)
        {
            Apply(touched.rows);
        }
        else
        {
            StepOver(touched.rows);
        }
        return;
    }
    const std::vector<RowKey> before = listed ? m_keys : std::vector<RowKey>();
    if (m_loaded)
    {
        Rebuild();
    }
    else if (m_position > 0)
    {
        Load(); // what was stepped over may be gone, so the number of the cursor's row must be counted again
    }
    if (!m_listener)
    {
        return;
    }
    if (listed)
    {
        TellDifference(before, touched.rows);
    }
    else
    {
        m_listener->AllChanged(touched.extent == RowChanges::Extent::Replaced);
    }
}

void TableView::Rebuild()
{
    Mark cursor = MarkAt(m_position);
    const std::vector<RowKey> before = std::move(m_keys);
    m_loaded = false;
    m_before.reset();
    try
    {
        Load();
    }
    catch (...)
    {
        m_keys = before;
        m_loaded = true;
        throw;
    }
    std::vector<RowKey> sorted;
    Relocate(cursor, before, sorted);
    m_position = cursor.index;
    for (auto& each : m_bookmarks)
    {
        if (each.second.valid)
        {
            Relocate(each.second, before, sorted);
        }
    }
}

void TableView::Relocate(Mark& mark, const std::vector<RowKey>& before, std::vector<RowKey>& sorted) const
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
    if (next != before.end())
    {
        mark.index = indexOf(*next);
    }
    else
    {
        // Behind the last row before it that is left.
        const auto last = std::find_if(std::make_reverse_iterator(place), before.rend(), isLeft);
        mark.index = last == before.rend() ? 0 : indexOf(*last) + 1;
    }
    Settle(mark);
}

void TableView::Settle(Mark& mark) const
{
    mark.atEnd = mark.index >= m_keys.size();
    mark.key = mark.atEnd ? 0 : m_keys[mark.index];
}

void TableView::Apply(const std::vector<RowChange>& rows)
{
    std::vector<Touch> touches = Look(rows);
    Mark cursor = MarkAt(m_position);
    std::vector<Follower> followers = {{&cursor, false}};
    for (auto& each : m_bookmarks)
    {
        if (each.second.valid)
        {
            followers.push_back({&each.second, false});
        }
    }
    TakeOut(touches, followers);
    m_position = std::min(m_position, m_keys.size());
    for (const Touch& touch : touches)
    {
        if (touch.is)
        {
            PutIn(touch, followers);
        }
        else if (touch.index != NoIndex && m_listener)
        {
            m_listener->RowDeleted(touch.key);
        }
    }
    for (const Follower& follower : followers)
    {
        Settle(*follower.mark);
    }
    m_position = cursor.index;
}

std::vector<TableView::Touch> TableView::Look(const std::vector<RowChange>& rows)
{
    std::vector<Touch> touches;
    for (const RowChange& row : rows)
    {
        Touch touch;
        touch.key = row.key;
        touch.is = m_rows->Exists(row.key);
        if (touch.is && !IsNatural())
        {
            m_rows->Read(&row.key, 1, [&](size_t, const ValueSource& values)
            {
                touch.is = !m_restriction || m_restriction->Matches(values);
                if (touch.is && m_order)
                {
                    touch.order = m_order->BytesOf(values);
                }
            });
        }
        touches.push_back(std::move(touch));
    }
    FindIndexes(rows, touches);
    return touches;
}

void TableView::FindIndexes(const std::vector<RowChange>& rows, std::vector<Touch>& touches) const
{
    std::vector<std::pair<RowKey, size_t>> wanted;
    for (size_t i = 0; i < rows.size(); ++i)
    {
        touches[i].index = NoIndex;
        if (rows[i].WasThere())
        {
            wanted.emplace_back(rows[i].key, i);
        }
    }
    if (wanted.empty())
    {
        return;
    }
    if (!m_order)
    {
        for (const auto& [key, i] : wanted)
        {
            const auto place = std::lower_bound(m_keys.begin(), m_keys.end(), key);
            if (place != m_keys.end() && *place == key)
            {
                touches[i].index = static_cast<size_t>(place - m_keys.begin());
            }
        }
        return;
    }
    std::sort(wanted.begin(), wanted.end());
    const RowKey least = wanted.front().first;
    const RowKey most = wanted.back().first;
    size_t left = wanted.size();
    for (size_t at = 0; at < m_keys.size() && left > 0; ++at)
    {
        const RowKey key = m_keys[at];
        if (key < least || key > most)
        {
            continue;
        }
        const auto found = std::lower_bound(wanted.begin(), wanted.end(), std::pair<RowKey, size_t>(key, 0));
        if (found == wanted.end() || found->first != key)
        {
            continue;
        }
        touches[found->second].index = at;
        --left;
    }
}

bool TableView::StaysInPlace(const Touch& touch) const
{
    return !m_order && touch.is && touch.index != NoIndex;
}

void TableView::TakeOut(const std::vector<Touch>& touches, std::vector<Follower>& followers)
{
    std::vector<std::pair<size_t, bool>> taken; // the index, and whether the row comes back
    for (const Touch& touch : touches)
    {
        if (touch.index != NoIndex && !StaysInPlace(touch))
        {
            taken.emplace_back(touch.index, touch.is);
        }
    }
    if (taken.empty())
    {
        return;
    }
    std::sort(taken.begin(), taken.end());
    for (Follower& follower : followers)
    {
        Mark& mark = *follower.mark;
        const auto place = std::lower_bound(taken.begin(), taken.end(), std::pair<size_t, bool>(mark.index, false));
        if (!mark.atEnd && place != taken.end() && place->first == mark.index)
        {
            follower.lifted = place->second;
            mark.rowGone = mark.rowGone || !place->second;
        }
        mark.index -= static_cast<size_t>(place - taken.begin());
    }
    const auto at = [&](size_t index) { return m_keys.begin() + static_cast<std::ptrdiff_t>(index); };
    auto end = at(taken.front().first);
    for (size_t i = 0; i < taken.size(); ++i)
    {
        end = std::move(at(taken[i].first + 1), i + 1 < taken.size() ? at(taken[i + 1].first) : m_keys.end(), end);
    }
    m_keys.erase(end, m_keys.end());
}

void TableView::PutIn(const Touch& touch, std::vector<Follower>& followers)
{
    const size_t index = PlaceOf(touch);
    if (!StaysInPlace(touch))
    {
        for (Follower& follower : followers)
        {
            Mark& mark = *follower.mark;
            if (follower.lifted && mark.key == touch.key)
            {
                mark.index = index;
                follower.lifted = false;
            }
            // A mark at the end stays before what comes there.
            else if (mark.index > index || (mark.index == index && index < m_keys.size()))
            {
                ++mark.index;
            }
        }
        if (m_keys.size() == m_keys.capacity())
        {
            m_keys.reserve(m_keys.size() + m_keys.size() / 64 + 16);
        }
        m_keys.insert(m_keys.begin() + static_cast<std::ptrdiff_t>(index), touch.key);
    }
    if (m_listener)
    {
        Tell(touch.key, index > 0 ? std::optional<RowKey>(m_keys[index - 1]) : std::nullopt, touch.index == NoIndex);
    }
}

size_t TableView::PlaceOf(const Touch& touch)
{
    if (!m_order)
    {
        return static_cast<size_t>(std::lower_bound(m_keys.begin(), m_keys.end(), touch.key) - m_keys.begin());
    }
    size_t begin = 0;
    size_t end = m_keys.size();
    while (begin < end)
    {
        const size_t middle = begin + (end - begin) / 2;
        bool before = false;
        m_rows->Read(&m_keys[middle], 1, [&](size_t, const ValueSource& values)
        {
            const int order = m_order->BytesOf(values).compare(touch.order);
            before = order < 0 || (order == 0 && m_keys[middle] < touch.key);
        });
        if (before)
        {
            begin = middle + 1;
        }
        else
        {
            end = middle;
        }
    }
    return begin;
}

void TableView::StepOver(const std::vector<RowChange>& rows)
{
    if (!m_listener && m_position == 0)
    {
        return;
    }
    std::vector<bool> is;
    std::int64_t moved = 0;
    for (const RowChange& row : rows)
    {
        is.push_back(m_rows->Exists(row.key));
        if (m_before && row.key <= *m_before)
        {
            moved += static_cast<int>(is.back()) - static_cast<int>(row.WasThere());
        }
    }
    m_position = static_cast<size_t>(static_cast<std::int64_t>(m_position) + moved);
    if (!m_listener)
    {
        return;
    }
    for (size_t i = 0; i < rows.size(); ++i)
    {
        if (is[i])
        {
            Tell(rows[i].key, m_rows->KeyBefore(rows[i].key), !rows[i].WasThere());
        }
        else if (rows[i].WasThere())
        {
            m_listener->RowDeleted(rows[i].key);
        }
    }
}

void TableView::Tell(RowKey key, std::optional<RowKey> prior, bool added)
{
    m_rows->Read(&key, 1, [&](size_t, const ValueSource& values)
    {
        if (added)
        {
            m_listener->RowAdded(key, prior, values);
        }
        else
        {
            m_listener->RowModified(key, prior, values);
        }
    });
}

// `copy` is what a listener's copy holds of the rows that are at their right places among each other. Rows that were
// touched are put into it one by one; others are moved only when they still stand in the way.
void TableView::TellDifference(const std::vector<RowKey>& before, const std::vector<RowChange>& rows)
{
    const std::unordered_set<RowKey> now(m_keys.begin(), m_keys.end());
    const std::unordered_set<RowKey> old(before.begin(), before.end());
    std::unordered_set<RowKey> touched;
    for (const RowChange& row : rows)
    {
        touched.insert(row.key);
    }
    std::vector<RowKey> copy;
    size_t told = 0;
    for (const RowKey key : before)
    {
        if (now.count(key) == 0)
        {
            m_listener->RowDeleted(key);
            ++told;
        }
        else if (touched.count(key) == 0)
        {
            copy.push_back(key);
        }
    }
    for (size_t i = 0; i < m_keys.size(); ++i)
    {
        const RowKey key = m_keys[i];
        if (i < copy.size() && copy[i] == key)
        {
            continue;
        }
        if (++told > MostTold)
        {
            return m_listener->AllChanged(false);
        }
        const auto elsewhere = std::find(copy.begin(), copy.end(), key);
        if (elsewhere != copy.end())
        {
            copy.erase(elsewhere);
        }
        copy.insert(copy.begin() + static_cast<std::ptrdiff_t>(i), key);
        Tell(key, i > 0 ? std::optional<RowKey>(m_keys[i - 1]) : std::nullopt, old.count(key) == 0);
    }
}

} // namespace zebstore
