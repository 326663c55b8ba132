#include "zebapi/Table.h"

#include "tests/support/LogCapture.h"
#include "tests/support/Thrown.h"
#include "tests/support/doubles/MapiUtilities.h"
#include "tests/support/doubles/RecordingTable.h"
#include "zebapi/RowSet.h"
#include "zebapi/TAGS.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace zeb::test
{

namespace
{

using ::testing::ElementsAre;
using ::testing::StartsWith;

class Table : public ::testing::Test
{
protected:
    MapiMemory memory;
    MapiUtilities utilities;
    RecordingTable double_;
    SRestriction restriction = {};
    SSortOrderSet order = {};
    std::string restrictionText = RecordingTable::Pointer(&restriction);
    std::string orderText = RecordingTable::Pointer(&order);
};

/// What HrQueryAllRows was called with.
struct AllRowsCall
{
    LPMAPITABLE table;
    LPSPropTagArray tags;
    LPSRestriction restriction;
    LPSSortOrderSet order;
    LONG maxRows;
    LPSRowSet* rows;
};
AllRowsCall allRows;
HRESULT allRowsResult = S_OK;

HRESULT WINAPI QueryAllRowsDouble(LPMAPITABLE table, LPSPropTagArray tags, LPSRestriction restriction,
                                  LPSSortOrderSet order, LONG maxRows, LPSRowSet* rows)
{
    allRows = {table, tags, restriction, order, maxRows, rows};
    return allRowsResult;
}

} // namespace

TEST_F(Table, EmptyHandleRaisesComErrors)
{
    CZebTable table;
    SRowSet* rows = nullptr;
    ULONG connection = 0;
    const auto raises = [](auto&& body) { EXPECT_EQ(ComErrorThrownBy(body), E_POINTER); };
    raises([&] { table.Advise(nullptr, &connection); });
    raises([&] { table.Unadvise(1); });
    raises([&] { table.SetColumns(1, PR_ENTRYID); });
    raises([&] { table.SetColumns(static_cast<SPropTagArray*>(nullptr)); });
    raises([&] { table.SortTable(&order); });
    raises([&] { table.QueryRows(&rows, 5, nullptr, nullptr); });
    raises([&] { table.QueryRows(&rows, 0, nullptr, nullptr); });
    raises([&] { table.QueryAllRows(&rows, nullptr, nullptr); });
    raises([&] { table.CreateBookmark(); });
    raises([&] { table.FreeBookmark(1); });
    raises([&] { table.GetRowCount(); });
    raises([&] { table.QueryPosition(); });
    raises([&] { table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr); });
    raises([&] { table.FindRow(&restriction, BOOKMARK_BEGINNING, 0); });
    raises([&] { table.Restrict(&restriction, 0); });
    EXPECT_FALSE(table.IsValid());
    table.Free();
}

TEST_F(Table, EmptyHandleRaisesWithoutMemoryToo)
{
    CZebTable table;
    Zeb_MemUninitialize();
    EXPECT_EQ(ComErrorThrownBy([&] { table.SetColumns(1, PR_ENTRYID); }), E_POINTER);
    memory.Bind();
}

TEST_F(Table, CopiesShareTheTable)
{
    {
        CZebTable table(&double_);
        EXPECT_EQ(double_.references, 2u);
        CZebTable copy(table);
        EXPECT_EQ(double_.references, 3u);
        CZebTable assigned;
        assigned = copy;
        EXPECT_EQ(double_.references, 4u);
        copy.Free();
        EXPECT_EQ(double_.references, 3u);
        EXPECT_FALSE(copy.IsValid());
        EXPECT_TRUE(assigned.IsValid());
    }
    EXPECT_EQ(double_.references, 1u);
}

TEST_F(Table, AssigningAnEmptyHandleLogsOnce)
{
    CZebTable table(&double_);
    LogCapture log;
    table = CZebTable();
    EXPECT_EQ(double_.references, 1u);
    EXPECT_FALSE(table.IsValid());
    EXPECT_THAT(log.Texts(), ElementsAre(StartsWith("THROW Exception 0x80004002"),
                                         StartsWith("EXCEPTION: Description: \"MAPI_E_INTERFACE_NOT_SUPPORTED\", "
                                                    "File: \"zebapi/tables/Table.cpp\"")));
}

TEST_F(Table, AssigningToItselfLogsOnce)
{
    CZebTable table(&double_);
    const CZebTable& same = table;
    LogCapture log;
    table = same;
    EXPECT_FALSE(table.IsValid());
    EXPECT_EQ(double_.references, 1u);
    EXPECT_EQ(log.CountBeginning("EXCEPTION: "), 1u);
}

