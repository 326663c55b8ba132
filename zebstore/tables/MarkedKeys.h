// The ordered keys of a view, and the marks that follow their rows.
#pragma once

#include "zebstore/storage/RowChange.h"

#include <cstddef>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace zebstore
{

/// A position between rows: before the row `key` at `index`, or at the end.
struct Mark
{
    size_t index = 0;
    bool atEnd = false;
    RowKey key = 0;
    bool rowGone = false;
    bool valid = true;
};

/// An array of row keys, 8 bytes a row. Marks (not owned, given to each change) stay at their rows; where a row is
/// gone they move to the next one that is left. Threads: one at a time.
class MarkedKeys
{
public:
    static constexpr size_t NoIndex = std::numeric_limits<size_t>::max();

    /// One changed row: whether the view has it now, by what it sorts, and its index before the change.
    struct Place
    {
        RowKey key = 0;
        bool isShown = false;
        std::string order;
        size_t index = NoIndex; ///< NoIndex: the view did not have it
    };

    const std::vector<RowKey>& All() const { return m_keys; }
    size_t Count() const { return m_keys.size(); }
    RowKey operator[](size_t index) const { return m_keys[index]; }
    size_t MemoryUsed() const { return m_keys.capacity() * sizeof(RowKey); }

    void Assign(std::vector<RowKey> keys);
    /// Empties the array. @return what it held
    std::vector<RowKey> Take() { return std::exchange(m_keys, {}); }
    Mark MarkAt(size_t index) const;

    /// Moves marks that were made while the keys were `before` to their rows.
    void Relocate(const std::vector<Mark*>& marks, const std::vector<RowKey>& before) const;

    /// Fills in the indexes of those places that may be in the array. @param areSorted the keys are in ascending order
    void FindIndexes(std::vector<Place*>& places, bool areSorted) const;

    /// Takes rows out and puts rows in, with the marks that follow. Use: make it, Remove, Insert for each row that is
    /// shown, Finish.
    class Edit
    {
    public:
        Edit(MarkedKeys& keys, const std::vector<Mark*>& marks);
        /// @param indexes of rows, each with whether it comes back by Insert
        void Remove(std::vector<std::pair<size_t, bool>> indexes);
        void Insert(size_t index, RowKey key);
        void Finish();

    private:
        struct Follower
        {
            Mark* mark;
            bool isLifted = false; // its row was removed and comes back
        };
        MarkedKeys& m_keys;
        std::vector<Follower> m_followers;
    };

private:
    void Settle(Mark& mark) const;
    void Relocate(Mark& mark, const std::vector<RowKey>& before, std::vector<RowKey>& sorted) const;
    size_t IndexAfter(std::vector<RowKey> before) const;

    std::vector<RowKey> m_keys;
};

} // namespace zebstore
