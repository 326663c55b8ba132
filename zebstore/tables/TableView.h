// The rows of one open table in their order, with a cursor and bookmarks.
#pragma once

#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/SortOrder.h"

#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace zebstore
{

/// Hears what a view takes over from its source. Whoever has a copy of the view's rows and follows what it hears, in
/// this order, has a copy of them again.
class ViewListener
{
public:
    virtual ~ViewListener() = default;
    /// @param prior the row that now stands before it; nothing when it is the first
    virtual void RowAdded(RowKey key, std::optional<RowKey> prior, const ValueSource& values) = 0;
    /// Its values or its place changed.
    virtual void RowModified(RowKey key, std::optional<RowKey> prior, const ValueSource& values) = 0;
    virtual void RowDeleted(RowKey key) = 0;
    /// Any row may have changed: they must be read anew.
    /// @param replaced the content went as a whole; else there was too much to tell one by one
    virtual void AllChanged(bool replaced) = 0;
};

/// A view is an ordered array of row keys, 8 bytes a row. In natural order without restriction the array is made only
/// when a place far from the beginning is asked for: opening, counting and reading the first rows need none.
///
/// Each call first takes over what has changed in the source since the last one: the cursor and the bookmarks stay at
/// their rows; where a row is gone they stand before the next one that is left. Where the source lists what happened,
/// only the rows listed are looked at. Threads: one at a time.
class TableView
{
public:
    explicit TableView(std::shared_ptr<RowSource> rows);

    RowSource& Rows() { return *m_rows; }
    ULONG Count();
    /// The cursor: the row that is read next.
    ULONG Position();

    /// The cursor as a whole, to set it back to where it was before a Take.
    struct Cursor
    {
        size_t position = 0;
        std::optional<RowKey> before;
    };
    Cursor GetCursor();
    void SetCursor(const Cursor& cursor);

    /// Null takes the restriction away. The cursor goes to the beginning; bookmarks become invalid.
    void Restrict(std::unique_ptr<Restriction> restriction);
    void Sort(std::unique_ptr<SortOrder> order);
    /// The source has other rows now, under other keys; as after Restrict.
    void Renew();
    const SortOrder* Order() const { return m_order.get(); }

    /// The keys of the next `count` rows, with a negative count of those before the cursor (in table order).
    /// @param advance moves the cursor behind them (before them)
    std::vector<RowKey> Take(LONG count, bool advance);

    /// Moves the cursor by `count` rows from `origin`, not past either end.
    /// @param moved by how many rows it stands from the origin
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

    /// From now on `listener` (not owned; null: nobody) hears what changes, first of all at the next call; a view whose
    /// order or restriction is set again is made again at once.
    void SetListener(ViewListener* listener);
    /// Takes over what has changed in the source, as every other call does too.
    void Sync();

    /// Bytes that the array of keys takes.
    size_t MemoryUsed() const { return m_keys.capacity() * sizeof(RowKey); }

private:
    // A place between rows: before the row `key` at `index`, or at the end.
    struct Mark
    {
        size_t index = 0;
        bool atEnd = false;
        RowKey key = 0;
        bool rowGone = false;
        bool valid = true;
    };

    // A mark while rows are taken out and put in.
    struct Follower
    {
        Mark* mark;
        bool lifted; // its row was taken out and comes back
    };
    // A touched row: whether it belongs into the view now, by what it sorts, and where it stood (NoIndex: nowhere).
    struct Touch
    {
        RowKey key = 0;
        bool is = false;
        std::string order;
        size_t index = 0;
    };

    bool IsNatural() const { return !m_restriction && !m_order; }
    void Reset();
    void Load();
    void StartFollowing();
    void TakeOver();
    void Rebuild();
    void Apply(const std::vector<RowChange>& rows);
    void StepOver(const std::vector<RowChange>& rows);
    std::vector<Touch> Look(const std::vector<RowChange>& rows);
    void FindIndexes(const std::vector<RowChange>& rows, std::vector<Touch>& touches) const;
    bool StaysInPlace(const Touch& touch) const;
    void TakeOut(const std::vector<Touch>& touches, std::vector<Follower>& followers);
    void PutIn(const Touch& touch, std::vector<Follower>& followers);
    size_t PlaceOf(const Touch& touch);
    void Settle(Mark& mark) const;
    void Tell(RowKey key, std::optional<RowKey> prior, bool added);
    void TellDifference(const std::vector<RowKey>& before, const std::vector<RowChange>& rows);
    Mark MarkAt(size_t index);
    void PlaceCursor(size_t index);
    size_t IndexOf(BOOKMARK bookmark, bool& rowGone);
    void Relocate(Mark& mark, const std::vector<RowKey>& before, std::vector<RowKey>& sorted) const;
    std::optional<size_t> FindAhead(const Restriction& restriction, size_t begin, size_t end, bool backward);

    std::shared_ptr<RowSource> m_rows;
    std::unique_ptr<Restriction> m_restriction;
    std::unique_ptr<SortOrder> m_order;
    std::uint64_t m_generation = 0;
    bool m_loaded = false;
    std::vector<RowKey> m_keys;
    ViewListener* m_listener = nullptr;
    size_t m_position = 0;
    // Not loaded: the key of the row before the cursor.
    std::optional<RowKey> m_before;
    std::map<BOOKMARK, Mark> m_bookmarks;
    BOOKMARK m_nextBookmark = BOOKMARK_END + 1;
};

} // namespace zebstore