TEST_F(Table, FreeKeepsInWhatReleasingThrows)
{
    CZebTable table(&double_);
    double_.actions["Release"] = [] { throw std::runtime_error("provider"); };
    LogCapture log;
    table.Free();
    EXPECT_FALSE(table.IsValid());
    EXPECT_THAT(log.Texts(),
                ElementsAre(StartsWith("EXCEPTION: Description: <Unknown>, File: \"zebapi/tables/Table.cpp\"")));
}

TEST_F(Table, DestructorKeepsInWhatReleasingThrows)
{
    double_.actions["Release"] = [] { throw std::runtime_error("provider"); };
    LogCapture log;
    {
        CZebTable table(&double_);
    }
    EXPECT_EQ(log.Texts().size(), 1u);
}

TEST_F(Table, AdvisesForTableModificationsOnly)
{
    CZebTable table(&double_);
    double_.connection = 77;
    ULONG connection = 0;
    auto* sink = reinterpret_cast<IMAPIAdviseSink*>(&restriction);
    table.Advise(sink, &connection);
    table.Unadvise(connection);
    EXPECT_EQ(double_.sink, sink);
    EXPECT_THAT(double_.calls, ElementsAre("Advise(mask 256)", "Unadvise(connection 77)"));
}

TEST_F(Table, SetsExactlyTheColumnsCounted)
{
    CZebTable table(&double_);
    table.SetColumns(2, PR_ENTRYID, PR_DISPLAY_NAME_A);
    table.SetColumns(ULONG{1}, PR_SUBJECT_A);
    // A tag of 0 among them is a column like any other.
    table.SetColumns(3, PR_ENTRYID, 0, PR_SUBJECT_A);
    EXPECT_THAT(double_.calls, ElementsAre("SetColumns(columns 0x0FFF0102 0x3001001E, flags 0)",
                                           "SetColumns(columns 0x0037001E, flags 0)",
                                           "SetColumns(columns 0x0FFF0102 0x00000000 0x0037001E, flags 0)"));
}

