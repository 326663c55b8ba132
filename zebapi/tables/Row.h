// One row of a table.
#pragma once

#include "zebapi/values/OnePROPVAL.h"

/// A view of one SRow of a row set: finds columns by property identifier and hands out views of their values.
///
/// It owns nothing and is valid while the row set that gave it lives. Columns are found whatever their type,
/// so one that came back as PT_ERROR is found under its ordinary tag. Threads: none of its own.
class ZEBAPI_EXPORT CZebRow
{
protected:
    /// @throws CZebException* MAPI_E_BAD_VALUE for a view of nothing.
    virtual void CheckValid() const;
    /// The index of the first value with the property identifier of `propTag`; -1 when there is none.
    virtual int FindTag(ULONG propTag) const;

public:
    virtual ~CZebRow() = default;
    /// Looks at what `other` looks at.
    virtual CZebRow& operator=(const CZebRow& other);
    /// The number of values. @throws CZebException* MAPI_E_BAD_VALUE
    virtual ULONG Count() const;
    /// The tag of value `index`, with no check of any kind.
    virtual ULONG TagAt(int index) const { return m_row->lpProps[index].ulPropTag; }
    /// hasRealValue for value `index`, with no check of any kind.
    virtual bool IsRealValueAt(int index) const;
    /// @throws CZebException* MAPI_E_BAD_VALUE, MAPI_E_UNEXPECTED_ID for an index outside the row.
    virtual CZebOnePropVal GetAt(int index) const;
    /// @throws CZebException* MAPI_E_BAD_VALUE, MAPI_E_UNEXPECTED_ID when the row has no such column.
    virtual CZebOnePropVal operator[](ULONG propTag) const;
    /// Whether the row has such a column, even one that holds PT_ERROR. @throws CZebException* MAPI_E_BAD_VALUE
    virtual bool IsExists(ULONG propTag) const;
    /// Whether the row has such a column with a value: not PT_UNSPECIFIED, PT_NULL, PT_ERROR or empty text.
    /// @throws CZebException* MAPI_E_BAD_VALUE
    virtual bool hasRealValue(ULONG propTag) const;

    /// A view of `row`, which lives in the MAPI buffer `base`: the allocation parent of the values handed out.
    CZebRow(SRow* row, void* base)
        : m_base(base)
        , m_row(row)
    {
    }
    CZebRow(const CZebRow& other) = default;

private:
    void* m_base;
    SRow* m_row;
};
