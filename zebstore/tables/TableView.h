// The rows of one open table in their order, with a cursor and bookmarks.
#pragma once

#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/SortOrder.h"
#include "zebstore/tables/MarkedKeys.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace zebstore
{

/// A view is an ordered array of row keys. In natural order without restriction the array is made only when a row far
/// from the beginning is asked for: opening, counting and reading the first rows need none. In an order of which the source
/// knows the first rows, only their keys are held until a row further on is asked for.
///
/// A view shows the rows of its last Sync. The cursor and the bookmarks stay at their rows; where a row is gone they move
/// to the next one that is left. Where the source lists what happened, only the listed rows are read. Threads: one at a
/// time.
class TableView
{
public:
    explicit TableView(std::shared_ptr<RowSource> rows);

    RowSource& Rows() { return *m_rows; }

    /// Whether Sync would find changes.
    bool IsBehind() { return m_rows->Generation() != m_generation; }
    /// Takes over what has changed in the source since the last call.
    /// @return what changed in the view, while it is followed: whoever has a copy of its rows and applies the changes in
    ///   their order has a copy again. None while it is not followed.
    RowChanges Sync();
    /// Starts or ends following: from now on Sync returns what it applied. A view that is sorted or restricted while it
    /// is followed reads its keys again at once.
    void Follow(bool follow);

    ULONG Count();
    /// The cursor: the row that is read next.
    ULONG Position() const { return static_cast<ULONG>(m_position); }

    /// The cursor, to set it back to its position before a Take.
    struct Cursor
    {
        size_t position = 0;
        std::optional<RowKey> before;
    };
    Cursor GetCursor() const { return {m_position, m_before}; }
    void SetCursor(const Cursor& cursor);

    /// Null removes the restriction. The cursor goes to the beginning; bookmarks become invalid.
    void Restrict(std::unique_ptr<Restriction> restriction);
    void Sort(std::unique_ptr<SortOrder> order);
    /// The source has other rows now, under other keys; as after Restrict.
    void Renew();
    const SortOrder* Order() const { return m_order.get(); }

    /// The keys of the next `count` rows, with a negative count of those before the cursor (in table order).
    /// @param advance moves the cursor after them (before them)
    std::vector<RowKey> Take(LONG count, bool advance);

    /// Moves the cursor by `count` rows from `origin`, not past either end.
    /// @param moved by how many rows from the origin it was moved
    /// @return MAPI_W_POSITION_CHANGED when the bookmark's row is gone
    /// @throws Error MAPI_E_INVALID_BOOKMARK
    HRESULT Seek(BOOKMARK origin, LONG count, LONG& moved);
    /// To the row at this part of the table.
    void SeekApprox(ULONG numerator, ULONG denominator);

    /// Moves the cursor to the first row from `origin` on that fits, or to the last one before it.
    /// @throws Error MAPI_E_NOT_FOUND (the cursor stays), MAPI_E_INVALID_BOOKMARK
    HRESULT Find(const Restriction& restriction, BOOKMARK origin, bool backward);

    BOOKMARK CreateBookmark();
    void FreeBookmark(BOOKMARK bookmark);

    /// Bytes that the array of keys takes.
    size_t MemoryUsed() const { return m_keys.MemoryUsed(); }

private:
    using Place = MarkedKeys::Place;

    bool IsNatural() const { return !m_restriction && !m_order; }
    /// Whether rows can be skipped without holding their keys: the place of a row that is gone is known by its key.
    bool SkipsRows() const { return IsNatural() && m_rows->KeysRise(); }
    void Reset();
    void Load();
    bool HoldFirst(size_t count);
    void StartFollowing();
    RowChanges TakeOver();
    void Rebuild();
    RowChanges Apply(const std::vector<RowChange>& changes);
    RowChanges StepOver(const std::vector<RowChange>& changes);
    std::vector<Place> PlacesOf(const std::vector<RowChange>& changes);
    bool StaysInPlace(const Place& place) const;
    size_t IndexFor(const Place& place);
    std::vector<Mark*> Marks(Mark& cursor);
    Mark MarkAt(size_t index);
    void PlaceCursor(size_t index);
    size_t IndexOf(BOOKMARK bookmark, bool& rowGone);
    std::optional<size_t> FindAhead(const Restriction& restriction, size_t begin, size_t end, bool backward);

    std::shared_ptr<RowSource> m_rows;
    std::unique_ptr<Restriction> m_restriction;
    std::unique_ptr<SortOrder> m_order;
    std::uint64_t m_generation = 0;
    bool m_loaded = false;
    MarkedKeys m_keys;
    bool m_hasFirst = false; // not loaded, but the keys are those of the first rows, and one more than was read
    ULONG m_count = 0;       // then: of all rows
    bool m_isFollowed = false;
    size_t m_position = 0;
    // Not loaded: the key of the row before the cursor.
    std::optional<RowKey> m_before;
    std::map<BOOKMARK, Mark> m_bookmarks;
    BOOKMARK m_nextBookmark = BOOKMARK_END + 1;
};

} // namespace zebstore
