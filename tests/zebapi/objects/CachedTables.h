// A cached table over a table of numbered rows.
#pragma once

#include "ObjectsTest.h"
#include "zebapi/CachedTable.h"

namespace zeb::test
{

constexpr ULONG Column = PR_ROWID;

class OpenTable : public CZebCachedTable
{
public:
    using CZebCachedTable::CZebCachedTable;
    using CZebCachedTable::operator=;
    using CZebCachedTable::Bind;
    using CZebCachedTable::EmptyCache;
    using CZebCachedTable::Unbind;
};

class CachedTable : public ObjectsTest
{
protected:
    void HasRows(LONG count)
    {
        m_double.m_rows.clear();
        for (LONG i = 0; i < count; ++i)
        {
            m_double.m_rows.push_back({{Column, i, ""}});
        }
    }
    /// The number in row `index`, read through the cached table.
    LONG At(CZebCachedTable& table, ULONG index) { return table[index][Column].operator LONG(); }
    /// Whether the row came without reading the table.
    bool Hits(CZebCachedTable& table, ULONG index)
    {
        Calls();
        EXPECT_EQ(At(table, index), static_cast<LONG>(index));
        return Calls() == Lines{"table: GetRowCount(0x0)"};
    }

    RowTable m_double{m_journal};
};

/// The calls that read the window which begins at row `start`.
inline Lines Miss(const std::string& start)
{
    return {"table: GetRowCount(0x0)", "table: SeekRow(0x0," + start + ",sought null)", "table: QueryRows(50,0x0)"};
}

} // namespace zeb::test
