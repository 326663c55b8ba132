// Tables of the embedded provider through CZebTable.
#include "tests/integration/Host.h"

#include <vector>

namespace zeb::test
{
namespace
{

class ContentsTable : public StoreHost
{
protected:
    ContentsTable()
    {
        AddMessage("delta", 1);
        AddMessage("Alpha", 2);
        AddMessage("charlie", 1, 100);
        AddMessage("Bravo", 0);
        AddMessage("echo", 2);
        m_table = Contents();
        m_table.SetColumns(2, PR_SUBJECT_A, PR_IMPORTANCE);
        CZebSortOrder order(PR_SUBJECT_A, TABLE_SORT_ASCEND);
        m_table.SortTable(order);
    }

    /// The subjects of the next `count` rows.
    std::vector<std::string> Next(LONG count)
    {
        CZebRowSet rows;
        m_table.QueryRows(&rows, count, nullptr, nullptr);
        std::vector<std::string> subjects;
        for (ULONG i = 0; i < rows.Count(); ++i)
        {
            subjects.push_back(rows[i][PR_SUBJECT_A].String(true).GetString());
        }
        return subjects;
    }

    CZebTable m_table;
};

using List = std::vector<std::string>;

TEST_F(ContentsTable, HasExactlyTheColumnsSet)
{
    m_table.SetColumns(3, PR_IMPORTANCE, PR_SUBJECT_A, PR_REPORT_TEXT_A);
    CZebRowSet rows;
    m_table.QueryRows(&rows, 1, nullptr, nullptr);
    ASSERT_EQ(rows.Count(), 1u);
    const CZebRow row = rows[0];
    ASSERT_EQ(row.Count(), 3u);
    EXPECT_EQ(row.TagAt(0), PR_IMPORTANCE);
    EXPECT_EQ(row.TagAt(1), PR_SUBJECT_A);
    EXPECT_EQ(PROP_TYPE(row.TagAt(2)), static_cast<ULONG>(PT_ERROR));
    EXPECT_TRUE(row.IsExists(PR_REPORT_TEXT_A));
    EXPECT_FALSE(row.hasRealValue(PR_REPORT_TEXT_A));
}

TEST_F(ContentsTable, GivesTextNarrowAndWide)
{
    m_table.SetColumns(1, PR_SUBJECT_W);
    CZebRowSet rows;
    m_table.QueryRows(&rows, 1, nullptr, nullptr);
    EXPECT_STREQ(rows[0][PR_SUBJECT_W].String(false).GetString(), "Alpha");
    EXPECT_EQ(rows[0].TagAt(0), PR_SUBJECT_W);
}

TEST_F(ContentsTable, SortsWithoutRegardToCase)
{
    EXPECT_EQ(Next(10), (List{"Alpha", "Bravo", "charlie", "delta", "echo"}));
}

TEST_F(ContentsTable, SortsByKeysInOwnDirections)
{
    CZebSortOrder order(PR_IMPORTANCE, TABLE_SORT_DESCEND);
    order.Add(PR_SUBJECT_A, TABLE_SORT_ASCEND);
    m_table.SortTable(order);
    EXPECT_EQ(Next(10), (List{"Alpha", "echo", "charlie", "delta", "Bravo"}));
}

TEST_F(ContentsTable, SeeksFromEveryOrigin)
{
    LONG sought = 0;
    m_table.SeekRow(BOOKMARK_BEGINNING, 2, &sought);
    EXPECT_EQ(sought, 2);
    EXPECT_EQ(m_table.QueryPosition(), 2u);
    EXPECT_EQ(Next(1), (List{"charlie"}));
    m_table.SeekRow(BOOKMARK_CURRENT, -2, &sought);
    EXPECT_EQ(sought, -2);
    EXPECT_EQ(Next(1), (List{"Bravo"}));
    m_table.SeekRow(BOOKMARK_END, -1, nullptr);
    EXPECT_EQ(Next(10), (List{"echo"}));
    m_table.SeekRow(BOOKMARK_BEGINNING, 99, &sought);
    EXPECT_EQ(sought, 5);
    EXPECT_TRUE(Next(10).empty());
}

TEST_F(ContentsTable, ABookmarkBringsItsRowBack)
{
    m_table.SeekRow(BOOKMARK_BEGINNING, 3, nullptr);
    const ULONG bookmark = m_table.CreateBookmark();
    m_table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    m_table.SeekRow(bookmark, 0, nullptr);
    EXPECT_EQ(Next(1), (List{"delta"}));
    m_table.FreeBookmark(bookmark);
    EXPECT_EQ(FailureOf([&] { m_table.SeekRow(bookmark, 0, nullptr); }).result, MAPI_E_INVALID_BOOKMARK);
}

TEST_F(ContentsTable, ReadingAllBeginsAtCurrentRow)
{
    m_table.SeekRow(BOOKMARK_BEGINNING, 3, nullptr);
    EXPECT_EQ(Next(0), (List{"delta", "echo"}));
}

TEST_F(ContentsTable, ReadsAllRowsFromAnyPosition)
{
    m_table.SeekRow(BOOKMARK_BEGINNING, 3, nullptr);
    CZebRowSet rows;
    m_table.QueryAllRows(&rows, nullptr, nullptr);
    EXPECT_EQ(rows.Count(), 5u);
}

TEST_F(ContentsTable, FindsTheNextRowThatMatches)
{
    CZebRestrictionAllocator restriction;
    restriction.Allocate();
    restriction.CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(2);
    EXPECT_TRUE(m_table.FindRow(restriction, BOOKMARK_BEGINNING, 0));
    EXPECT_EQ(Next(1), (List{"Alpha"}));
    EXPECT_TRUE(m_table.FindRow(restriction, BOOKMARK_CURRENT, 0));
    EXPECT_EQ(Next(1), (List{"echo"}));
    EXPECT_FALSE(m_table.FindRow(restriction, BOOKMARK_CURRENT, 0));
}

TEST_F(ContentsTable, FindsBackwards)
{
    CZebRestrictionAllocator restriction;
    restriction.Allocate();
    restriction.CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(1);
    EXPECT_TRUE(m_table.FindRow(restriction, BOOKMARK_END, DIR_BACKWARD));
    EXPECT_EQ(Next(1), (List{"delta"}));
}

TEST_F(ContentsTable, KeepsARestrictionUntilTheNext)
{
    CZebRestrictionAllocator restriction;
    restriction.Allocate();
    restriction.CreateProp(PR_IMPORTANCE, RELOP_EQ) = static_cast<LONG>(1);
    CZebRowSet rows;
    m_table.QueryRows(&rows, 0, restriction, nullptr);
    EXPECT_EQ(rows.Count(), 2u);
    EXPECT_EQ(m_table.GetRowCount(), 2u);
    m_table.Restrict(nullptr, 0);
    EXPECT_EQ(m_table.GetRowCount(), 5u);
}

TEST_F(ContentsTable, AssociatedMessagesHaveTheirOwnTable)
{
    CZebFolder inbox = Inbox();
    CZebMessage hidden = inbox.CreateMessage(MAPI_ASSOCIATED);
    hidden.SaveChanges(KEEP_OPEN_READWRITE);
    EXPECT_EQ(inbox.GetContentsTable(0).GetRowCount(), 5u);
    EXPECT_EQ(inbox.GetContentsTable(MAPI_ASSOCIATED).GetRowCount(), 1u);
}

TEST_F(ContentsTable, TheDeepHierarchyShowsTheDepth)
{
    CZebFolder top = m_store->OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    const ULONG before = top.GetHierarchyTable(0).GetRowCount();
    top.CreateFolder("a", false, true, 0, "", FOLDER_GENERIC)
        .CreateFolder("b", false, true, 0, "", FOLDER_GENERIC)
        .CreateFolder("c", false, true, 0, "", FOLDER_GENERIC);
    EXPECT_EQ(top.GetHierarchyTable(0).GetRowCount(), before + 1);
    CZebTable deep = top.GetHierarchyTable(CONVENIENT_DEPTH);
    deep.SetColumns(2, PR_DISPLAY_NAME_A, PR_DEPTH);
    CZebRowSet rows;
    deep.QueryRows(&rows, 0, nullptr, nullptr);
    LONG deepest = 0;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        if (rows[i][PR_DISPLAY_NAME_A].String(false) == CStringA("c"))
        {
            deepest = rows[i][PR_DEPTH];
        }
    }
    EXPECT_EQ(rows.Count(), before + 3);
    EXPECT_EQ(deepest, 3);
}

} // namespace
} // namespace zeb::test
