// HrQueryAllRows: reads all rows of a table of any provider.
#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"

#include <cstddef>
#include <cstring>
#include <vector>

using zebstore::Buffer;
using zebstore::Check;
using zebstore::Error;
using zebstore::Guarded;
using zebstore::Require;

namespace
{

/// The rows collected so far; frees them unless they are released to the caller.
class GatheredRows
{
public:
    ~GatheredRows()
    {
        for (SRow& row : m_rows)
        {
            zebstore::Free(row.lpProps);
        }
    }

    size_t Count() const { return m_rows.size(); }

    /// Moves the rows out of `part` and frees the empty row set.
    void Take(LPSRowSet part)
    {
        try
        {
            m_rows.insert(m_rows.end(), part->aRow, part->aRow + part->cRows);
        }
        catch (...)
        {
            FreeProws(part);
            throw;
        }
        zebstore::Free(part);
    }

    LPSRowSet HandOver()
    {
        const size_t bytes = offsetof(SRowSet, aRow) + m_rows.size() * sizeof(SRow);
        Buffer<SRowSet> set(zebstore::Allocate(bytes));
        set->cRows = static_cast<ULONG>(m_rows.size());
        if (!m_rows.empty())
        {
            std::memcpy(set->aRow, m_rows.data(), m_rows.size() * sizeof(SRow));
        }
        m_rows.clear();
        return set.Detach();
    }

private:
    std::vector<SRow> m_rows;
};

LPSRowSet QueryAll(LPMAPITABLE table, LONG most)
{
    GatheredRows rows;
    ULONG expected = 0;
    if (FAILED(table->GetRowCount(0, &expected)) || expected == 0 || expected > 0x7FFFFFFE)
    {
        expected = 1024;
    }
    for (;;)
    {
        LPSRowSet part = nullptr;
        Check(table->QueryRows(static_cast<LONG>(expected), 0, &part), "the rows cannot be read");
        if (part == nullptr)
        {
            throw Error(MAPI_E_CALL_FAILED, "the table returned no row set");
        }
        if (part->cRows == 0)
        {
            FreeProws(part);
            return rows.HandOver();
        }
        rows.Take(part);
        if (most > 0 && rows.Count() > static_cast<size_t>(most))
        {
            throw Error(MAPI_E_TABLE_TOO_BIG, "the table has more rows than the given maximum");
        }
    }
}

/// Throws with the table's own error text; with `otherwise` when it has none.
void CheckTable(HRESULT result, const char* otherwise)
{
    if (FAILED(result))
    {
        const std::string text = zebstore::LastErrorText(result);
        throw Error(result, text.empty() ? otherwise : text);
    }
}

} // namespace

HRESULT WINAPI HrQueryAllRows(LPMAPITABLE table, LPSPropTagArray columns, LPSRestriction restriction,
                              LPSSortOrderSet order, LONG most, LPSRowSet* rows)
{
    return Guarded("HrQueryAllRows", [&]
    {
        Require(table != nullptr && rows != nullptr, "the table or the output pointer is null");
        *rows = nullptr;
        if (columns != nullptr)
        {
            CheckTable(table->SetColumns(columns, TBL_BATCH), "the table refused the columns");
        }
        if (restriction != nullptr)
        {
            CheckTable(table->Restrict(restriction, TBL_BATCH), "the table refused the restriction");
        }
        if (order != nullptr)
        {
            CheckTable(table->SortTable(order, TBL_BATCH), "the table refused the sort order");
        }
        CheckTable(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), "the table cannot seek to its first row");
        *rows = QueryAll(table, most);
    });
}
