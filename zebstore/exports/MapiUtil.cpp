// Exported MAPI helpers that work on objects of any provider.
#include "zebstore/base/Guard.h"
#include "zebstore/base/LiveBlocks.h"
#include "zebstore/base/Memory.h"
#include "zebstore/exports/CopyProperties.h"

#include <cstring>
#include <vector>

using zebstore::Buffer;
using zebstore::Check;
using zebstore::Error;
using zebstore::Guarded;
using zebstore::Require;

SCODE WINAPI PropCopyMore(LPSPropValue dest, LPSPropValue source, ALLOCATEMORE* allocateMore, LPVOID parent)
{
    return Guarded("PropCopyMore", [&]
    {
        Require(dest && source, "the source or the target value is null");
        return zebstore::CopyValue(*dest, *source, allocateMore, parent);
    });
}

ULONG WINAPI UlRelease(LPVOID object)
{
    return object ? static_cast<IUnknown*>(object)->Release() : 0;
}

HRESULT WINAPI HrGetOneProp(LPMAPIPROP object, ULONG tag, LPSPropValue* value)
{
    return Guarded("HrGetOneProp", [&]() -> HRESULT
    {
        Require(object && value, "the object or the output pointer is null");
        *value = nullptr;
        SizedSPropTagArray(1, tags) = {1, {tag}};
        ULONG count = 0;
        LPSPropValue got = nullptr;
        const ULONG flags = PROP_TYPE(tag) == PT_UNICODE ? MAPI_UNICODE : 0;
        const HRESULT result = object->GetProps(reinterpret_cast<LPSPropTagArray>(&tags), flags, &count, &got);
        Buffer<SPropValue> owner(got);
        if (FAILED(result))
        {
            return result;
        }
        if (count != 1 || !got)
        {
            return MAPI_E_CALL_FAILED;
        }
        if (PROP_TYPE(got->ulPropTag) == PT_ERROR && PROP_TYPE(tag) != PT_ERROR)
        {
            return got->Value.err;
        }
        *value = owner.Detach();
        return S_OK;
    });
}

HRESULT WINAPI HrSetOneProp(LPMAPIPROP object, LPSPropValue value)
{
    return Guarded("HrSetOneProp", [&]() -> HRESULT
    {
        Require(object && value, "the object or the value is null");
        LPSPropProblemArray problems = nullptr;
        const HRESULT result = object->SetProps(1, value, &problems);
        Buffer<SPropProblemArray> owner(problems);
        if (FAILED(result))
        {
            return result;
        }
        return problems && problems->cProblem ? problems->aProblem[0].scode : S_OK;
    });
}

void WINAPI FreeProws(LPSRowSet rows)
{
    if (!rows)
    {
        return;
    }
    if (!zebstore::g_roots.Has(rows))
    {
        return zebstore::CountBadFree("FreeProws", rows);
    }
    for (ULONG i = 0; i < rows->cRows; ++i)
    {
        zebstore::FreeOf(rows->aRow[i].lpProps, "FreeProws");
    }
    zebstore::FreeOf(rows, "FreeProws");
}

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
        if (!part)
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
        Require(table && rows, "the table or the output pointer is null");
        *rows = nullptr;
        if (columns)
        {
            CheckTable(table->SetColumns(columns, TBL_BATCH), "the table refused the columns");
        }
        if (restriction)
        {
            CheckTable(table->Restrict(restriction, TBL_BATCH), "the table refused the restriction");
        }
        if (order)
        {
            CheckTable(table->SortTable(order, TBL_BATCH), "the table refused the sort order");
        }
        CheckTable(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), "the table cannot seek to its first row");
        *rows = QueryAll(table, most);
    });
}
