// The range-based for over a table.
#include "ObjectsTest.h"
#include "tests/support/Context.h"
#include "zebapi/TAGS.h"
#include "zebapi/Table.h"

#include <type_traits>

using namespace zeb::test;

namespace
{

/// Gives at most so many rows at once, as providers do that are short of memory.
class ShortTable : public RowTable
{
public:
    using RowTable::RowTable;
    HRESULT STDMETHODCALLTYPE QueryRows(LONG count, ULONG flags, LPSRowSet* rows) override
    {
        ++m_reads;
        return m_reads == m_failingRead ? MAPI_E_NETWORK_ERROR
                                        : RowTable::QueryRows(std::min(count, m_atOnce), flags, rows);
    }

    LONG m_atOnce = 1000;
    int m_reads = 0;
    int m_failingRead = 0;
};

class TableRows : public ObjectsTest
{
protected:
    void HasRows(LONG count)
    {
        for (LONG i = 0; i < count; ++i)
        {
            m_double.m_rows.push_back({{PR_ROWID, i, ""}, {PR_SUBJECT_W, 0, "subject " + std::to_string(i)}});
        }
    }
    std::vector<LONG> Read()
    {
        std::vector<LONG> numbers;
        for (CZebRow row : m_table.Rows({PR_ROWID, PR_SUBJECT_W}))
        {
            numbers.push_back(row[PR_ROWID]);
            EXPECT_STREQ(row[PR_SUBJECT_W].String(false), ("subject " + std::to_string(numbers.back())).c_str());
        }
        return numbers;
    }
    static std::vector<LONG> UpTo(LONG count)
    {
        std::vector<LONG> numbers;
        for (LONG i = 0; i < count; ++i)
        {
            numbers.push_back(i);
        }
        return numbers;
    }

    ShortTable m_double{m_journal};
    CZebTable m_table{&m_double};
};

static_assert(!std::is_copy_constructible_v<CZebTableRows>);

} // namespace

TEST_F(TableRows, ComeWithTheirColumnsInBatches)
{
    HasRows(250);
    EXPECT_EQ(Read(), UpTo(250));
    EXPECT_EQ(Calls(), (Lines{"table: SetColumns([0x30000003,0x37001F],0x0)", "table: SeekRow(0x0,0,sought null)",
                              "table: QueryRows(100,0x0)", "table: QueryRows(100,0x0)", "table: QueryRows(100,0x0)",
                              "table: QueryRows(100,0x0)"}));
}

TEST_F(TableRows, TheColumnsAreQueried)
{
    HasRows(1);
    CZebPropTagArray columns;
    m_table.QueryColumns(&columns, TBL_ALL_COLUMNS);
    ASSERT_EQ(columns.GetCount(), 2);
    EXPECT_EQ(columns[1], PR_SUBJECT_W);
    m_table.QueryColumns(&columns);
    EXPECT_EQ(Calls(), (Lines{"table: QueryColumns(0x1)", "table: QueryColumns(0x0)"}));
    m_double.Fail("QueryColumns", MAPI_E_BUSY);
    EXPECT_EQ(ContextOf([&] { m_table.QueryColumns(&columns); }), "QueryColumns");
    EXPECT_EQ(Raised([&] { CZebTable().QueryColumns(&columns); }), E_POINTER);
}

TEST_F(TableRows, SuccessWithoutColumnsIsAFailure)
{
    m_double.m_givesNothing = true;
    CZebPropTagArray columns;
    EXPECT_EQ(Thrown([&] { m_table.QueryColumns(&columns); }), MAPI_E_CALL_FAILED);
}

TEST_F(TableRows, OfAnEmptyTableAreNone)
{
    EXPECT_EQ(Read(), UpTo(0));
    m_double.m_givesNothing = true;
    EXPECT_EQ(Read(), UpTo(0)) << "success without a row set";
}

TEST_F(TableRows, EndWithAnEmptyBatchOnly)
{
    HasRows(7);
    m_double.m_atOnce = 3;
    EXPECT_EQ(Read(), UpTo(7));
    EXPECT_EQ(m_double.m_reads, 4);
}

TEST_F(TableRows, BeginAtTheFirstRow)
{
    HasRows(5);
    m_table.SeekRow(BOOKMARK_BEGINNING, 3, nullptr);
    EXPECT_EQ(Read(), UpTo(5));
    EXPECT_EQ(Read(), UpTo(5));
}

TEST_F(TableRows, BeginTwiceAtTheSameRow)
{
    HasRows(2);
    auto rows = m_table.Rows({PR_ROWID});
    EXPECT_EQ((*rows.begin())[PR_ROWID].operator LONG(), 0);
    EXPECT_EQ((*rows.begin())[PR_ROWID].operator LONG(), 0);
    EXPECT_EQ(m_double.m_reads, 1);
}

TEST_F(TableRows, OutliveTheHandleTheyCameFrom)
{
    HasRows(3);
    LONG sum = 0;
    for (CZebRow row : CZebTable(&m_double).Rows({PR_ROWID}))
    {
        sum += row[PR_ROWID].operator LONG();
    }
    EXPECT_EQ(sum, 3);
    EXPECT_EQ(m_double.References(), 1u);
}

TEST_F(TableRows, AreFreedWhenTheLoopEnds)
{
    HasRows(3);
    for (CZebRow row : m_table.Rows({PR_ROWID}))
    {
        EXPECT_EQ(row[PR_ROWID].operator LONG(), 0);
        break;
    }
    EXPECT_EQ(m_double.References(), 1u);
    EXPECT_EQ(m_double.m_reads, 1);
}

TEST_F(TableRows, ThrowWhatABatchThrows)
{
    HasRows(250);
    m_double.m_failingRead = 2;
    LONG read = 0;
    EXPECT_EQ(Thrown(
                  [&]
    {
        for (CZebRow row : m_table.Rows({PR_ROWID}))
        {
            read += row.IsExists(PR_ROWID) ? 1 : 0;
        }
    }),
              MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(read, 100);
}

TEST_F(TableRows, TakeTagsKnownAtRunTime)
{
    HasRows(2);
    const std::vector<ULONG> tags = {PR_ROWID};
    LONG count = 0;
    for (CZebRow row : m_table.RowsOf(1, tags.data()))
    {
        count += row.IsExists(PR_ROWID) ? 1 : 0;
    }
    EXPECT_EQ(count, 2);
    EXPECT_EQ(Thrown([&] { m_table.RowsOf(0, nullptr); }), E_INVALIDARG);
}

TEST_F(TableRows, OfEmptyHandlesRaiseComErrors)
{
    CZebTable none;
    EXPECT_EQ(Raised([&] { none.Rows({PR_ROWID}); }), E_POINTER);
}

TEST_F(TableRows, GoThroughTheHandlesOwnOperations)
{
    class Counting : public CZebTable
    {
    public:
        using CZebTable::CZebTable;
        void SeekRow(ULONG origin, LONG rowCount, LONG* rowsSought) override
        {
            ++m_seeks;
            CZebTable::SeekRow(origin, rowCount, rowsSought);
        }
        int m_seeks = 0;
    };
    Counting table(&m_double);
    table.Rows({PR_ROWID});
    EXPECT_EQ(table.m_seeks, 1);
}
