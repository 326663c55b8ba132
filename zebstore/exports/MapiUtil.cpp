// The exported helpers of MAPI that work on any provider's objects.
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
        Require(dest && source, "no value to copy");
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
        Require(object && value, "no object or no place for the value");
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
        Require(object && value, "no object or no value");
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

/// The rows gathered so far; frees them unless they are handed over.
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

    /// Takes the rows out of `part` and frees its shell.
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
        Check(table->QueryRows(static_cast<LONG>(expected), 0, &part), "the rows can not be read");
        if (!part)
        {
            throw Error(MAPI_E_CALL_FAILED, "the table answered without rows");
        }
        if (part->cRows == 0)
        {
            FreeProws(part);
            return rows.HandOver();
        }
        rows.Take(part);
        if (most > 0 && rows.Count() > static_cast<size_t>(most))
        {
            throw Error(MAPI_E_TABLE_TOO_BIG, "the table has more rows than were asked for");
        }
    }
}

/// Hands on what the table itself says of its failure; `otherwise` when it says nothing.
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
        Require(table && rows, "no table or no place for the rows");
        *rows = nullptr;
        if (columns)
        {
            CheckTable(table->SetColumns(columns, TBL_BATCH), "the columns were refused");
        }
        if (restriction)
        {
            CheckTable(table->Restrict(restriction, TBL_BATCH), "the restriction was refused");
        }
        if (order)
        {
            CheckTable(table->SortTable(order, TBL_BATCH), "the sort order was refused");
        }
        CheckTable(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), "the table can not be rewound");
        *rows = QueryAll(table, most);
    });
}
