// The rows of a contents table, read by index as a list shows them.
#pragma once

#include "zebapi/ZebAPI.h"

#include <map>
#include <string>
#include <vector>

namespace zeb::view
{

/// A column of a list and what it is sorted by.
struct RowColumn
{
    const char* title;
    int width; ///< in pixels of a screen with 96 dots per inch
    bool isRight;
    std::vector<ULONG> sortTags;
    bool descendsFirst; ///< the first click of its header sorts the largest value to the top
    std::string (*text)(const CZebRow& row);
};

/// What a list shows of the rows of a table.
struct RowKind
{
    std::vector<RowColumn> columns;
    std::vector<ULONG> tags;       ///< the columns of the table
    std::vector<ULONG> filterTags; ///< texts that the filter searches
    int firstSort;                 ///< the column that a new list is sorted by
    const char* one;
    const char* many; ///< "messages"
};

/// The messages of a folder; the entries of a container of the address book.
const RowKind& MessageKind();
const RowKind& AddressKind();

/// A table that is read row by row, through a window of rows that the library keeps. The texts of the rows that were read
/// last are kept until Count. A row that another program deletes meanwhile is an empty one until the listener has heard of
/// it.
class RowList
{
public:
    static constexpr int Unsorted = -1;

    /// Sorts by the kind's first column, unless there are so many rows that this would take long.
    /// @param listener gets WM_CACHED_TABLE_CHANGED
    RowList(const CZebTable& table, const RowKind& kind, HWND listener);

    const RowKind& Kind() const { return m_kind; }
    /// The number of rows, now; the rows are read again. @throws CZebException*
    ULONG Count();
    /// The text of a cell, UTF-8, in one line. @throws CZebException*
    std::string Text(ULONG row, int column);
    bool IsUnread(ULONG row);
    /// KeyOf the entry identifier of a row; empty when there is no such row.
    std::string KeyAt(ULONG row);
    /// The row with that key, first looked for next to `around`; -1 when there is none.
    LONG Find(const std::string& key, ULONG around);

    /// The column that the rows are sorted by, or Unsorted: they have the provider's order.
    int SortColumn() const { return m_sort; }
    bool IsDescending() const { return m_isDescending; }
    /// Sorts by a column, or, when the rows have that order already, the other way around. @throws CZebException*
    void SortBy(int column);
    /// Shows only rows with the text in one of the filter's columns, in any letter case. Empty: all rows.
    /// @throws CZebException*
    void Filter(const std::string& text);

private:
    struct Row
    {
        std::vector<std::string> texts; ///< none for a row that is not there any more
        std::string key;
        bool isUnread = false;
    };

    void Sort();
    const Row& At(ULONG row);
    Row Read(ULONG row);

    const RowKind& m_kind;
    CZebCachedTable m_table;
    std::map<ULONG, Row> m_read;
    ULONG m_count = 0;
    int m_sort;
    bool m_isDescending;
};

} // namespace zeb::view
