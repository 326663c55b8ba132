// Sort orders of tables.
#pragma once

#include "platform/export.h"
#include "platform/mapi.h"

/// Owns one SSortOrderSet: the sort keys given to CZebTable::SortTable.
///
/// The buffer is MAPI memory, always exactly CbSSortOrderSet(cSorts) bytes; it grows by one key at a time.
/// Categories are not built here: their counts stay 0 unless written through the raw pointer. Threads: none
/// of its own.
class ZEBAPI_EXPORT CZebSortOrder
{
protected:
    /// Replaces the buffer by one for `count` keys, which keeps the contents up to the smaller size; cSorts stays.
    /// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY, MAPI_E_NOT_INITIALIZED
    virtual void Allocate(int count);

public:
    virtual ~CZebSortOrder();
    /// Frees the set.
    virtual void Empty();
    /// The number of keys; 0 without a set.
    virtual int GetCount() const;
    /// Whether there is a set, even one of no keys.
    virtual bool IsValid() const;
    /// Appends a key. `order`: TABLE_SORT_ASCEND, TABLE_SORT_DESCEND, TABLE_SORT_COMBINE. The first key cannot be
    /// combined with a previous one, so TABLE_SORT_COMBINE is removed from it. @throws CZebException* as Allocate does.
    virtual void Add(ULONG propTag, ULONG order);
    /// Holds a copy; a source without a set, and assigning the object to itself, empties it.
    virtual CZebSortOrder& operator=(const CZebSortOrder& other);
    /// The set, borrowed. @throws CZebException* E_INVALIDARG without a set.
    virtual operator SSortOrderSet*();
    /// Empties the object and returns the address of its pointer, for a MAPI call to fill (IMAPITable::QuerySortOrder).
    /// The object then owns that buffer.
    virtual SSortOrderSet** operator&();

    /// One key; none when `propTag` is 0.
    CZebSortOrder(ULONG propTag, ULONG order);
    /// Holds a copy; a source without a set makes an empty object.
    CZebSortOrder(const CZebSortOrder& other);

private:
    SSortOrderSet* m_sortSet = nullptr; ///< owned
};
