// What the sources of rows share.
#pragma once

#include "zebstore/storage/Database.h"
#include "zebstore/storage/RowSource.h"

#include <algorithm>
#include <deque>

namespace zebstore
{

/// The identifiers of these tags, in order.
inline std::vector<ULONG> SortedIds(const std::vector<ULONG>& tags)
{
    std::vector<ULONG> ids;
    for (const ULONG tag : tags)
    {
        ids.push_back(PROP_ID(tag));
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

/// The columns of a table, in the order in which they came; no two more of one identifier.
class ColumnList
{
public:
    explicit ColumnList(std::vector<ULONG> columns)
        : m_columns(std::move(columns))
        , m_ids(SortedIds(m_columns))
    {
    }

    /// Does nothing when there is a column of this identifier.
    void Add(ULONG tag)
    {
        const auto place = std::lower_bound(m_ids.begin(), m_ids.end(), PROP_ID(tag));
        if (place != m_ids.end() && *place == PROP_ID(tag))
        {
            return;
        }
        m_ids.insert(place, PROP_ID(tag));
        m_columns.push_back(tag);
    }

    std::vector<ULONG> Take() { return std::move(m_columns); }

private:
    std::vector<ULONG> m_columns;
    std::vector<ULONG> m_ids;
};

/// The computed properties of one row while it is looked at.
class ComputedValues
{
public:
    /// @param compute adds the property to the set that it is given, or returns false when it is not computed
    /// @return nothing when it is not computed; else what there is, good as long as this object
    template <class Compute>
    std::optional<EncodedValue> Find(ULONG tag, const Compute& compute)
    {
        PropertySet& computed = m_computed.emplace_back();
        if (compute(computed))
        {
            return computed.Find(tag);
        }
        m_computed.pop_back();
        return std::nullopt;
    }

private:
    std::deque<PropertySet> m_computed; // a deque: what was handed out stays in place
};

/// Reads rows by a query for the row of one key.
/// @param valuesOf makes the values of the key's row, to which the query was stepped
template <class ValuesOf>
void ReadByKey(Query& query, const RowKey* keys, size_t count, const RowSource::Visitor& visit,
               const ValuesOf& valuesOf)
{
    const PropertySet none;
    for (size_t i = 0; i < count; ++i)
    {
        if (query.Bind(1, keys[i]).Step())
        {
            visit(i, valuesOf(keys[i]));
        }
        else
        {
            visit(i, none);
        }
        query.Reset();
    }
}

} // namespace zebstore
