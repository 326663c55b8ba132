#include "zebstore/storage/MemoryRows.h"

#include "zebstore/storage/RowParts.h"
#include "zebstore/storage/RowSelection.h"

#include <map>
#include <numeric>
#include <set>

namespace zebstore
{

namespace
{

std::vector<ULONG> TagsOfAll(const std::vector<PropertySet>& rows)
{
    std::map<ULONG, ULONG> byId;
    for (const PropertySet& row : rows)
    {
        for (const ULONG tag : row.Tags())
        {
            byId.emplace(PROP_ID(tag), tag);
        }
    }
    std::vector<ULONG> tags;
    for (const auto& each : byId)
    {
        tags.push_back(each.second);
    }
    return tags;
}

std::vector<RowKey> CountedKeys(size_t count)
{
    std::vector<RowKey> keys(count);
    std::iota(keys.begin(), keys.end(), 1);
    return keys;
}

} // namespace

MemoryRows::MemoryRows(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns)
    : m_rows(std::move(rows))
    , m_keys(CountedKeys(m_rows.size()))
    , m_defaultColumns(std::move(defaultColumns))
{
}

void MemoryRows::Replace(std::vector<PropertySet> rows, std::vector<RowKey> keys)
{
    if (keys.empty())
    {
        keys = CountedKeys(rows.size());
    }
    Require(keys.size() == rows.size() && std::set<RowKey>(keys.begin(), keys.end()).size() == keys.size(),
            "Each row needs a key of its own.");
    const std::lock_guard hold(m_lock);
    m_rows.swap(rows);
    m_keys.swap(keys);
    ++m_generation;
}

ULONG MemoryRows::Count()
{
    const std::lock_guard hold(m_lock);
    return static_cast<ULONG>(m_rows.size());
}

std::uint64_t MemoryRows::Generation()
{
    const std::lock_guard hold(m_lock);
    return m_generation;
}

std::vector<RowKey> MemoryRows::Keys(const Restriction* restriction, const SortOrder* order)
{
    const std::lock_guard hold(m_lock);
    RowSelection selection(restriction, order);
    for (size_t i = 0; i < m_rows.size(); ++i)
    {
        selection.Add(m_keys[i], m_rows[i]);
    }
    return selection.Take();
}

std::vector<RowKey> MemoryRows::KeysAfter(std::optional<RowKey> after, size_t count)
{
    const std::lock_guard hold(m_lock);
    auto first = m_keys.begin();
    if (after)
    {
        first = std::find(m_keys.begin(), m_keys.end(), *after);
        if (first != m_keys.end())
        {
            ++first;
        }
    }
    const size_t left = static_cast<size_t>(m_keys.end() - first);
    return {first, first + static_cast<std::ptrdiff_t>(std::min(count, left))};
}

void MemoryRows::Read(const RowKey* keys, size_t count, const Visitor& visit)
{
    const std::lock_guard hold(m_lock);
    const PropertySet none;
    for (size_t i = 0; i < count; ++i)
    {
        const auto found = std::find(m_keys.begin(), m_keys.end(), keys[i]);
        visit(i, found == m_keys.end() ? none : m_rows[static_cast<size_t>(found - m_keys.begin())]);
    }
}

std::vector<ULONG> MemoryRows::DefaultColumns()
{
    const std::lock_guard hold(m_lock);
    return m_defaultColumns.empty() ? TagsOfAll(m_rows) : m_defaultColumns;
}

std::vector<ULONG> MemoryRows::AllColumns()
{
    const std::lock_guard hold(m_lock);
    ColumnList columns(m_defaultColumns);
    for (const ULONG tag : TagsOfAll(m_rows))
    {
        columns.Add(tag);
    }
    return columns.Take();
}

} // namespace zebstore
