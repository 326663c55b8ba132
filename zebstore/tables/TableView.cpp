#include "zebstore/tables/TableView.h"

#include "zebstore/base/Error.h"

#include <algorithm>

namespace zebstore
{

namespace
{

// So far from the beginning, or from the cursor, rows are stepped over rather than all keys loaded.
constexpr size_t ShortWay = 1024;

} // namespace

TableView::TableView(std::shared_ptr<RowSource> rows)
    : m_rows(std::move(rows))
    , m_generation(m_rows->Generation())
{
}

void TableView::Reset()
{
    m_loaded = false;
    std::vector<RowKey>().swap(m_keys);
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
    const std::shared_ptr<void> moment = m_rows->Snapshot();
    m_generation = m_rows->Generation();
    m_keys = m_rows->Keys(m_restriction.get(), m_order.get());
    if (!m_restriction || m_keys.empty())
    {
        m_rows->RequireAllRows(m_keys.size());
    }
    m_keys.shrink_to_fit();
    m_loaded = true;
    if (m_before)
    {
        const auto found = std::find(m_keys.begin(), m_keys.end(), *m_before);
        if (found != m_keys.end())
        {
            m_position = static_cast<size_t>(found - m_keys.begin()) + 1;
        }
    }
    m_position = std::min(m_position, m_keys.size());
}

ULONG TableView::Count()
{
    Sync();
    if (!m_loaded && IsNatural())
    {
        return m_rows->Count();
    }
    Load();
    return static_cast<ULONG>(m_keys.size());
}

ULONG TableView::Position()
{
    Sync();
    return static_cast<ULONG>(m_position);
}

TableView::Cursor TableView::GetCursor()
{
    Sync();
    return {m_position, m_before};
}

void TableView::SetCursor(const Cursor& cursor)
{
    m_position = m_loaded ? std::min(cursor.position, m_keys.size()) : cursor.position;
    m_before = cursor.before;
}

TableView::Mark TableView::MarkAt(size_t index)
{
    Mark mark;
    mark.index = index;
    if (!m_loaded && index == m_position)
    {
        const std::vector<RowKey> next = m_rows->KeysAfter(m_before, 1);
        mark.atEnd = next.empty();
        mark.key = next.empty() ? 0 : next[0];
        return mark;
    }
    Load();
    mark.atEnd = index >= m_keys.size();
    mark.key = mark.atEnd ? 0 : m_keys[index];
    return mark;
}

void TableView::PlaceCursor(size_t index)
{
    if (m_loaded || !IsNatural())
    {
        Load();
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
    Sync();
    if (!IsNatural() || count < 0)
    {
        Load();
    }
    if (!m_loaded)
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
        end += std::min<size_t>(static_cast<size_t>(count), m_keys.size() - m_position);
    }
    else
    {
        begin -= std::min<size_t>(static_cast<size_t>(-static_cast<std::int64_t>(count)), m_position);
    }
    if (advance)
    {
        m_position = count >= 0 ? end : begin;
    }
    return {m_keys.begin() + static_cast<std::ptrdiff_t>(begin), m_keys.begin() + static_cast<std::ptrdiff_t>(end)};
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
        throw Error(MAPI_E_INVALID_BOOKMARK, "There is no such bookmark, or the table was sorted or restricted since.");
    }
    rowGone = found->second.rowGone;
    return found->second.index;
}

HRESULT TableView::Seek(BOOKMARK origin, LONG count, LONG& moved)
{
    Sync();
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
    Require(denominator != 0, "A part of a table needs a denominator.");
    Sync();
    const std::uint64_t count = Count();
    PlaceCursor(static_cast<size_t>(count * std::min(numerator, denominator) / denominator));
}

BOOKMARK TableView::CreateBookmark()
{
    Sync();
    const Mark mark = MarkAt(m_position);
    // Bookmarks follow their rows by the array; a table with some keeps it.
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
        throw Error(MAPI_E_INVALID_BOOKMARK, "There is no such bookmark.");
    }
}

std::optional<size_t> TableView::FindAhead(const Restriction& restriction, size_t begin, size_t end, bool backward)
{
    std::optional<size_t> found;
    const RowKey* keys = m_keys.data();
    const size_t probe = std::min(end - begin, ShortWay);
    const size_t first = backward ? end - probe : begin;
    m_rows->Read(keys + first, probe, [&](size_t index, const ValueSource& values)
    {
        if ((!found || backward) && restriction.Matches(values))
        {
            found = first + index;
        }
    });
    if (found || probe == end - begin)
    {
        return found;
    }
    // A long way: one pass over the source is cheaper than row by row.
    std::vector<RowKey> fitting = m_rows->Keys(&restriction, nullptr);
    std::sort(fitting.begin(), fitting.end());
    const auto fits = [&](size_t index) { return std::binary_search(fitting.begin(), fitting.end(), keys[index]); };
    if (backward)
    {
        for (size_t index = end; index-- > begin;)
        {
            if (fits(index))
            {
                return index;
            }
        }
        return std::nullopt;
    }
    for (size_t index = begin; index < end; ++index)
    {
        if (fits(index))
        {
            return index;
        }
    }
    return std::nullopt;
}

HRESULT TableView::Find(const Restriction& restriction, BOOKMARK origin, bool backward)
{
    Sync();
    bool rowGone = false;
    const size_t from = IndexOf(origin, rowGone);
    Load();
    const std::optional<size_t> found =
        backward ? FindAhead(restriction, 0, from, true) : FindAhead(restriction, from, m_keys.size(), false);
    if (!found)
    {
        throw Error(MAPI_E_NOT_FOUND, "No row fits.");
    }
    m_position = *found;
    return rowGone ? MAPI_W_POSITION_CHANGED : S_OK;
}

} // namespace zebstore
