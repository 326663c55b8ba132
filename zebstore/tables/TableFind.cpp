// TableView's search for a row.
#include "zebstore/base/Error.h"
#include "zebstore/tables/TableView.h"

#include <algorithm>

namespace zebstore
{

namespace
{

// Up to this distance from the beginning, rows are read one by one.
constexpr size_t FewRows = 1024;

} // namespace

std::optional<size_t> TableView::FindAhead(const Restriction& restriction, size_t begin, size_t end, bool backward)
{
    std::optional<size_t> found;
    const RowKey* keys = m_keys.All().data();
    const size_t probe = std::min(end - begin, FewRows);
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
    // Far away: one pass over the source is cheaper than reading row by row.
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
    bool rowGone = false;
    const size_t from = IndexOf(origin, rowGone);
    Load();
    const std::optional<size_t> found =
        backward ? FindAhead(restriction, 0, from, true) : FindAhead(restriction, from, m_keys.Count(), false);
    if (!found)
    {
        throw Error(MAPI_E_NOT_FOUND, "no row matches the restriction");
    }
    m_position = *found;
    return rowGone ? MAPI_W_POSITION_CHANGED : S_OK;
}

} // namespace zebstore
