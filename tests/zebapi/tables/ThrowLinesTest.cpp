// Who is named as the source of a failure, and the provider's text in each.
#include "tests/support/LogCapture.h"
#include "tests/support/Thrown.h"
#include "tests/support/doubles/MapiUtilities.h"
#include "tests/support/doubles/RecordingTable.h"
#include "zebapi/Restrict.h"
#include "zebapi/Row.h"
#include "zebapi/RowSet.h"
#include "zebapi/SortOrder.h"
#include "zebapi/Table.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <utility>

namespace zeb::test
{

namespace
{

class ThrowLines : public ::testing::Test
{
protected:
    void ExpectThrowIn(const std::string& file, const std::function<void()>& body, const std::string& text = "")
    {
        LogCapture log;
        EXPECT_NE(ThrownBy(body), S_OK) << file;
        ASSERT_EQ(log.Texts().size(), 1u) << file;
        EXPECT_THAT(log.Texts()[0], ::testing::HasSubstr(", File zebapi/" + file + ", line "));
        EXPECT_THAT(log.Texts()[0], ::testing::HasSubstr(text));
    }

    MapiMemory memory;
    MapiUtilities utilities;
};

HRESULT WINAPI BusyAllRows(LPMAPITABLE, LPSPropTagArray, LPSRestriction, LPSSortOrderSet, LONG, LPSRowSet*)
{
    return MAPI_E_BUSY;
}

} // namespace

TEST_F(ThrowLines, NameTheirClasses)
{
    CZebRowSet rows;
    ExpectThrowIn("tables/RowSet.cpp", [&] { rows.Count(); });
    ExpectThrowIn("tables/RowSet.cpp", [&] { rows[0]; });
    ExpectThrowIn("tables/RowSet.cpp", [&] { rows.DetachToNew(); });
    SRow none = {};
    const CZebRow row(&none, &none);
    ExpectThrowIn("tables/Row.cpp", [] { CZebRow(nullptr, nullptr).Count(); });
    ExpectThrowIn("tables/Row.cpp", [&] { row.GetAt(0); });
    ExpectThrowIn("tables/Row.cpp", [&] { row[PR_SUBJECT_A]; });
    CZebRestrictionAllocator tree;
    ExpectThrowIn("tables/Restrict.cpp", [&] { tree.CreateAnd(1); });
    tree.Allocate();
    ExpectThrowIn("tables/Restrict.cpp", [&] { tree[-1]; });
    ExpectThrowIn("tables/Restrict.cpp", [&] { tree[ULONG{7}]; });
    ExpectThrowIn("tables/Restrict.cpp", [&] { static_cast<CZebRestriction&>(tree) = tree; });
    CZebSortOrder order(0, 0);
    ExpectThrowIn("tables/SortOrder.cpp", [&] { (void)static_cast<SSortOrderSet*>(order); });
}

TEST_F(ThrowLines, EachTableCallCarriesProvidersText)
{
    RecordingTable provider;
    provider.lastError = memory.NewMapiError(1, "the provider says", "store", 2, 3);
    CZebTable table(&provider);
    SRowSet* rows = nullptr;
    ULONG connection = 0;
    SRestriction restriction = {};
    SSortOrderSet order = {};
    SPropTagArray columns = {1, {PR_ENTRYID}};
    const std::pair<const char*, std::function<void()>> calls[] = {
        {"Advise", [&] { table.Advise(nullptr, &connection); }},
        {"Unadvise", [&] { table.Unadvise(1); }},
        {"SetColumns", [&] { table.SetColumns(&columns); }},
        {"SortTable", [&] { table.SortTable(&order); }},
        {"QueryRows", [&] { table.QueryRows(&rows, 1, nullptr, nullptr); }},
        {"HrQueryAllRows", [&] { table.QueryAllRows(&rows, nullptr, nullptr); }},
        {"CreateBookmark", [&] { table.CreateBookmark(); }},
        {"FreeBookmark", [&] { table.FreeBookmark(1); }},
        {"GetRowCount", [&] { table.GetRowCount(); }},
        {"QueryPosition", [&] { table.QueryPosition(); }},
        {"SeekRow", [&] { table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr); }},
        {"FindRow", [&] { table.FindRow(&restriction, BOOKMARK_BEGINNING, 0); }},
        {"Restrict", [&] { table.Restrict(&restriction, 0); }}};
    SetEntryPoint(EntryPoint::HrQueryAllRows, reinterpret_cast<void*>(&BusyAllRows));
    for (const auto& [method, call] : calls)
    {
        provider.results[method] = MAPI_E_BUSY;
        SCOPED_TRACE(method);
        ExpectThrowIn("tables/Table.cpp", call, "the provider says");
    }
    SetEntryPoint(EntryPoint::HrQueryAllRows, nullptr);
}

TEST_F(ThrowLines, NegativeCountsReadBackwards)
{
    RecordingTable provider;
    CZebTable table(&provider);
    CZebRowSet rows;
    table.QueryRows(&rows, 0, nullptr, nullptr);
    EXPECT_EQ(rows.Count(), 0u);
    EXPECT_FALSE(rows.IsValid());
    table.QueryRows(&rows, -3, nullptr, nullptr);
    EXPECT_THAT(provider.calls, ::testing::ElementsAre("GetRowCount(flags 0)", "QueryRows(rows 0, flags 0)",
                                                       "QueryRows(rows -3, flags 0)"));
}

TEST_F(ThrowLines, AnUnfilledSetRefusesEveryIndex)
{
    CZebRowSet rows;
    SRowSet** slot = &rows;
    rows.Empty();
    *slot = static_cast<SRowSet*>(memory.Allocate(static_cast<ULONG>(CbNewSRowSet(1))));
    (*slot)->cRows = 0;
    EXPECT_EQ(ThrownBy([&] { rows[0]; }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(ThrownBy([&] { rows[7]; }), MAPI_E_NO_SUPPORT);
}

TEST_F(ThrowLines, WideContentIsCopiedWhole)
{
    CZebRestrictionAllocator tree;
    tree.Allocate();
    std::basic_string<WCHAR> text;
    for (int i = 0; i < 300; ++i)
    {
        text += static_cast<WCHAR>(0x4E00 + i);
    }
    tree.CreateContentW(PR_SUBJECT_W, text.c_str(), FL_SUBSTRING | FL_IGNORECASE);
    const SRestriction* node = static_cast<SRestriction*>(tree);
    EXPECT_EQ(node->rt, ULONG{RES_CONTENT});
    const SContentRestriction& content = node->res.resContent;
    EXPECT_EQ(content.ulPropTag, ULONG{PR_SUBJECT_W});
    EXPECT_EQ(content.ulFuzzyLevel, ULONG{FL_SUBSTRING | FL_IGNORECASE});
    EXPECT_EQ(content.lpProp->ulPropTag, ULONG{PR_SUBJECT_W});
    EXPECT_NE(content.lpProp->Value.lpszW, text.c_str());
    EXPECT_EQ(std::basic_string<WCHAR>(content.lpProp->Value.lpszW), text);
    EXPECT_EQ(memory.SizeOf(content.lpProp->Value.lpszW), 602u);
    EXPECT_EQ(memory.LiveRoots(), 1u) << "all in one chain";
}

} // namespace zeb::test
