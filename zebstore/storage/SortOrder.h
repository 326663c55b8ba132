// The order of a table's rows.
#pragma once

#include "zebstore/storage/PropertySet.h"

#include <vector>

namespace zebstore
{

/// A copy of an SSortOrderSet without categories. Rows that are equal by all keys keep their natural order. A
/// missing value comes first (last when descending); text goes by its SortKey.
class SortOrder
{
public:
    struct Key
    {
        ULONG tag;
        bool descending;
    };
    static constexpr ULONG MostKeys = 64;

    /// Instances of a multi-valued property are ordered by their single values.
    /// @throws Error MAPI_E_TOO_COMPLEX for categories, types without an order,
    ///   more keys than MostKeys
    explicit SortOrder(const SSortOrderSet& source);

    const std::vector<Key>& Keys() const { return m_keys; }
    bool IsEmpty() const { return m_keys.empty(); }
    /// Bytes whose order is the order of the rows.
    std::string BytesOf(const ValueSource& values) const;

private:
    std::vector<Key> m_keys;
};

} // namespace zebstore
