// What a table tells of the changes of its rows.
#include "tests/zebstore/storage/NotifyTables.h"

#include "zebstore/storage/Database.h"
#include "zebstore/storage/MemoryRows.h"

#include <random>

namespace zebstore::test
{
namespace
{

using NotifyTest = NotifyTables;
using Events = std::vector<ULONG>;

TEST_F(NotifyTest, RowChangesAreReportedSeparately)
{
    const MessageId first = Add(1);
    Followed followed(Contents());
    const MessageId second = Add(2);
    ASSERT_TRUE(followed.Sink().Receives(1));
    Change(first, 9);
    ASSERT_TRUE(followed.Sink().Receives(2));
    Store().Messages().Delete({first});
    ASSERT_TRUE(followed.Sink().Receives(3));
    EXPECT_EQ(followed.Sink().Events(), (Events{TABLE_ROW_ADDED, TABLE_ROW_MODIFIED, TABLE_ROW_DELETED}));
    ExpectFollowed(followed);
    EXPECT_EQ(followed.Sink().Rows().size(), 1u);
    Store().Messages().Delete({second});
    EXPECT_TRUE(followed.Sink().Becomes({}));
}

TEST_F(NotifyTest, ASortedTableReportsNewPositions)
{
    Add(10);
    const MessageId middle = Add(20);
    Add(30);
    Followed followed(Sorted(Contents(), PR_IMPORTANCE, TABLE_SORT_DESCEND));
    Add(25);
    ASSERT_TRUE(followed.Sink().Receives(1));
    ExpectFollowed(followed);
    Change(middle, 99);
    ASSERT_TRUE(followed.Sink().Receives(2));
    ExpectFollowed(followed);
    Change(middle, 1);
    ASSERT_TRUE(followed.Sink().Receives(3));
    ExpectFollowed(followed);
    EXPECT_EQ(followed.Sink().Events(), (Events{TABLE_ROW_ADDED, TABLE_ROW_MODIFIED, TABLE_ROW_MODIFIED}));
}

TEST_F(NotifyTest, RowsEnterAndLeaveTheRestriction)
{
    const MessageId message = Add(50);
    Followed followed(Restricted(Contents(), 10));
    Change(message, 5);
    ASSERT_TRUE(followed.Sink().Receives(1));
    Change(message, 6);
    ASSERT_TRUE(followed.Sink().Receives(2));
    Change(message, 60);
    ASSERT_TRUE(followed.Sink().Receives(3));
    Change(message, 70); // of no concern
    Add(7);
    ASSERT_TRUE(followed.Sink().Receives(4));
    EXPECT_EQ(followed.Sink().Events(),
              (Events{TABLE_ROW_ADDED, TABLE_ROW_MODIFIED, TABLE_ROW_DELETED, TABLE_ROW_ADDED}));
    ExpectFollowed(followed);
}

TEST_F(NotifyTest, AMoveDeletesAndAdds)
{
    const MessageId message = Add(1);
    Followed from(Contents());
    Followed to(Contents(Archive));
    Store().Messages().Move({message}, Archive);
    ASSERT_TRUE(from.Sink().Receives(1));
    ASSERT_TRUE(to.Sink().Receives(1));
    EXPECT_EQ(from.Sink().Events(), Events{TABLE_ROW_DELETED});
    EXPECT_EQ(to.Sink().Events(), Events{TABLE_ROW_ADDED});
    ExpectFollowed(from);
    ExpectFollowed(to);
}

TEST_F(NotifyTest, FolderChangesAreReported)
{
    const FolderId top = IdOf(StandardFolder::IpmSubtree);
    Followed children(Hierarchy(top, false));
    Followed tree(Hierarchy(IdOf(StandardFolder::Root), true));
    const auto expect = [&](const char* what, const Events& ofChildren)
    {
        SCOPED_TRACE(what);
        ASSERT_TRUE(children.Sink().Receives(ofChildren.size()));
        ExpectFollowed(children);
        ExpectFollowed(tree);
        EXPECT_EQ(children.Sink().Events(), ofChildren);
        children.Sink().Start(children.Sink().Rows());
    };
    const FolderId box = Store().Folders().Create(top, Named("Box"));
    expect("created", {TABLE_ROW_ADDED});
    const FolderId inner = Store().Folders().Create(box, Named("Inner"));
    expect("a subfolder made", {TABLE_ROW_MODIFIED});
    Store().Folders().SaveProperties(box, Named("Zebra"));
    expect("renamed", {TABLE_ROW_MODIFIED});
    Store().Messages().Create({box, false}, Mail("unread"));
    expect("a message more", {TABLE_ROW_MODIFIED});
    Store().Folders().Move(inner, top, "");
    expect("moved up", {TABLE_ROW_ADDED, TABLE_ROW_MODIFIED}); // in the order of their names
    Store().Folders().Delete(box, true, true);
    expect("deleted", {TABLE_ROW_DELETED});
}

TEST_F(NotifyTest, TooManyChangesBecomeOne)
{
    const auto addAtOnce = [&](int count)
    {
        const std::lock_guard hold(Store().Lock());
        for (int i = 0; i < count; ++i)
        {
            Add(i);
        }
    };
    Followed followed(Contents());
    addAtOnce(128);
    ASSERT_TRUE(followed.Sink().Receives(128));
    ExpectFollowed(followed);
    followed.Sink().Start({});
    addAtOnce(129);
    ASSERT_TRUE(followed.Sink().HearsWhole());
    EXPECT_EQ(followed.Sink().Events(), Events{TABLE_CHANGED});
    followed.Sink().Start(ReadCopy(followed.Table()));
    Add(1000);
    ASSERT_TRUE(followed.Sink().Receives(1));
    ExpectFollowed(followed);
}

TEST_F(NotifyTest, ResortedTablesReportTheirNewOrder)
{
    for (LONG i = 0; i < 10; ++i)
    {
        Add(i * 10);
    }
    Followed followed(Contents());
    const auto expectTold = [&](LONG number)
    {
        followed.Sink().Start(ReadCopy(followed.Table()));
        Add(number);
        ASSERT_TRUE(followed.Sink().Receives(1));
        ExpectFollowed(followed);
    };
    expectTold(15);
    Sorted(followed.TablePointer(), PR_IMPORTANCE, TABLE_SORT_DESCEND);
    expectTold(25);
    Restricted(followed.TablePointer(), 50);
    expectTold(35);
    ASSERT_EQ(followed.Table().SortTable(SortSet({}).Get(), 0), S_OK);
    ASSERT_EQ(followed.Table().Restrict(nullptr, 0), S_OK);
    expectTold(45);
}

TEST_F(NotifyTest, NewColumnsComeWithLaterRows)
{
    Followed followed(Contents());
    Add(7);
    ASSERT_TRUE(followed.Sink().Receives(1));
    EXPECT_EQ(followed.Sink().Rows().at(0).cells.size(), 3u);
    ASSERT_EQ(followed.Table().SetColumns(TagArray({PR_IMPORTANCE, PR_INSTANCE_KEY}).Get(), 0), S_OK);
    Add(8);
    ASSERT_TRUE(followed.Sink().Receives(2));
    EXPECT_EQ(followed.Sink().Rows().at(1).cells.size(), 2u);
}

TEST_F(NotifyTest, ReplacedMemoryRowsChangeTheTable)
{
    PropertySet row;
    row.SetLong(PR_IMPORTANCE, 1);
    const auto rows = std::make_shared<MemoryRows>(std::vector<PropertySet>{row});
    const Ref<IMAPITable> table = CreateTable(rows, {});
    const Ref<CopyingSink> sink = Ref<CopyingSink>::Adopt(new CopyingSink);
    ULONG_PTR connection = 0;
    ASSERT_EQ(table->Advise(fnevTableModified, sink.Get(), &connection), S_OK);
    rows->Replace({row, row});
    ASSERT_TRUE(sink->HearsWhole());
    EXPECT_EQ(sink->Events(), Events{TABLE_CHANGED});
}

TEST_F(NotifyTest, AnUnbuildableRowIsAnError)
{
    Followed followed(Sorted(Contents(), PR_IMPORTANCE));
    Switches switches;
    switches.failingAllocation = 1;
    ApplySwitches(switches);
    Add(1);
    EXPECT_TRUE(followed.Sink().Receives(2));
    EXPECT_TRUE(FaultHappened());
    ApplySwitches({});
    EXPECT_EQ(followed.Sink().Events(), (Events{TABLE_ERROR, TABLE_CHANGED}));
    EXPECT_EQ(ReadCopy(followed.Table()).size(), 1u);
    followed.Sink().Start(ReadCopy(followed.Table()));
    Add(2);
    ASSERT_TRUE(followed.Sink().Receives(1));
    ExpectFollowed(followed);
}

TEST_F(NotifyTest, AnEmptiedFolderReloads)
{
    Add(1);
    Add(2);
    Followed followed(Sorted(Contents(), PR_SUBJECT_A));
    Store().Folders().Empty(Inbox, false);
    ASSERT_TRUE(followed.Sink().HearsWhole());
    EXPECT_EQ(followed.Sink().Events(), Events{TABLE_RELOAD});
    EXPECT_TRUE(ReadCopy(followed.Table()).empty());
}

TEST_F(NotifyTest, AnotherConnectionsCommitsAreReported)
{
    const auto other = StoreFile::Open(Path("test.zeb"), {});
    Followed followed(Sorted(Contents(), PR_SUBJECT_A));
    const MessageId message = other->Messages().Create({Inbox, false}, Numbered(3));
    ASSERT_TRUE(followed.Sink().Receives(1));
    other->Messages().Delete({message});
    ASSERT_TRUE(followed.Sink().Receives(2));
    EXPECT_EQ(followed.Sink().Events(), (Events{TABLE_ROW_ADDED, TABLE_ROW_DELETED}));
}

// Any changes, in any order, alone and many in one transaction, under tables of every kind: who follows has the rows.
TEST_F(NotifyTest, ACopyEqualsAFreshRead)
{
    std::vector<Followed> tables;
    std::vector<MessageId> messages;
    for (LONG i = 0; i < 20; ++i)
    {
        messages.push_back(Add(i * 5));
    }
    tables.emplace_back(Contents());
    tables.emplace_back(Sorted(Contents(), PR_SUBJECT_A));
    tables.emplace_back(Sorted(Contents(), PR_IMPORTANCE, TABLE_SORT_DESCEND));
    tables.emplace_back(Restricted(Contents(), 50));
    tables.emplace_back(Restricted(Sorted(Contents(), PR_SUBJECT_A, TABLE_SORT_DESCEND), 50));
    tables.emplace_back(Contents(Archive));
    tables.emplace_back(Hierarchy(IdOf(StandardFolder::Root), true));
    tables.emplace_back(Sorted(Hierarchy(IdOf(StandardFolder::Root), true), PR_CONTENT_COUNT));
    std::mt19937 random(20261121);
    const auto below = [&](size_t count) { return static_cast<size_t>(random() % count); };
    std::vector<FolderId> folders = {IdOf(StandardFolder::IpmSubtree)};
    const auto changeOnce = [&]
    {
        const size_t at = below(messages.size());
        switch (below(7))
        {
        case 0:
        case 1:
            messages.push_back(Add(static_cast<LONG>(below(100))));
            break;
        case 2:
        case 3:
            Change(messages[at], static_cast<LONG>(below(100)));
            break;
        case 4:
            if (messages.size() < 5)
            {
                return;
            }
            Store().Messages().Delete({messages[at]});
            messages.erase(messages.begin() + static_cast<std::ptrdiff_t>(at));
            break;
        case 5:
            messages[at] = Store().Messages().Move(
                {messages[at]}, ContentsKey::Of(messages[at]).Folder() == Inbox ? Archive : Inbox)[0];
            break;
        default:
            if (folders.size() < 12)
            {
                folders.push_back(
                    Store().Folders().Create(folders[below(folders.size())], Named("f" + std::to_string(random()))));
            }
            else
            {
                Store().Folders().SaveProperties(folders[1 + below(folders.size() - 1)],
                                                 Named("r" + std::to_string(random())));
            }
        }
    };
    for (int round = 0; round < 60; ++round)
    {
        {
            const std::lock_guard hold(Store().Lock());
            for (size_t i = below(8) + 1; i-- > 0;)
            {
                changeOnce();
            }
        }
        for (size_t i = 0; i < tables.size(); ++i)
        {
            SCOPED_TRACE("table " + std::to_string(i) + ", round " + std::to_string(round));
            ExpectFollowed(tables[i]);
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(NotifyTest, AnUnreadableChangeListIsFound)
{
    Add(1);
    EXPECT_TRUE(Store().CheckWhole().empty());
    const auto spoil = [&](const char* recent)
    {
        Store().Connection().Db().Execute(
            (std::string("UPDATE contents SET recent=") + recent + " WHERE container=6").c_str());
        const std::vector<std::string> problems = Store().CheckWhole();
        return problems.empty() ? std::string() : problems[0];
    };
    const std::string found = "folder 3: its list of recent changes cannot be read";
    EXPECT_EQ(spoil("x'0102'"), found);
    EXPECT_EQ(spoil("x'0700000000000000'"), found) << "an event that there is not";
    EXPECT_EQ(spoil("zeroblob(1032)"), found) << "too many";
    EXPECT_EQ(spoil("zeroblob(1024)"), "");
}

TEST_F(NotifyTest, TheCursorStaysAtItsRow)
{
    std::vector<MessageId> messages;
    for (LONG i = 0; i < 6; ++i)
    {
        messages.push_back(Add(i * 10));
    }
    const auto table = Sorted(Contents(), PR_IMPORTANCE);
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 3, nullptr), S_OK);
    BOOKMARK bookmark = 0;
    ASSERT_EQ(table->CreateBookmark(&bookmark), S_OK);
    const auto next = [&](BOOKMARK origin)
    {
        SRowSet* set = nullptr;
        const HRESULT found = table->SeekRow(origin, 0, nullptr);
        EXPECT_EQ(table->QueryRows(1, TBL_NOADVANCE, &set), S_OK);
        const LONG number = set->cRows ? set->aRow[0].lpProps[1].Value.l : -1;
        if (set->cRows)
        {
            Free(set->aRow[0].lpProps);
        }
        Free(set);
        return std::make_pair(number, found);
    };
    const auto at = [](LONG number, HRESULT result = S_OK) { return std::make_pair(number, result); };
    Add(5);
    Add(25);
    EXPECT_EQ(next(BOOKMARK_CURRENT), at(30));
    Store().Messages().Delete({messages[0], messages[5]});
    EXPECT_EQ(next(bookmark), at(30));
    Change(messages[3], 1);
    EXPECT_EQ(next(BOOKMARK_CURRENT), at(1)) << "the row has moved, and the cursor with it";
    EXPECT_EQ(next(bookmark), at(1));
    Store().Messages().Delete({messages[3]});
    EXPECT_EQ(next(BOOKMARK_CURRENT), at(5));
    EXPECT_EQ(next(bookmark), at(5, MAPI_W_POSITION_CHANGED));
    ASSERT_EQ(table->SeekRow(BOOKMARK_END, 0, nullptr), S_OK);
    Add(99);
    EXPECT_EQ(next(BOOKMARK_CURRENT), at(99)) << "what comes at the end comes after the cursor";
}

TEST_F(NotifyTest, APlainTablesCursorStays)
{
    std::vector<MessageId> messages;
    for (LONG i = 0; i < 6; ++i)
    {
        messages.push_back(Add(i));
    }
    const auto table = Contents();
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 3, nullptr), S_OK);
    Store().Messages().Delete({messages[0], messages[4]});
    ULONG row = 0;
    ULONG unused = 0;
    EXPECT_EQ(table->QueryPosition(&row, &unused, &unused), S_OK);
    EXPECT_EQ(row, 2u);
    EXPECT_EQ(ReadCopy(*table).size(), 4u);
}

} // namespace
} // namespace zebstore::test
