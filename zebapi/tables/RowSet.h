// Rows read from a table.
#pragma once

#include "framework/Containers.h"
#include "zebapi/tables/Row.h"

/// Owns one SRowSet, as IMAPITable::QueryRows returns it, and frees it with its rows.
///
/// Reads of a set that was never filled report MAPI_E_NO_SUPPORT; reads of one that was passed to a call to be filled
/// report that it is empty or too short. Threads: none of its own.
class ZEBAPI_EXPORT CZebRowSet
{
protected:
    /// @throws CZebException* MAPI_E_BAD_VALUE without a set.
    virtual void CheckValid() const;

public:
    virtual ~CZebRowSet();
    /// Frees the set (FreeProws); it counts as never filled again.
    virtual void Empty();
    /// The number of rows. @throws CZebException* MAPI_E_BAD_VALUE without a set.
    virtual ULONG Count() const;
    /// True when there is at least one row.
    virtual bool IsValid() const;
    /// Empties the object and returns the address of its pointer, for a call that returns rows. The object owns them.
    virtual SRowSet** operator&();
    /// Moves the rows into a new object, which the caller deletes, and leaves this one empty, as never filled.
    /// @throws CZebException* without a set: MAPI_E_NO_SUPPORT when never filled, else MAPI_E_BAD_VALUE.
    virtual CZebRowSet* DetachToNew();
    /// A view of a row, valid while the set is held.
    /// @throws CZebException* MAPI_E_NO_SUPPORT when never filled; else MAPI_E_BAD_VALUE without a set and
    /// E_INVALIDARG for an index at or past the count.
    virtual CZebRow operator[](ULONG index) const;

    /// The set itself, borrowed; null without one.
    SRowSet* Get() const { return m_rows; }

    CZebRowSet();
    /// Copying and assigning copy the pointer, not the rows: both objects then free the same set, and assigning leaks
    /// the previous set. Pass row sets by reference, or move one with DetachToNew.
    CZebRowSet(const CZebRowSet& other);
    /// As the copy constructor.
    CZebRowSet& operator=(const CZebRowSet& other);

private:
    SRowSet* m_rows = nullptr; ///< owned
    bool m_neverHandedOut = true;
};

/// Owns row sets: an array of CZebRowSet* whose elements are deleted with it. Elements are added through the
/// operations of CPtrArray.
class ZEBAPI_EXPORT CZebRowSetArray : public zeb::CPtrArray
{
public:
    ~CZebRowSetArray() override;
    /// Deletes the set at `index` and closes the gap.
    virtual void RemoveAt(INT_PTR index);
    /// Deletes every set, in order.
    virtual void RemoveAll();

    CZebRowSetArray();
    CZebRowSetArray(const CZebRowSetArray&) = delete;
    CZebRowSetArray& operator=(const CZebRowSetArray&) = delete;
};
