// Tables: contents and hierarchies of folders, message stores, profiles.
#pragma once

#include "framework/ComPtr.h"
#include "platform/export.h"
#include "platform/mapi.h"
#include "platform/overloads.h"
#include "zebapi/tables/RowSet.h"

#include <cstddef>
#include <type_traits>

class CZebTableRows;

/// A handle on one MAPI table.
///
/// It holds a counted reference to the table; copies share it. Every operation is one synchronous call of an
/// IMAPITable method; a failing result is thrown as CZebException* with the provider's own error text if it has one;
/// warnings pass. Using an empty handle raises _com_error with E_POINTER. Threads: none of its own; use one handle from
/// one thread.
class ZEBAPI_EXPORT CZebTable
{
public:
    virtual ~CZebTable();
    /// Releases the table and shares the other's. Never throws: an empty source leaves an empty handle and a line in
    /// the log. Assigning a handle to itself empties it.
    virtual CZebTable& operator=(const CZebTable& other);
    /// Advises for fnevTableModified; `connection` receives the number for Unadvise, and is unchanged when the call
    /// fails. MAPI's number is pointer-sized: one above 32 bits is replaced by a number that the handles of this table
    /// translate back. (IMAPITable::Advise)
    /// @throws CZebException* also MAPI_E_NOT_ENOUGH_MEMORY
    virtual void Advise(IMAPIAdviseSink* sink, ULONG* connection);
    /// Ends the connection. (IMAPITable::Unadvise)
    virtual void Unadvise(ULONG connection);
    /// Whether a table is held.
    virtual bool IsValid() const;
    ZEB_OVERLOADS(
        /// Sets exactly `count` columns, whose tags follow. (IMAPITable::SetColumns)
        virtual void SetColumns(ULONG count, ...),
        /// Sets the columns. (IMAPITable::SetColumns)
        virtual void SetColumns(SPropTagArray* columns));
    /// Sorts the rows; the table is then positioned at the first. (IMAPITable::SortTable)
    virtual void SortTable(SSortOrderSet* order);
    /// Reads rows from the current position into `*rows`, which the caller frees (CZebRowSet's `&` does).
    ///
    /// With a count, reads that many; restriction and order are ignored. With 0, first applies the restriction and the
    /// order if given, which stay applied, and then reads all rows that the table counts.
    /// @throws CZebException* also MAPI_E_TABLE_TOO_BIG when the table counts more rows than a LONG holds.
    virtual void QueryRows(SRowSet** rows, LONG count, SRestriction* restriction, SSortOrderSet* order);
    /// Reads all rows, optionally restricted and sorted. (HrQueryAllRows)
    virtual void QueryAllRows(SRowSet** rows, SRestriction* restriction, SSortOrderSet* order);
    /// Marks the current row. A number above 32 bits is replaced as that of a
    /// connection is. (IMAPITable::CreateBookmark)
    /// @throws CZebException* also MAPI_E_NOT_ENOUGH_MEMORY
    virtual ULONG CreateBookmark();
    /// (IMAPITable::FreeBookmark)
    virtual void FreeBookmark(ULONG bookmark);
    /// The number of rows that match the restriction. (IMAPITable::GetRowCount)
    virtual ULONG GetRowCount();
    /// The current row.
    virtual ULONG QueryPosition();
    /// `origin`: a bookmark or BOOKMARK_BEGINNING, BOOKMARK_CURRENT, BOOKMARK_END; `rowsSought` may be null.
    virtual void SeekRow(ULONG origin, LONG rowCount, LONG* rowsSought);
    /// Whether a row matches; the table is then positioned at it. `flags`: DIR_BACKWARD or 0.
    virtual bool FindRow(SRestriction* restriction, ULONG origin, ULONG flags);
    /// Shows only the rows that match; null shows all. (IMAPITable::Restrict)
    virtual void Restrict(SRestriction* restriction, ULONG flags);
    /// Releases the table. Never throws.
    virtual void Free();

    /// Adds a reference; the caller keeps its own.
    CZebTable(IMAPITable* table = nullptr);
    /// Shares the table of other.
    CZebTable(const CZebTable& other);