TEST_F(Table, NoColumnsAreAnEmptyArray)
{
    CZebTable table(&double_);
    EXPECT_EQ(ThrownBy([&] { table.SetColumns(0); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_THAT(double_.calls, ElementsAre("SetColumns(columns, flags 0)"));
}

TEST_F(Table, PassesColumnArraysAsTheyAre)
{
    CZebTable table(&double_);
    CZebPropTagArray columns;
    columns.Add(PR_SUBJECT_A, PR_ENTRYID, 0);
    table.SetColumns(columns);
    EXPECT_EQ(ThrownBy([&] { table.SetColumns(static_cast<SPropTagArray*>(nullptr)); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_THAT(double_.calls,
                ElementsAre("SetColumns(columns 0x0037001E 0x0FFF0102, flags 0)", "SetColumns(no columns, flags 0)"));
}

TEST_F(Table, FailedCallsFreeTheColumnList)
{
    CZebTable table(&double_);
    double_.results["SetColumns"] = MAPI_E_BUSY;
    EXPECT_EQ(ThrownBy([&] { table.SetColumns(1, PR_ENTRYID); }), MAPI_E_BUSY);
    EXPECT_EQ(memory.LiveRoots(), 0u);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { table.SetColumns(1, PR_ENTRYID); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(double_.calls.size(), 1u);
}

TEST_F(Table, CountedReadIgnoresRestrictionAndOrder)
{
    CZebTable table(&double_);
    double_.subjects = {"a", "b", "c"};
    CZebRowSet rows;
    table.QueryRows(&rows, 2, &restriction, &order);
    EXPECT_THAT(double_.calls, ElementsAre("QueryRows(rows 2, flags 0)"));
    EXPECT_EQ(rows.Count(), 2u);
}

TEST_F(Table, ReadAllRestrictsSortsAndCounts)
{
    CZebTable table(&double_);
    double_.rowCount = 3;
    double_.subjects = {"a", "b", "c"};
    CZebRowSet rows;
    table.QueryRows(&rows, 0, &restriction, &order);
    EXPECT_THAT(double_.calls,
                ElementsAre("Restrict(" + restrictionText + ", flags 0)", "SortTable(" + orderText + ", flags 0)",
                            "GetRowCount(flags 0)", "QueryRows(rows 3, flags 0)"));
    EXPECT_EQ(rows.Count(), 3u);
}

TEST_F(Table, ReadAllStartsAtThePosition)
{
    CZebTable table(&double_);
    double_.rowCount = 3;
    double_.subjects = {"a", "b", "c"};
    double_.position = 1;
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    EXPECT_THAT(double_.calls, ElementsAre("GetRowCount(flags 0)", "QueryRows(rows 3, flags 0)"));
    ASSERT_EQ(rows.Count(), 2u);
    EXPECT_EQ(rows[0][PR_SUBJECT_A].String(false), "b");
    EXPECT_EQ(rows[1][PR_SUBJECT_A].String(false), "c");
}

TEST_F(Table, RowsThatVanishAreLeftOut)
{
    CZebTable table(&double_);
    double_.rowCount = 3;
    double_.subjects = {"a"};
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    EXPECT_THAT(double_.calls, ElementsAre("GetRowCount(flags 0)", "QueryRows(rows 3, flags 0)"));
    ASSERT_EQ(rows.Count(), 1u);
    EXPECT_EQ(rows[0][PR_SUBJECT_A].String(false), "a");
    EXPECT_EQ(ThrownBy([&] { rows[1]; }), E_INVALIDARG);
    double_.subjects = {};
    table.QueryRows(&rows, 0, nullptr, nullptr);
    EXPECT_EQ(rows.Count(), 0u);
    EXPECT_FALSE(rows.IsValid());
}

TEST_F(Table, ReadAllUsesVirtualOperations)
{
    class Overriding : public CZebTable
    {
    public:
        using CZebTable::CZebTable;
        std::string seen;
        void Restrict(SRestriction*, ULONG flags) override { seen += "Restrict " + std::to_string(flags) + ";"; }
        void SortTable(SSortOrderSet*) override { seen += "SortTable;"; }
        ULONG GetRowCount() override
        {
            seen += "GetRowCount;";
            return 9;
        }
        void SetColumns(SPropTagArray*) override { seen += "SetColumns;"; }
        using CZebTable::SetColumns;
        void Free() override
        {
            seen += "Free;";
            CZebTable::Free();
        }
    };
    Overriding table(&double_);
    SRowSet* rows = nullptr;
    table.QueryRows(&rows, 0, &restriction, &order);
    Zeb_FreeProws(rows);
    table.SetColumns(1, PR_ENTRYID);
    static_cast<CZebTable&>(table) = CZebTable(&double_);
    EXPECT_EQ(table.seen, "Restrict 0;SortTable;GetRowCount;SetColumns;Free;");
    EXPECT_THAT(double_.calls, ElementsAre("QueryRows(rows 9, flags 0)"));
}

TEST_F(Table, MoreRowsThanLongsAreRefused)
{
    CZebTable table(&double_);
    SRowSet* rows = nullptr;
    double_.rowCount = 0x80000000;
    EXPECT_EQ(ThrownBy([&] { table.QueryRows(&rows, 0, nullptr, nullptr); }), MAPI_E_TABLE_TOO_BIG);
    double_.rowCount = 0x7FFFFFFF;
    EXPECT_EQ(ThrownBy([&] { table.QueryRows(&rows, 0, nullptr, nullptr); }), S_OK);
    Zeb_FreeProws(rows);
}

TEST_F(Table, SuccessWithoutRowsIsEmpty)
{
    CZebTable table(&double_);
    double_.givesNullRows = true;
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    EXPECT_FALSE(rows.IsValid());
    EXPECT_EQ(ThrownBy([&] { rows[0]; }), MAPI_E_BAD_VALUE);
}

TEST_F(Table, TheProvidersFunctionReadsAllRows)
{
    CZebTable table(&double_);
    SRowSet* rows = nullptr;
    SetEntryPoint(EntryPoint::HrQueryAllRows, reinterpret_cast<void*>(&QueryAllRowsDouble));
    allRowsResult = S_OK;
    table.QueryAllRows(&rows, &restriction, &order);
    EXPECT_EQ(allRows.table, static_cast<IMAPITable*>(&double_));
    EXPECT_EQ(allRows.tags, nullptr);
    EXPECT_EQ(allRows.restriction, &restriction);
    EXPECT_EQ(allRows.order, &order);
    EXPECT_EQ(allRows.maxRows, 0);
    EXPECT_EQ(allRows.rows, &rows);
    allRowsResult = MAPI_E_TABLE_TOO_BIG;
    EXPECT_EQ(ThrownBy([&] { table.QueryAllRows(&rows, nullptr, nullptr); }), MAPI_E_TABLE_TOO_BIG);
    SetEntryPoint(EntryPoint::HrQueryAllRows, nullptr);
    EXPECT_EQ(ThrownBy([&] { table.QueryAllRows(&rows, nullptr, nullptr); }), E_FAIL);
}

TEST_F(Table, BookmarksPositionAndSeekPassThrough)
{
    CZebTable table(&double_);
    double_.bookmark = 5;
    double_.position = 12;
    double_.rowCount = 40;
    double_.sought = -3;
    LONG sought = 0;
    EXPECT_EQ(table.CreateBookmark(), 5u);
    table.FreeBookmark(5);
    EXPECT_EQ(table.QueryPosition(), 12u);
    EXPECT_EQ(table.GetRowCount(), 40u);
    table.SeekRow(BOOKMARK_END, -3, &sought);
    table.SeekRow(BOOKMARK_CURRENT, 1, nullptr);
    table.Restrict(&restriction, TBL_BATCH);
    table.SortTable(&order);
    EXPECT_EQ(sought, -3);
    EXPECT_THAT(double_.calls,
                ElementsAre("CreateBookmark()", "FreeBookmark(bookmark 5)", "QueryPosition()", "GetRowCount(flags 0)",
                            "SeekRow(origin 2, rows -3)", "SeekRow(origin 1, rows 1)",
                            "Restrict(" + restrictionText + ", flags 2)", "SortTable(" + orderText + ", flags 0)"));
}

TEST_F(Table, FindRowAnswersYesOrNo)
{
    CZebTable table(&double_);
    EXPECT_TRUE(table.FindRow(&restriction, BOOKMARK_CURRENT, DIR_BACKWARD));
    EXPECT_THAT(double_.calls, ElementsAre("FindRow(" + restrictionText + ", origin 1, flags 1)"));
    double_.results["FindRow"] = MAPI_E_NOT_FOUND;
    EXPECT_FALSE(table.FindRow(&restriction, BOOKMARK_BEGINNING, 0));
    double_.results["FindRow"] = MAPI_E_INVALID_BOOKMARK;
    EXPECT_EQ(ThrownBy([&] { table.FindRow(&restriction, 99, 0); }), MAPI_E_INVALID_BOOKMARK);
    double_.results["FindRow"] = MAPI_W_POSITION_CHANGED;
    EXPECT_TRUE(table.FindRow(&restriction, BOOKMARK_BEGINNING, 0));
    double_.actions["FindRow"] = [] { throw std::runtime_error("provider"); };
    EXPECT_THROW(table.FindRow(&restriction, BOOKMARK_BEGINNING, 0), std::runtime_error);
}

TEST_F(Table, FailuresCarryTextAndWarningsPass)
{
    CZebTable table(&double_);
    double_.results["GetRowCount"] = MAPI_W_APPROX_COUNT;
    double_.rowCount = 7;
    EXPECT_EQ(table.GetRowCount(), 7u);

    double_.results["GetRowCount"] = MAPI_E_BUSY;
    double_.lastError = memory.NewMapiError(1, "busy indeed", "store", 2, 3);
    LogCapture log;
    EXPECT_EQ(ThrownBy([&] { table.GetRowCount(); }), MAPI_E_BUSY);
    ASSERT_EQ(log.Texts().size(), 1u);
    EXPECT_THAT(log.Texts()[0], ::testing::HasSubstr("busy indeed"));
    EXPECT_THAT(log.Texts()[0], ::testing::HasSubstr("File zebapi/tables/Table.cpp"));
}

TEST_F(Table, EveryFailingCallThrowsItsResult)
{
    CZebTable table(&double_);
    SRowSet* rows = nullptr;
    ULONG connection = 0;
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"Advise", [&] { table.Advise(nullptr, &connection); }},
        {"Unadvise", [&] { table.Unadvise(1); }},
        {"SetColumns", [&] { table.SetColumns(static_cast<SPropTagArray*>(nullptr)); }},
        {"SortTable", [&] { table.SortTable(&order); }},
        {"QueryRows", [&] { table.QueryRows(&rows, 1, nullptr, nullptr); }},
        {"CreateBookmark", [&] { table.CreateBookmark(); }},
        {"FreeBookmark", [&] { table.FreeBookmark(1); }},
        {"GetRowCount", [&] { table.GetRowCount(); }},
        {"QueryPosition", [&] { table.QueryPosition(); }},
        {"SeekRow", [&] { table.SeekRow(BOOKMARK_END, 0, nullptr); }},
        {"FindRow", [&] { table.FindRow(&restriction, BOOKMARK_END, 0); }},
        {"Restrict", [&] { table.Restrict(&restriction, 0); }},
    };
    for (const auto& [method, call] : calls)
    {
        double_.results = {{method, MAPI_E_NETWORK_ERROR}};
        EXPECT_EQ(ThrownBy(call), MAPI_E_NETWORK_ERROR) << method;
    }
}

} // namespace zeb::test
