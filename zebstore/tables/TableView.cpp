#include "zebstore/tables/TableView.h"

#include "zebstore/base/Error.h"
#include "zebstore/tables/RowDifference.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zebstore
{

namespace
{

// Up to this distance from the beginning or the cursor, rows are skipped one by one instead of loading all keys.
constexpr size_t ShortWay = 1024;
// So many first rows of an order are asked for at least.
constexpr size_t FewFirst = 16;
// A generation that no source has: the next Sync reads all keys again.
constexpr std::uint64_t NoGeneration = std::numeric_limits<std::uint64_t>::max();

} // namespace

TableView::TableView(std::shared_ptr<RowSource> rows)
    : m_rows(std::move(rows))
    , m_generation(m_rows->Generation())
{
}

void TableView::Reset()
{
    m_loaded = false;
    m_hasFirst = false;
    m_keys.Take();
    m_position = 0;
    m_before.reset();
    for (auto& each : m_bookmarks)
    {
        each.second.valid = false;
    }
}

void TableView::Restrict(std::unique_ptr<Restriction> restriction)
{
    m_restriction = std::move(restriction);
    Reset();
    StartFollowing();
}

void TableView::Sort(std::unique_ptr<SortOrder> order)
{
    if (order && order->IsEmpty())
    {
        order.reset();
    }
    m_order = std::move(order);
    Reset();
    StartFollowing();
}

void TableView::Renew()
{
    Reset();
    StartFollowing();
}

void TableView::Load()
{
    if (m_loaded)
    {
        return;
    }
    if (m_hasFirst)
    {
        Rebuild();
        return;
    }
    const std::shared_ptr<void> snapshot = m_rows->Snapshot();
    m_generation = m_rows->Generation();
    std::vector<RowKey> keys = m_rows->Keys(m_restriction.get(), m_order.get());
    if (!m_restriction || keys.empty())
    {
        m_rows->RequireAllRows(keys.size());
    }
    if (m_before)
    {
        // Also where that row is gone: the keys rise.
        m_position = static_cast<size_t>(std::upper_bound(keys.begin(), keys.end(), *m_before) - keys.begin());
    }
    m_position = std::min(m_position, keys.size());
    m_keys.Assign(std::move(keys));
    m_loaded = true;
}

// Whether the array begins with the first `count` rows, or has all. Bookmarks and followers need all.
bool TableView::HoldFirst(size_t count)
{
    if (m_loaded || (m_hasFirst && count <= m_keys.Count()))
    {
        return true;
    }
    if (m_restriction || m_isFollowed || count > ShortWay)
    {
        return false;
    }
    const std::shared_ptr<void> snapshot = m_rows->Snapshot();
    const std::uint64_t generation = m_rows->Generation();
    if (m_hasFirst && generation != m_generation)
    {
        return false;
    }
    const size_t wanted = std::max({count, FewFirst, 2 * m_keys.Count()});
    std::optional<std::vector<RowKey>> keys =
        m_order ? m_rows->FirstKeys(*m_order, wanted) : m_rows->KeysAfter(std::nullopt, wanted);
    if (!keys)
    {
        return false;
    }
    const bool areAll = keys->size() < wanted;
    if (areAll)
    {
        m_rows->RequireAllRows(keys->size());
    }
    m_count = m_rows->Count();
    m_generation = generation;
    m_loaded = areAll;
    m_hasFirst = !areAll;
    m_keys.Assign(std::move(*keys));
    return true;
}

ULONG TableView::Count()
{
    if (!m_loaded && IsNatural())
    {
        return m_rows->Count();
    }
    if (HoldFirst(0) && m_hasFirst)
    {
        return m_count;
    }
    Load();
    return static_cast<ULONG>(m_keys.Count());
}

void TableView::SetCursor(const Cursor& cursor)
{
    m_position = m_loaded ? std::min(cursor.position, m_keys.Count()) : cursor.position;
    m_before = cursor.before;
}

Mark TableView::MarkAt(size_t index)
{
    if (m_hasFirst && index < m_keys.Count())
    {
        return m_keys.MarkAt(index);
    }
    if (!m_loaded && IsNatural() && index == m_position)
    {
        Mark mark;
        mark.index = index;
        const std::vector<RowKey> next = m_rows->KeysAfter(m_before, 1);
        mark.atEnd = next.empty();
        mark.key = next.empty() ? 0 : next[0];
        return mark;
    }
    Load();
    return m_keys.MarkAt(index);
}

void TableView::PlaceCursor(size_t index)
{
    if (m_loaded || !SkipsRows())
    {
        if (!HoldFirst(index + 1))
        {
            Load();
        }
        m_position = index;
        return;
    }
    const size_t from = index >= m_position ? m_position : 0;
    if (index - from > ShortWay)
    {
        Load();
        m_position = index;
        return;
    }
    std::optional<RowKey> before;
    if (from > 0)
    {
        before = m_before;
    }
    if (index > from)
    {
        const std::vector<RowKey> keys = m_rows->KeysAfter(before, index - from);
        if (!keys.empty())
        {
            before = keys.back();
        }
        index = from + keys.size();
    }
    m_before = before;
    m_position = index;
}

std::vector<RowKey> TableView::Take(LONG count, bool advance)
{
    if (count < 0 || (!SkipsRows() && !HoldFirst(m_position + static_cast<size_t>(count) + 1)))
    {
        Load();
    }
    if (!m_loaded && !m_hasFirst)
    {
        const size_t wanted = static_cast<size_t>(count);
        std::vector<RowKey> keys = m_rows->KeysAfter(m_before, wanted);
        if (keys.size() < wanted)
        {
            m_rows->RequireAllRows(m_position + keys.size());
        }
        if (advance && !keys.empty())
        {
            m_before = keys.back();
            m_position += keys.size();
        }
        return keys;
    }
    size_t begin = m_position;
    size_t end = m_position;
    if (count >= 0)
    {
        end += std::min<size_t>(static_cast<size_t>(count), m_keys.Count() - m_position);
    }
    else
    {
        begin -= std::min<size_t>(static_cast<size_t>(-static_cast<std::int64_t>(count)), m_position);
    }
    if (advance)
    {
        m_position = count >= 0 ? end : begin;
    }
    const auto first = m_keys.All().begin();
    return {first + static_cast<std::ptrdiff_t>(begin), first + static_cast<std::ptrdiff_t>(end)};
}

size_t TableView::IndexOf(BOOKMARK bookmark, bool& rowGone)
{
    rowGone = false;
    switch (bookmark)
    {
    case BOOKMARK_BEGINNING:
        return 0;
    case BOOKMARK_CURRENT:
        return m_position;
    case BOOKMARK_END:
        return Count();
    default:
        break;
    }
    const auto found = m_bookmarks.find(bookmark);
    if (found == m_bookmarks.end() || !found->second.valid)
    {
        throw Error(MAPI_E_INVALID_BOOKMARK,
                    "the bookmark does not exist, or the table was sorted or restricted since");
    }
    rowGone = found->second.rowGone;
    return found->second.index;
}

HRESULT TableView::Seek(BOOKMARK origin, LONG count, LONG& moved)
{
    bool rowGone = false;
    const std::int64_t from = static_cast<std::int64_t>(IndexOf(origin, rowGone));
    const std::int64_t last = count > 0 || origin == BOOKMARK_END ? static_cast<std::int64_t>(Count()) : from;
    const std::int64_t target = std::max<std::int64_t>(0, std::min(from + count, std::max(last, from)));
    PlaceCursor(static_cast<size_t>(target));
    moved = static_cast<LONG>(target - from);
    return rowGone ? MAPI_W_POSITION_CHANGED : S_OK;
}

void TableView::SeekApprox(ULONG numerator, ULONG denominator)
{
    Require(denominator != 0, "the denominator is 0");
    const std::uint64_t count = Count();
    PlaceCursor(static_cast<size_t>(count * std::min(numerator, denominator) / denominator));
}

BOOKMARK TableView::CreateBookmark()
{
    const Mark mark = MarkAt(m_position);
    // Bookmarks need the array to follow their rows.
    Load();
    const BOOKMARK bookmark = m_nextBookmark++;
    m_bookmarks[bookmark] = mark;
    return bookmark;
}

void TableView::FreeBookmark(BOOKMARK bookmark)
{
    if (bookmark == BOOKMARK_BEGINNING || bookmark == BOOKMARK_CURRENT || bookmark == BOOKMARK_END)
    {
        return;
    }
    if (m_bookmarks.erase(bookmark) == 0)
    {
        throw Error(MAPI_E_INVALID_BOOKMARK, "the bookmark does not exist");
    }
}

void TableView::Follow(bool follow)
{
    if (!follow || m_isFollowed)
    {
        m_isFollowed = follow;
        return;
    }
    Sync();
    m_isFollowed = true;
    try
    {
        StartFollowing();
    }
    catch (...)
    {
        m_isFollowed = false;
        throw;
    }
}

void TableView::StartFollowing()
{
    if (!m_isFollowed)
    {
        return;
    }
    const std::shared_ptr<void> snapshot = m_rows->Snapshot();
    Sync();
    m_rows->Follow();
    if (!IsNatural() || !m_rows->KeysRise())
    {
        Load();
    }
    m_generation = m_rows->Generation();
}

RowChanges TableView::Sync()
{
    if (!IsBehind())
    {
        return RowChanges::None();
    }
    const std::shared_ptr<void> snapshot = m_rows->Snapshot();
    const std::uint64_t generation = m_rows->Generation();
    if (!m_loaded && !m_hasFirst && !IsNatural())
    {
        // No keys are held yet.
        m_generation = generation;
        return RowChanges::None();
    }
    try
    {
        RowChanges changes = TakeOver();
        m_generation = generation;
        return m_isFollowed ? changes : RowChanges::None();
    }
    catch (...)
    {
        m_generation = NoGeneration;
        throw;
    }
}

RowChanges TableView::TakeOver()
{
    RowChanges changes;
    if (m_rows->KeysRise() || m_isFollowed)
    {
        changes = m_rows->ChangesSince(m_generation);
    }
    const bool listed = changes.extent == RowChanges::Extent::Listed;
    if (listed && m_rows->KeysRise() && !m_hasFirst)
    {
        return m_loaded ? Apply(changes.rows) : StepOver(changes.rows);
    }
    const std::vector<RowKey> before = listed ? m_keys.All() : std::vector<RowKey>();
    if (m_loaded || m_hasFirst)
    {
        Rebuild();
    }
    else if (m_position > 0)
    {
        Load(); // skipped rows may be gone, so the index of the cursor must be counted again
    }
    return listed && m_isFollowed ? DifferenceOf(before, m_keys.All(), changes.rows) : changes;
}

std::vector<Mark*> TableView::Marks(Mark& cursor)
{
    std::vector<Mark*> marks{&cursor};
    for (auto& each : m_bookmarks)
    {
        if (each.second.valid)
        {
            marks.push_back(&each.second);
        }
    }
    return marks;
}

void TableView::Rebuild()
{
    Mark cursor = m_keys.MarkAt(m_position);
    std::vector<RowKey> before = m_keys.Take();
    const bool hadFirst = std::exchange(m_hasFirst, false);
    m_loaded = false;
    m_before.reset();
    try
    {
        Load();
    }
    catch (...)
    {
        m_keys.Assign(std::move(before));
        m_hasFirst = hadFirst;
        m_loaded = !hadFirst;
        throw;
    }
    m_keys.Relocate(Marks(cursor), before);
    m_position = cursor.index;
}

RowChanges TableView::Apply(const std::vector<RowChange>& changes)
{
    const std::vector<Place> places = PlacesOf(changes);
    Mark cursor = MarkAt(m_position);
    MarkedKeys::Edit edit(m_keys, Marks(cursor));
    std::vector<std::pair<size_t, bool>> removed;
    for (const Place& place : places)
    {
        if (place.index != MarkedKeys::NoIndex && !StaysInPlace(place))
        {
            removed.emplace_back(place.index, place.isShown);
        }
    }
    edit.Remove(std::move(removed));
    m_position = std::min(m_position, m_keys.Count());
    RowChanges applied = RowChanges::None();
    for (const Place& place : places)
    {
        const bool wasShown = place.index != MarkedKeys::NoIndex;
        if (place.isShown)
        {
            const size_t index = IndexFor(place);
            if (!StaysInPlace(place))
            {
                edit.Insert(index, place.key);
            }
            applied.rows.push_back({wasShown ? RowChange::Kind::Modified : RowChange::Kind::Added, place.key,
                                    index > 0 ? std::optional<RowKey>(m_keys[index - 1]) : std::nullopt});
        }
        else if (wasShown)
        {
            applied.rows.push_back({RowChange::Kind::Deleted, place.key, {}});
        }
    }
    edit.Finish();
    m_position = cursor.index;
    return applied;
}

std::vector<TableView::Place> TableView::PlacesOf(const std::vector<RowChange>& changes)
{
    std::vector<Place> places;
    for (const RowChange& change : changes)
    {
        Place place;
        place.key = change.key;
        place.isShown = m_rows->Exists(change.key);
        if (place.isShown && !IsNatural())
        {
            m_rows->Read(&change.key, 1, [&](size_t, const ValueSource& values)
            {
                place.isShown = !m_restriction || m_restriction->Matches(values);
                if (place.isShown && m_order)
                {
                    place.order = m_order->BytesOf(values);
                }
            });
        }
        places.push_back(std::move(place));
    }
    std::vector<Place*> before;
    for (size_t i = 0; i < changes.size(); ++i)
    {
        if (changes[i].WasThere())
        {
            before.push_back(&places[i]);
        }
    }
    m_keys.FindIndexes(before, !m_order);
    return places;
}

bool TableView::StaysInPlace(const Place& place) const
{
    return !m_order && place.isShown && place.index != MarkedKeys::NoIndex;
}

size_t TableView::IndexFor(const Place& place)
{
    const std::vector<RowKey>& keys = m_keys.All();
    if (!m_order)
    {
        return static_cast<size_t>(std::lower_bound(keys.begin(), keys.end(), place.key) - keys.begin());
    }
    size_t begin = 0;
    size_t end = keys.size();
    while (begin < end)
    {
        const size_t middle = begin + (end - begin) / 2;
        bool before = false;
        m_rows->Read(&keys[middle], 1, [&](size_t, const ValueSource& values)
        {
            const int order = m_order->BytesOf(values).compare(place.order);
            before = order < 0 || (order == 0 && keys[middle] < place.key);
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

RowChanges TableView::StepOver(const std::vector<RowChange>& changes)
{
    if (!m_isFollowed && m_position == 0)
    {
        return RowChanges::None();
    }
    RowChanges applied = RowChanges::None();
    std::int64_t moved = 0;
    for (const RowChange& change : changes)
    {
        const bool isThere = m_rows->Exists(change.key);
        if (m_before && change.key <= *m_before)
        {
            moved += static_cast<int>(isThere) - static_cast<int>(change.WasThere());
        }
        if (isThere && m_isFollowed)
        {
            applied.rows.push_back({change.WasThere() ? RowChange::Kind::Modified : RowChange::Kind::Added, change.key,
                                    m_rows->KeyBefore(change.key)});
        }
        else if (!isThere && change.WasThere())
        {
            applied.rows.push_back({RowChange::Kind::Deleted, change.key, {}});
        }
    }
    m_position = static_cast<size_t>(static_cast<std::int64_t>(m_position) + moved);
    return applied;
}

} // namespace zebstore
