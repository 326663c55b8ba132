#include "zebapi/tables/Row.h"

#include "zebapi/frame/internal/Subject.h"
#include "zebapi/values/internal/RealValue.h"
#include "zebapi/values/internal/Received.h"

CZebRow& CZebRow::operator=(const CZebRow& other) = default;

void CZebRow::CheckValid() const
{
    if (m_row == nullptr)
    {
        CZebException::Throw(MAPI_E_BAD_VALUE);
    }
}

int CZebRow::FindTag(ULONG propTag) const
{
    CheckValid();
    // Rows are short: for a few columns a plain loop is faster than the search in arrays.
    const ULONG id = PROP_ID(propTag);
    const ULONG count = zeb::CountOf(m_row->lpProps, m_row->cValues);
    for (ULONG i = 0; i < count; ++i)
    {
        if (PROP_ID(m_row->lpProps[i].ulPropTag) == id)
        {
            return static_cast<int>(i);
        }
    }
    return -1;
}

ULONG CZebRow::Count() const
{
    CheckValid();
    return m_row->cValues;
}

bool CZebRow::IsRealValueAt(int index) const
{
    return zeb::HasRealValue(TagAt(index), m_row->lpProps[index]);
}

CZebOnePropVal CZebRow::GetAt(int index) const
{
    CheckValid();
    if (index < 0 || static_cast<ULONG>(index) >= zeb::CountOf(m_row->lpProps, m_row->cValues))
    {
        zeb::ThrowIndex(MAPI_E_UNEXPECTED_ID, "value", index, m_row->cValues);
    }
    return CZebOnePropVal(m_row->lpProps + index, m_base);
}

CZebOnePropVal CZebRow::operator[](ULONG propTag) const
{
    const int index = FindTag(propTag);
    if (index < 0)
    {
        zeb::ThrowTag(MAPI_E_UNEXPECTED_ID, propTag);
    }
    return CZebOnePropVal(m_row->lpProps + index, m_base);
}

bool CZebRow::IsExists(ULONG propTag) const
{
    return FindTag(propTag) >= 0;
}

bool CZebRow::hasRealValue(ULONG propTag) const
{
    const int index = FindTag(propTag);
    return index >= 0 && IsRealValueAt(index);
}
