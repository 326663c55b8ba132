// One row of a table.
#pragma once

#include "zebapi/values/OnePROPVAL.h"

/// A view of one SRow of a row set: finds columns by property identifier and returns views of their values.
///
/// It owns nothing and is valid as long as its row set. Columns of any type are found, so a column with PT_ERROR is
/// found under its ordinary tag. Threads: none of its own.
class ZEBAPI_EXPORT CZebRow
{
protected:
    /// @throws CZebException* MAPI_E_BAD_VALUE for an empty view.
    virtual void CheckValid() const;
    /// The index of the first value with the property identifier of `propTag`; -1 when there is none.
    virtual int FindTag(ULONG propTag) const;

public:
    virtual ~CZebRow() = default;
    /// Refers to the row of `other`.
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

    /// A view of `row`, which is in the MAPI buffer `base`: the allocation parent of the returned values.
    CZebRow(SRow* row, void* base)
        : m_base(base)
        , m_row(row)
    {
    }
    /// Refers to the row of other.
    CZebRow(const CZebRow& other) = default;

private:
    void* m_base;
    SRow* m_row;
};
