// Filtering and sorting in memory, for conditions that SQL cannot express.
#pragma once

#include "zebstore/storage/Restriction.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/SortOrder.h"

#include <algorithm>
#include <utility>

namespace zebstore
{

/// Gathers rows one by one in their natural order and hands out the keys of those that fit, sorted.
class RowSelection
{
public:
    RowSelection(const Restriction* restriction, const SortOrder* order)
        : m_restriction(restriction)
        , m_order(order != nullptr && !order->IsEmpty() ? order : nullptr)
    {
    }

    /// @param fits the row is known to fit; the restriction is not asked
    void Add(RowKey key, const ValueSource& values, bool fits = false)
    {
        if (!fits && m_restriction != nullptr && !m_restriction->Matches(values))
        {
            return;
        }
        if (m_order != nullptr)
        {
            m_sorted.emplace_back(m_order->BytesOf(values), key);
        }
        else
        {
            m_keys.push_back(key);
        }
    }

    std::vector<RowKey> Take()
    {
        if (m_order == nullptr)
        {
            return std::move(m_keys);
        }
        // Stable: rows that are equal by all keys keep their natural order.
        std::stable_sort(m_sorted.begin(), m_sorted.end(),
                         [](const auto& left, const auto& right) { return left.first < right.first; });
        m_keys.reserve(m_sorted.size());
        for (const auto& each : m_sorted)
        {
            m_keys.push_back(each.second);
        }
        return std::move(m_keys);
    }

private:
    const Restriction* m_restriction;
    const SortOrder* m_order;
    std::vector<RowKey> m_keys;
    std::vector<std::pair<std::string, RowKey>> m_sorted;
};

} // namespace zebstore
