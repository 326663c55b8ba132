// One change of a row, from the change log of a folder to the notification of a table.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

namespace zebstore
{

/// Names a row of its source for as long as the row exists.
using RowKey = std::int64_t;

struct RowChange
{
    /// The numbers are those of the file's change log.
    enum class Kind
    {
        Added = 0,
        Deleted = 1,
        Modified = 2, ///< its values or its position
    };
    Kind kind = Kind::Modified;
    RowKey key = 0;
    /// The row before it, in a table's order; nothing when it is the first, or before a view has taken the change over.
    std::optional<RowKey> prior;

    bool WasThere() const { return kind != Kind::Added; }
};

/// What happened to the rows of a source or a view.
struct RowChanges
{
    enum class Extent
    {
        Listed,   ///< `rows` are all changes
        Unknown,  ///< too much or too long ago to be listed
        Replaced, ///< the content was replaced as a whole
    };
    Extent extent = Extent::Unknown;
    std::vector<RowChange> rows;

    static RowChanges None() { return {Extent::Listed, {}}; }
    bool IsNone() const { return extent == Extent::Listed && rows.empty(); }
};

} // namespace zebstore
