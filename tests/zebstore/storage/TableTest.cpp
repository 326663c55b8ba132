#include "tests/zebstore/storage/ComputedNumber.h"
#include "tests/zebstore/storage/Restrictions.h"

#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/HierarchyRows.h"
#include "zebstore/storage/MemoryRows.h"
#include "zebstore/storage/Restriction.h"
#include "zebstore/tables/Table.h"
#include "zebstore/tables/TableView.h"

namespace zebstore::test
{
namespace
{

class TableTest : public StorageTest
{
protected:
    void Fill(int count)
    {
        for (int i = 0; i < count; ++i)
        {
            m_messages.push_back(Store().Messages().Create({Inbox, false}, Numbered(i)));
        }
    }
    static MessageContent Numbered(int number)
    {
        MessageContent content = Mail("subject " + std::to_string(100 + number), number % 2 ? MSGFLAG_READ : 0);
        content.properties.SetLong(PR_IMPORTANCE, number);
        return content;
    }
    Ref<IMAPITable> Contents(bool unicode = false, bool associated = false)
    {
        TableOptions options;
        options.unicode = unicode;
        return CreateTable(MakeContentsRows(m_store, {Inbox, associated}, Computed(PR_ENTRYID)), options);
    }
    static void Columns(IMAPITable& table, std::vector<ULONG> tags)
    {
        ASSERT_EQ(table.SetColumns(TagArray(tags).Get(), 0), S_OK);
    }
    static void Sort(IMAPITable& table, ULONG tag, ULONG order)
    {
        ASSERT_EQ(table.SortTable(SortSet({{tag, order}}).Get(), 0), S_OK);
    }
    // The values of PR_IMPORTANCE, by which the rows are told apart.
    static std::vector<LONG> Rows(IMAPITable& table, LONG count, ULONG flags = 0)
    {
        Columns(table, {PR_IMPORTANCE});
        SRowSet* set = nullptr;
        EXPECT_EQ(table.QueryRows(count, flags, &set), S_OK);
        std::vector<LONG> numbers;
        for (ULONG i = 0; set && i < set->cRows; ++i)
        {
            numbers.push_back(set->aRow[i].lpProps[0].Value.l);
            Free(set->aRow[i].lpProps);
        }
        Free(set);
        return numbers;
    }
    Ref<IMAPITable> Hierarchy()
    {
        return CreateTable(MakeHierarchyRows(m_store, Inbox, false, Computed(PR_ENTRYID)), {});
    }
    static std::vector<std::string> Names(IMAPITable& table, LONG count)
    {
        Columns(table, {PR_DISPLAY_NAME_A});
        SRowSet* set = nullptr;
        EXPECT_EQ(table.QueryRows(count, 0, &set), S_OK);
        std::vector<std::string> names;
        for (ULONG i = 0; set && i < set->cRows; ++i)
        {
            names.emplace_back(set->aRow[i].lpProps[0].Value.lpszA);
            Free(set->aRow[i].lpProps);
        }
        Free(set);
        return names;
    }
    static ULONG Position(IMAPITable& table)
    {
        ULONG row = 0;
        ULONG numerator = 0;
        ULONG denominator = 0;
        EXPECT_EQ(table.QueryPosition(&row, &numerator, &denominator), S_OK);
        EXPECT_NE(denominator, 0u);
        return row;
    }
    static ULONG Count(IMAPITable& table)
    {
        ULONG count = 0;
        EXPECT_EQ(table.GetRowCount(0, &count), S_OK);
        return count;
    }
    SRestriction* Is(LONG number) { return m_make.Property(RELOP_EQ, LongValue(PR_IMPORTANCE, number)); }