    /// SetColumns(count, ...) for a count written as a plain number: `SetColumns(0)` would be ambiguous otherwise.
    template <class Count, class... Tags, class = std::enable_if_t<std::is_same_v<Count, int>>>
    void SetColumns(Count count, Tags... tags)
    {
        SetColumns(static_cast<ULONG>(count), static_cast<ULONG>(tags)...);
    }

    /// The tags of the columns. (IMAPITable::QueryColumns)
    /// @param columns  receives an array that the caller frees with Zeb_MemFree (CZebPropTagArray's `&` does)
    /// @param flags    0 for the columns set; TBL_ALL_COLUMNS for all that the table can show
    /// @throws CZebException* also MAPI_E_CALL_FAILED when there are none
    void QueryColumns(SPropTagArray** columns, ULONG flags = 0);
    /// Every row of the table with these columns, for a range-based for:
    ///
    ///     for (CZebRow row : table.Rows({PR_ENTRYID, PR_SUBJECT_W}))
    ///
    /// Sets the columns, goes to the first row, and reads the rows in batches while the loop runs (SetColumns, SeekRow,
    /// QueryRows). Restriction and order stay as they are; columns and position are not restored. A row that comes or
    /// goes during the loop moves those after it: to delete what a loop finds, collect the identifiers first.
    /// @throws CZebException* as SetColumns, SeekRow and QueryRows, also while the loop runs
    template <std::size_t Count>
    CZebTableRows Rows(const ULONG (&tags)[Count]);
    /// The same for `count` tags that are not known at compile time.
    /// @throws CZebException* also E_INVALIDARG for no tags
    CZebTableRows RowsOf(ULONG count, const ULONG* tags);

protected:
    /// The table; empty for an empty handle.
    zeb::CComPtr<IMAPITable> m_table;
};

/// The rows of a table in one pass, read a batch at a time: what CZebTable::Rows gives to a range-based for.
///
/// It holds a reference of its own on the table and owns the batch that was read last. A row is a view, valid until the
/// loop goes on to the next one; copy what is to be kept. One pass: a second loop over the same object goes on where the
/// first one ended. Threads: none of its own.
class ZEBAPI_EXPORT CZebTableRows
{
public:
    struct End
    {
    };

    /// What a range-based for moves over the rows.
    class Iterator
    {
    public:
        /// At the current row of rows.
        explicit Iterator(CZebTableRows* rows)
            : m_rows(rows)
        {
        }
        /// The row: a view until the next ++.
        CZebRow operator*() const { return m_rows->Current(); }
        /// Goes to the next row. @throws CZebException* as CZebTable::QueryRows
        Iterator& operator++()
        {
            m_rows->Advance();
            return *this;
        }
        /// Whether there is a row.
        bool operator!=(End) const { return !m_rows->IsAtEnd(); }

    private:
        CZebTableRows* m_rows;
    };

    /// Reads the first batch. @throws CZebException* as CZebTable::QueryRows
    Iterator begin();
    /// Past the last row.
    End end() const { return End(); }

    /// Whether there is no further row. True before the first batch is read.
    bool IsAtEnd() const;
    /// The row that the pass has come to. @throws CZebException* as CZebRowSet::operator[]
    CZebRow Current() const;
    /// Goes to the next row, and reads the next batch after the last row of this one, whose rows are then gone.
    /// @throws CZebException* as CZebTable::QueryRows
    void Advance();

    /// The rows from the table's position on, with the columns that it has.
    explicit CZebTableRows(const CZebTable& table);
    ~CZebTableRows();
    CZebTableRows(const CZebTableRows&) = delete;
    CZebTableRows& operator=(const CZebTableRows&) = delete;

private:
    void ReadBatch();

    CZebTable m_table;
    CZebRowSet m_batch;
    ULONG m_index = 0; ///< in the batch
};

template <std::size_t Count>
CZebTableRows CZebTable::Rows(const ULONG (&tags)[Count])
{
    return RowsOf(static_cast<ULONG>(Count), tags);
}