    std::vector<MessageId> m_messages;
    RestrictionMaker m_make;
};

using Numbers = std::vector<LONG>;
using Texts = std::vector<std::string>;

TEST_F(TableTest, RowsComeInSavedOrder)
{
    Fill(5);
    const auto table = Contents();
    EXPECT_EQ(Count(*table), 5u);
    EXPECT_EQ(Rows(*table, 3), (Numbers{0, 1, 2}));
    EXPECT_EQ(Position(*table), 3u);
    EXPECT_EQ(Rows(*table, 10), (Numbers{3, 4}));
    EXPECT_EQ(Rows(*table, 10), Numbers{});
}

TEST_F(TableTest, AnEmptyTableGivesNoRows)
{
    const auto table = Contents();
    EXPECT_EQ(Count(*table), 0u);
    EXPECT_EQ(Rows(*table, 0), Numbers{});
    EXPECT_EQ(Rows(*table, 5), Numbers{});
    EXPECT_EQ(Rows(*table, -5), Numbers{});
    LONG sought = 7;
    EXPECT_EQ(table->SeekRow(BOOKMARK_END, -3, &sought), S_OK);
    EXPECT_EQ(sought, 0);
}

TEST_F(TableTest, RowsAreReadBackwards)
{
    Fill(6);
    const auto table = Contents();
    table->SeekRow(BOOKMARK_BEGINNING, 4, nullptr);
    EXPECT_EQ(Rows(*table, -3), (Numbers{1, 2, 3}));
    EXPECT_EQ(Position(*table), 1u);
    EXPECT_EQ(Rows(*table, 2, TBL_NOADVANCE), (Numbers{1, 2}));
    EXPECT_EQ(Position(*table), 1u);
    EXPECT_EQ(Rows(*table, -9), Numbers{0});
}

TEST_F(TableTest, SeekingStopsAtTheEnds)
{
    Fill(6);
    const auto table = Contents();
    const auto seek = [&](BOOKMARK origin, LONG count)
    {
        LONG sought = 99;
        EXPECT_EQ(table->SeekRow(origin, count, &sought), S_OK);
        return sought;
    };
    EXPECT_EQ(seek(BOOKMARK_BEGINNING, 4), 4);
    EXPECT_EQ(seek(BOOKMARK_CURRENT, 5), 2);
    EXPECT_EQ(Position(*table), 6u);
    EXPECT_EQ(seek(BOOKMARK_CURRENT, -2), -2);
    EXPECT_EQ(seek(BOOKMARK_CURRENT, -20), -4);
    EXPECT_EQ(seek(BOOKMARK_END, -1), -1);
    EXPECT_EQ(Rows(*table, 5), Numbers{5});
    EXPECT_EQ(seek(BOOKMARK_END, 3), 0);
    EXPECT_EQ(seek(BOOKMARK_BEGINNING, -3), 0);
    EXPECT_EQ(table->SeekRow(77, 0, nullptr), MAPI_E_INVALID_BOOKMARK);
}

TEST_F(TableTest, SeekingByParts)
{
    Fill(10);
    const auto table = Contents();
    EXPECT_EQ(table->SeekRowApprox(1, 2), S_OK);
    EXPECT_EQ(Position(*table), 5u);
    EXPECT_EQ(table->SeekRowApprox(7, 2), S_OK);
    EXPECT_EQ(Position(*table), 10u);
    EXPECT_EQ(table->SeekRowApprox(1, 0), MAPI_E_INVALID_PARAMETER);
}

TEST_F(TableTest, SortingUsesEveryKeysDirection)
{
    Fill(6);
    const auto table = Contents();
    Sort(*table, PR_SUBJECT_A, TABLE_SORT_DESCEND);
    EXPECT_EQ(Rows(*table, 9), (Numbers{5, 4, 3, 2, 1, 0}));
    ASSERT_EQ(table->SortTable(
                  SortSet({{PR_MESSAGE_FLAGS, TABLE_SORT_DESCEND}, {PR_IMPORTANCE, TABLE_SORT_ASCEND}}).Get(), 0),
              S_OK);
    EXPECT_EQ(Rows(*table, 9), (Numbers{1, 3, 5, 0, 2, 4}));
    SSortOrderSet* order = nullptr;
    ASSERT_EQ(table->QuerySortOrder(&order), S_OK);
    EXPECT_EQ(order->cSorts, 2u);
    EXPECT_EQ(order->aSort[1].ulPropTag, ULONG(PR_IMPORTANCE));
    Free(order);
    ASSERT_EQ(table->SortTable(SortSet({}).Get(), 0), S_OK);
    EXPECT_EQ(Rows(*table, 2), (Numbers{0, 1}));
}

TEST_F(TableTest, CategoriesAreTooComplex)
{
    Fill(3);
    const auto table = Contents();
    Sort(*table, PR_IMPORTANCE, TABLE_SORT_DESCEND);
    EXPECT_EQ(table->SortTable(SortSet({{PR_SUBJECT_A, TABLE_SORT_ASCEND}}, 1).Get(), 0), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Rows(*table, 1), Numbers{2});
    EXPECT_EQ(table->ExpandRow(0, nullptr, 0, 0, nullptr, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(table->CollapseRow(0, nullptr, 0, nullptr), MAPI_E_NO_SUPPORT);
}

TEST_F(TableTest, ARestrictionStaysUntilRemoved)
{
    Fill(8);
    const auto table = Contents();
    SRestriction* unread = m_make.BitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_EQZ);
    ASSERT_EQ(table->Restrict(unread, 0), S_OK);
    EXPECT_EQ(Count(*table), 4u);
    EXPECT_EQ(Rows(*table, 9), (Numbers{0, 2, 4, 6}));
    EXPECT_EQ(table->Restrict(m_make.Property(RELOP_RE, LongValue(PR_IMPORTANCE, 1)), 0), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(Count(*table), 4u) << "a refused one changes nothing";
    ASSERT_EQ(table->Restrict(nullptr, 0), S_OK);
    EXPECT_EQ(Count(*table), 8u);
    EXPECT_EQ(Position(*table), 0u);
}

TEST_F(TableTest, FindRowSearchesBothWays)
{
    Fill(10);
    const auto table = Contents();
    EXPECT_EQ(table->FindRow(Is(6), BOOKMARK_BEGINNING, 0), S_OK);
    EXPECT_EQ(Position(*table), 6u);
    EXPECT_EQ(table->FindRow(Is(6), BOOKMARK_CURRENT, 0), S_OK) << "the cursor's row counts forward";
    EXPECT_EQ(table->FindRow(Is(3), BOOKMARK_CURRENT, 0), MAPI_E_NOT_FOUND);
    EXPECT_EQ(Position(*table), 6u) << "the cursor stays";
    EXPECT_EQ(table->FindRow(Is(3), BOOKMARK_CURRENT, DIR_BACKWARD), S_OK);
    EXPECT_EQ(Position(*table), 3u);
    EXPECT_EQ(table->FindRow(Is(3), BOOKMARK_CURRENT, DIR_BACKWARD), MAPI_E_NOT_FOUND);
    EXPECT_EQ(table->FindRow(m_make.BitMask(PR_MESSAGE_FLAGS, MSGFLAG_READ, BMR_NEZ), BOOKMARK_END, DIR_BACKWARD),
              S_OK);
    EXPECT_EQ(Position(*table), 9u) << "the last one that fits";
    const MessageId wanted = m_messages[4];
    const std::string id(reinterpret_cast<const char*>(&wanted), sizeof(wanted));
    EXPECT_EQ(table->FindRow(m_make.Property(RELOP_EQ, BinaryValue(PR_ENTRYID, id)), BOOKMARK_BEGINNING, 0), S_OK);
    EXPECT_EQ(Position(*table), 4u) << "by a computed property";
    EXPECT_EQ(table->FindRow(nullptr, BOOKMARK_BEGINNING, 0), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(table->FindRow(Is(1), 99, 0), MAPI_E_INVALID_BOOKMARK);
}

TEST_F(TableTest, FindRowGoesALongWay)
{
    std::vector<PropertySet> rows(5000);
    for (size_t i = 0; i < rows.size(); ++i)
    {
        rows[i].SetLong(PR_IMPORTANCE, static_cast<LONG>(i % 2500));
    }
    const auto table = CreateTable(std::make_shared<MemoryRows>(std::move(rows)), {});
    EXPECT_EQ(table->FindRow(Is(2400), BOOKMARK_BEGINNING, 0), S_OK);
    EXPECT_EQ(Position(*table), 2400u);
    EXPECT_EQ(table->FindRow(Is(10), BOOKMARK_END, DIR_BACKWARD), S_OK);
    EXPECT_EQ(Position(*table), 2510u);
    EXPECT_EQ(table->FindRow(Is(2501), BOOKMARK_BEGINNING, 0), MAPI_E_NOT_FOUND);
}

TEST_F(TableTest, CellsFollowTheirColumns)
{
    MessageContent content = Mail("Caf\xC3\xA9");
    content.properties.SetEncoded(PR_BODY_W, std::string(10000, 'b'));
    Store().Messages().Create({Inbox, false}, content);
    const auto table = Contents(true);
    Columns(*table, {PR_SUBJECT_W, PR_SUBJECT_A, PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT_A)), PR_SENDER_NAME_A,
                     PR_BODY_W, PROP_TAG(PT_I2, PROP_ID(PR_MESSAGE_SIZE)), PR_NULL, PR_ENTRYID});
    SRowSet* set = nullptr;
    ASSERT_EQ(table->QueryRows(1, 0, &set), S_OK);
    ASSERT_EQ(set->aRow[0].cValues, 8u);
    const SPropValue* cells = set->aRow[0].lpProps;
    EXPECT_EQ(zeb::platform::WideString(cells[0].Value.lpszW), ZEBW("Caf\u00E9"));
    EXPECT_EQ(cells[1].Value.lpszA, zeb::platform::NarrowFromWide(ZEBW("Caf\u00E9"), 4));
    EXPECT_EQ(cells[2].ulPropTag, ULONG(PR_SUBJECT_W));
    EXPECT_EQ(cells[3].ulPropTag, PROP_TAG(PT_ERROR, PROP_ID(PR_SENDER_NAME_A)));
    EXPECT_EQ(cells[3].Value.err, MAPI_E_NOT_FOUND);
    EXPECT_EQ(cells[4].Value.err, MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(PROP_TYPE(cells[5].ulPropTag), ULONG(PT_ERROR));
    EXPECT_EQ(cells[6].ulPropTag, ULONG(PR_NULL));
    EXPECT_EQ(cells[7].Value.bin.cb, 8u);
    Free(set->aRow[0].lpProps);
    Free(set);
}

TEST_F(TableTest, ColumnsAreSetOrDefault)
{
    Store().Messages().Create({Inbox, false}, Numbered(1));
    const auto narrow = Contents();
    SPropTagArray* tags = nullptr;
    const auto has = [&](ULONG tag)
    { return std::find(tags->aulPropTag, tags->aulPropTag + tags->cValues, tag) != tags->aulPropTag + tags->cValues; };
    ASSERT_EQ(narrow->QueryColumns(0, &tags), S_OK);
    EXPECT_TRUE(has(PR_SUBJECT_A));
    EXPECT_TRUE(has(PR_ENTRYID));
    Free(tags);
    const auto wide = Contents(true);
    ASSERT_EQ(wide->QueryColumns(TBL_ALL_COLUMNS, &tags), S_OK);
    EXPECT_TRUE(has(PR_SUBJECT_W));
    EXPECT_TRUE(has(PR_IMPORTANCE));
    Free(tags);
    Columns(*wide, {PR_SUBJECT_A});
    ASSERT_EQ(wide->QueryColumns(0, &tags), S_OK);
    EXPECT_EQ(tags->cValues, 1u);
    EXPECT_TRUE(has(PR_SUBJECT_A));
    Free(tags);
    EXPECT_EQ(wide->SetColumns(TagArray({}).Get(), 0), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(wide->SetColumns(nullptr, 0), MAPI_E_INVALID_PARAMETER);
}

TEST_F(TableTest, TheNextCallShowsChanges)
{
    Fill(4);
    const auto table = Contents();
    EXPECT_EQ(Rows(*table, 2), (Numbers{0, 1}));
    Store().Messages().Delete({m_messages[0]});
    EXPECT_EQ(Count(*table), 3u);
    EXPECT_EQ(Position(*table), 1u);
    EXPECT_EQ(Rows(*table, 1), Numbers{2}) << "no row is skipped or read twice";
    Store().Messages().Create({Inbox, false}, Numbered(9));
    EXPECT_EQ(Rows(*table, 9), (Numbers{3, 9}));
    Store().Messages().Create({Inbox, false}, Numbered(10));
    EXPECT_EQ(Rows(*table, 9), Numbers{10}) << "also after the end";
}

TEST_F(TableTest, SortedTablesFollowAnotherConnection)
{
    Fill(4);
    const auto table = Contents();
    Sort(*table, PR_IMPORTANCE, TABLE_SORT_DESCEND);
    EXPECT_EQ(Rows(*table, 2), (Numbers{3, 2}));
    const auto other = StoreFile::Open(Path("test.zeb"), {});
    other->Messages().Create({Inbox, false}, Numbered(8));
    EXPECT_EQ(Rows(*table, 9), (Numbers{1, 0}));
    EXPECT_EQ(Count(*table), 5u);
    table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    EXPECT_EQ(Rows(*table, 1), Numbers{8});
}

TEST_F(TableTest, ABookmarkStaysAtItsRow)
{
    Fill(6);
    const auto table = Contents();
    table->SeekRow(BOOKMARK_BEGINNING, 3, nullptr);
    BOOKMARK bookmark = 0xABABABABABABABAB;
    ASSERT_EQ(table->CreateBookmark(&bookmark), S_OK);
    EXPECT_LE(bookmark, UINT32_MAX) << "all 64 bits are written";
    EXPECT_EQ(table->SeekRow(bookmark | 0x100000000, 0, nullptr), MAPI_E_INVALID_BOOKMARK) << "and all are read";
    Store().Messages().Delete({m_messages[1]});
    LONG sought = 0;
    EXPECT_EQ(table->SeekRow(bookmark, 0, &sought), S_OK);
    EXPECT_EQ(Position(*table), 2u);
    EXPECT_EQ(Rows(*table, 1), Numbers{3});
    EXPECT_EQ(table->SeekRow(bookmark, -1, &sought), S_OK);
    EXPECT_EQ(Rows(*table, 1), Numbers{2});
    Store().Messages().Delete({m_messages[3]});
    EXPECT_EQ(table->SeekRow(bookmark, 0, &sought), MAPI_W_POSITION_CHANGED);
    EXPECT_EQ(Rows(*table, 1), Numbers{4}) << "the next one that is left";
    EXPECT_EQ(table->FreeBookmark(bookmark), S_OK);
    EXPECT_EQ(table->FreeBookmark(bookmark), MAPI_E_INVALID_BOOKMARK);
    EXPECT_EQ(table->SeekRow(bookmark, 0, &sought), MAPI_E_INVALID_BOOKMARK);
    EXPECT_EQ(table->FreeBookmark(BOOKMARK_CURRENT), S_OK);
}

TEST_F(TableTest, SortingMakesBookmarksInvalid)
{
    Fill(3);
    const auto table = Contents();
    BOOKMARK bookmark = 0;
    ASSERT_EQ(table->CreateBookmark(&bookmark), S_OK);
    Sort(*table, PR_SUBJECT_A, TABLE_SORT_ASCEND);
    EXPECT_EQ(table->SeekRow(bookmark, 0, nullptr), MAPI_E_INVALID_BOOKMARK);
    EXPECT_EQ(table->FreeBookmark(bookmark), S_OK);
}

TEST_F(TableTest, AssociatedMessagesHaveATable)
{
    Fill(2);
    Store().Messages().Create({Inbox, true}, Numbered(50));
    EXPECT_EQ(Rows(*Contents(false, true), 9), Numbers{50});
    EXPECT_EQ(Count(*Contents()), 2u);
}

TEST_F(TableTest, RecipientsAndAttachmentsAnswerSubRestrictions)
{
    Fill(1);
    MessageContent content = Numbered(7);
    content.recipients = std::vector<PropertySet>{Named("Ann"), Named("Bob")};
    AttachmentEdit edit;
    edit.properties.SetText(PR_ATTACH_FILENAME_W, "plan.pdf");
    content.attachments.push_back(edit);
    Store().Messages().Create({Inbox, false}, content);
    const auto table = Contents();
    table->Restrict(m_make.Sub(PR_MESSAGE_RECIPIENTS, m_make.Property(RELOP_EQ, NarrowValue(PR_DISPLAY_NAME_A, "bob"))),
                    0);
    EXPECT_EQ(Rows(*table, 9), Numbers{7});
    table->Restrict(
        m_make.Sub(PR_MESSAGE_ATTACHMENTS, m_make.Content(FL_SUBSTRING, NarrowValue(PR_ATTACH_FILENAME_A, ".pdf"))), 0);
    EXPECT_EQ(Rows(*table, 9), Numbers{7});
    table->Restrict(m_make.Sub(PR_MESSAGE_RECIPIENTS, m_make.Property(RELOP_EQ, NarrowValue(PR_DISPLAY_NAME_A, "cid"))),
                    0);
    EXPECT_EQ(Count(*table), 0u);
}

TEST_F(TableTest, TheHierarchyShowsDepthAndCounts)
{
    const FolderId a = Store().Folders().Create(Inbox, Named("a"));
    const FolderId b = Store().Folders().Create(a, Named("b"));
    Store().Messages().Create({b, false}, Mail("m"));
    const auto rows = [&](bool deep)
    { return CreateTable(MakeHierarchyRows(m_store, Inbox, deep, Computed(PR_ENTRYID)), {}); };
    EXPECT_EQ(Count(*rows(false)), 1u);
    const auto table = rows(true);
    EXPECT_EQ(Count(*table), 2u);
    Columns(*table, {PR_DISPLAY_NAME_A, PR_DEPTH, PR_SUBFOLDERS, PR_CONTENT_COUNT});
    SRowSet* set = nullptr;
    ASSERT_EQ(table->QueryRows(9, 0, &set), S_OK);
    ASSERT_EQ(set->cRows, 2u);
    EXPECT_STREQ(set->aRow[1].lpProps[0].Value.lpszA, "b");
    EXPECT_EQ(set->aRow[0].lpProps[1].Value.l, 1);
    EXPECT_EQ(set->aRow[1].lpProps[1].Value.l, 2);
    EXPECT_EQ(set->aRow[0].lpProps[2].Value.b, 1);
    EXPECT_EQ(set->aRow[1].lpProps[3].Value.l, 1);
    for (ULONG i = 0; i < set->cRows; ++i)
    {
        Free(set->aRow[i].lpProps);
    }
    Free(set);
    EXPECT_EQ(table->Restrict(m_make.Property(RELOP_EQ, NarrowValue(PR_DISPLAY_NAME_A, "B")), 0), S_OK);
    EXPECT_EQ(Count(*table), 1u);
}

TEST_F(TableTest, TheHierarchyFollowsItsCounts)
{
    const FolderId a = Store().Folders().Create(Inbox, Named("a"));
    const FolderId b = Store().Folders().Create(Inbox, Named("b"));
    const auto sorted = Hierarchy();
    Sort(*sorted, PR_CONTENT_COUNT, TABLE_SORT_DESCEND);
    EXPECT_EQ(Names(*sorted, 9), (Texts{"a", "b"}));
    const auto restricted = Hierarchy();
    restricted->Restrict(m_make.Not(m_make.Property(RELOP_EQ, LongValue(PR_CONTENT_UNREAD, 0))), 0);
    EXPECT_EQ(Count(*restricted), 0u);
    Store().Messages().Create({b, false}, Mail("m"));
    EXPECT_EQ(sorted->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    EXPECT_EQ(Names(*sorted, 9), (Texts{"b", "a"}));
    EXPECT_EQ(Count(*restricted), 1u);
    Store().Messages().Create({a, true}, Mail("hidden"));
    Sort(*sorted, PR_ASSOC_CONTENT_COUNT, TABLE_SORT_DESCEND);
    EXPECT_EQ(Names(*sorted, 9), (Texts{"a", "b"}));
}

// The next row after the one that was read and is gone.
TEST_F(TableTest, ADeletedFolderSkipsNone)
{
    std::vector<FolderId> folders;
    for (const char* name : {"a", "b", "c"})
    {
        folders.push_back(Store().Folders().Create(Inbox, Named(name)));
    }
    const auto table = Hierarchy();
    EXPECT_EQ(Names(*table, 1), Texts{"a"});
    Store().Folders().Delete(folders[0], true, true);
    EXPECT_EQ(Names(*table, 1), Texts{"b"});
    Store().Folders().Delete(folders[1], true, true);
    EXPECT_EQ(Names(*table, 9), Texts{"c"});
}

// More than the change log lists.
TEST_F(TableTest, ManyDeletionsSkipNone)
{
    Fill(300);
    const auto table = Contents();
    EXPECT_EQ(Rows(*table, 10).back(), 9);
    Store().Messages().Delete({m_messages.begin(), m_messages.begin() + 140});
    EXPECT_EQ(Rows(*table, 1), Numbers{140});
}

TEST_F(TableTest, ACursorAtTheEndReadsNoRowAgain)
{
    FolderId last = 0;
    for (const char* name : {"b", "c", "d"})
    {
        last = Store().Folders().Create(Inbox, Named(name));
    }
    const auto table = Hierarchy();
    EXPECT_EQ(table->SeekRow(BOOKMARK_END, 0, nullptr), S_OK);
    Store().Folders().SaveProperties(last, Named("a"));
    EXPECT_EQ(Names(*table, 9), Texts());
    Store().Folders().Create(Inbox, Named("e"));
    EXPECT_EQ(Names(*table, 9), Texts{"e"});
}

// What it changes into its own place counts as left.
TEST_F(TableTest, ACursorMovesToAChangedRow)
{
    Fill(5);
    const auto table = Contents();
    Sort(*table, PR_IMPORTANCE, TABLE_SORT_ASCEND);
    BOOKMARK bookmark = 0;
    EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 1, nullptr), S_OK);
    EXPECT_EQ(table->CreateBookmark(&bookmark), S_OK);
    Store().Messages().Delete({m_messages[1]});
    Store().Messages().Save(m_messages[2], Numbered(2), 0);
    EXPECT_EQ(Rows(*table, 1), Numbers{2});
    EXPECT_EQ(table->SeekRow(bookmark, 0, nullptr), MAPI_W_POSITION_CHANGED);
    EXPECT_EQ(Rows(*table, 1), Numbers{2});
}

TEST_F(TableTest, AFailedAllocationLeavesTheCursor)
{
    Fill(5);
    const auto table = Contents();
    Columns(*table, {PR_IMPORTANCE});
    int failed = 0;
    for (unsigned long n = 1;; ++n)
    {
        Switches switches;
        switches.failingAllocation = n;
        ApplySwitches(switches);
        SRowSet* set = nullptr;
        const HRESULT code = table->QueryRows(3, 0, &set);
        const bool happened = FaultHappened();
        ApplySwitches({});
        if (!happened)
        {
            EXPECT_EQ(code, S_OK);
            EXPECT_EQ(set->aRow[0].lpProps[0].Value.l, 0) << "the cursor had stayed";
            for (ULONG i = 0; i < set->cRows; ++i)
            {
                Free(set->aRow[i].lpProps);
            }
            Free(set);
            break;
        }
        ++failed;
        EXPECT_EQ(code, MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(set, nullptr);
    }
    EXPECT_EQ(failed, 4) << "the set and each of its rows";
}

TEST_F(TableTest, MemoryRowsAreReplacedUnderTables)
{
    const auto row = [](LONG number)
    {
        PropertySet set;
        set.SetLong(PR_IMPORTANCE, number);
        return set;
    };
    const auto rows = std::make_shared<MemoryRows>(std::vector<PropertySet>{row(1), row(2), row(3)});
    const auto table = CreateTable(rows, {});
    EXPECT_EQ(Rows(*table, 1), Numbers{1});
    rows->Replace({row(0), row(2), row(3)}, {9, 2, 3});
    EXPECT_EQ(Count(*table), 3u);
    EXPECT_EQ(Rows(*table, 9), (Numbers{2, 3}));
    EXPECT_EQ(CodeOf([&] { rows->Replace({row(1)}, {1, 2}); }), MAPI_E_INVALID_PARAMETER);
}

TEST_F(TableTest, ATableStatesItsLimits)
{
    const auto table = Contents();
    ULONG_PTR connection = 1;
    EXPECT_EQ(table->Advise(fnevTableModified, nullptr, &connection), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(connection, 0u);
    ULONG status = 1;
    ULONG type = 1;
    EXPECT_EQ(table->GetStatus(&status, &type), S_OK);
    EXPECT_EQ(status, ULONG(TBLSTAT_COMPLETE));
    EXPECT_EQ(type, ULONG(TBLTYPE_DYNAMIC));
    EXPECT_EQ(table->Abort(), S_OK);
    EXPECT_EQ(table->GetRowCount(0x40, &type), MAPI_E_UNKNOWN_FLAGS);
}

TEST_F(TableTest, EachTableRowTakesEightBytes)
{
    Fill(3000);
    TableView view(MakeContentsRows(m_store, {Inbox, false}, nullptr));
    EXPECT_EQ(view.Count(), 3000u);
    EXPECT_EQ(view.Take(50, true).size(), 50u);
    EXPECT_EQ(view.MemoryUsed(), 0u) << "counting and the first rows need no keys";
    LONG moved = 0;
    view.Seek(BOOKMARK_BEGINNING, 2500, moved);
    EXPECT_EQ(view.MemoryUsed(), 3000u * 8);
    EXPECT_EQ(view.Take(1, true)[0], m_messages[2500]);
}

} // namespace
} // namespace zebstore::test
