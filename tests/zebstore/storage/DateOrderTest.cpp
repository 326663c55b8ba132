// That the first rows in the order of dates come from the index, and are those of the whole order.
#include "tests/zebstore/storage/Storage.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/Repair.h"
#include "zebstore/tables/TableView.h"

#include <random>

namespace zebstore::test
{
namespace
{

std::unique_ptr<SortOrder> ByDate(ULONG direction = TABLE_SORT_DESCEND)
{
    return std::make_unique<SortOrder>(*SortSet({{PR_CLIENT_SUBMIT_TIME, direction},
                                                 {PR_MESSAGE_DELIVERY_TIME, TABLE_SORT_DESCEND},
                                                 {PR_SUBJECT_W, TABLE_SORT_ASCEND}}));
}

class DateOrderTest : public StorageTest
{
protected:
    std::shared_ptr<RowSource> Rows(FolderId folder = Inbox)
    {
        return MakeContentsRows(m_store, {folder, false}, nullptr);
    }

    /// Few dates, so that many rows are equal by them; one message in ten has none.
    MessageContent Random()
    {
        MessageContent content = Mail("subject " + std::to_string(m_random() % 7));
        const auto add = [&](ULONG tag)
        {
            if (m_random() % 10 != 0)
            {
                const std::int64_t time = static_cast<std::int64_t>(m_random() % 200) - 3;
                content.properties.SetEncoded(tag, {reinterpret_cast<const char*>(&time), sizeof(time)});
            }
        };
        add(PR_CLIENT_SUBMIT_TIME);
        add(PR_MESSAGE_DELIVERY_TIME);
        return content;
    }
    MessageId Create(FolderId folder = Inbox) { return Store().Messages().Create({folder, false}, Random()); }
    MessageId At(std::int64_t date)
    {
        MessageContent content = Mail("at " + std::to_string(date));
        content.properties.SetEncoded(PR_CLIENT_SUBMIT_TIME, {reinterpret_cast<const char*>(&date), sizeof(date)});
        return Store().Messages().Create({Inbox, false}, content);
    }
    void Fill(size_t count)
    {
        StoreTransaction transaction(Store().Connection());
        for (size_t i = 0; i < count; ++i)
        {
            m_messages.push_back(Create());
        }
        transaction.Commit();
    }
    std::int64_t Waiting()
    {
        Query query(Store().Connection().Db(), "SELECT count(*) FROM message WHERE parts & 16");
        return query.Step() ? query.Number(0) : -1;
    }
    /// The rows of a view, by reads of so many.
    static std::vector<RowKey> KeysOf(TableView& view, LONG each, size_t count)
    {
        std::vector<RowKey> keys;
        while (keys.size() < count)
        {
            const std::vector<RowKey> more = view.Take(each, true);
            if (more.empty())
            {
                break;
            }
            keys.insert(keys.end(), more.begin(), more.end());
        }
        keys.resize(std::min(keys.size(), count));
        return keys;
    }
    void ExpectFirstRows(FolderId folder = Inbox)
    {
        for (const ULONG direction : {TABLE_SORT_DESCEND, TABLE_SORT_ASCEND})
        {
            const std::unique_ptr<SortOrder> order = ByDate(direction);
            const std::vector<RowKey> all = Rows(folder)->Keys(nullptr, order.get());
            for (const size_t count : {size_t(1), size_t(70), all.size(), all.size() + 1})
            {
                std::vector<RowKey> expected = all;
                expected.resize(std::min(count, all.size()));
                EXPECT_EQ(Rows(folder)->FirstKeys(*order, count).value(), expected) << direction << ", " << count;
            }
        }
    }

    std::mt19937 m_random{3};
    std::vector<MessageId> m_messages;
};

TEST_F(DateOrderTest, FirstRowsAreThoseOfAll)
{
    const FolderId other = IdOf(StandardFolder::SentItems);
    ExpectFirstRows();
    for (int round = 0; round < 8; ++round)
    {
        Fill(400);
        for (int i = 0; i < 60; ++i)
        {
            MessageId& message = m_messages[m_random() % m_messages.size()];
            switch (m_random() % 4)
            {
            case 0:
                Store().Messages().Save(message, Random(), 0);
                break;
            case 1:
                Store().Messages().Delete({message});
                message = Create();
                break;
            case 2:
                Store().Messages().Move({message}, other);
                message = Create();
                break;
            default:
                Store().Messages().Copy({message}, other);
                break;
            }
        }
        ExpectFirstRows();
        ExpectFirstRows(other);
    }
    EXPECT_TRUE(Store().CheckWhole().empty());
}

TEST_F(DateOrderTest, FewRowsWait)
{
    Fill(2047);
    EXPECT_EQ(Waiting(), 2047);
    Fill(1);
    EXPECT_EQ(Waiting(), 1);
    Fill(600);
    EXPECT_EQ(Waiting(), 601);
    Store().Messages().Save(m_messages.back(), Mail("changed"), 0);
    EXPECT_EQ(Waiting(), 600);
    ExpectFirstRows();
}

TEST_F(DateOrderTest, ViewReadsOnlyFirstRows)
{
    Fill(3000);
    const std::vector<RowKey> all = Rows()->Keys(nullptr, ByDate().get());
    TableView view(Rows());
    view.Sort(ByDate());
    EXPECT_EQ(view.Count(), 3000u);
    EXPECT_EQ(KeysOf(view, 50, 50), std::vector<RowKey>(all.begin(), all.begin() + 50));
    EXPECT_LE(view.MemoryUsed(), 200 * sizeof(RowKey));
    EXPECT_EQ(view.Position(), 50u);
    LONG moved = 0;
    view.Seek(BOOKMARK_BEGINNING, 0, moved);
    EXPECT_EQ(KeysOf(view, 7, 3001), all);
    EXPECT_GE(view.MemoryUsed(), 3000 * sizeof(RowKey));
    EXPECT_EQ(view.Position(), 3000u);
}

TEST_F(DateOrderTest, CursorMovesAsInLoadedView)
{
    Fill(1500);
    const auto play = [&](TableView& view)
    {
        LONG moved = 0;
        view.Seek(BOOKMARK_BEGINNING, 30, moved);
        std::vector<RowKey> seen = view.Take(20, true);
        view.Seek(BOOKMARK_CURRENT, -5, moved);
        for (const LONG count : {-3, 4, 900})
        {
            const std::vector<RowKey> keys = view.Take(count, true);
            seen.insert(seen.end(), keys.begin(), keys.end());
            seen.push_back(view.Position());
        }
        view.Seek(BOOKMARK_END, -2, moved);
        seen.push_back(moved);
        const std::vector<RowKey> last = view.Take(10, true);
        seen.insert(seen.end(), last.begin(), last.end());
        return seen;
    };
    TableView lazy(Rows());
    lazy.Sort(ByDate());
    TableView loaded(Rows());
    loaded.Sort(ByDate());
    loaded.Follow(true);
    EXPECT_EQ(play(lazy), play(loaded));
}

TEST_F(DateOrderTest, CursorStaysAtItsRow)
{
    Fill(600);
    for (const bool isGone : {false, true})
    {
        TableView view(Rows());
        view.Sort(ByDate());
        view.Take(10, true);
        const std::vector<RowKey> next = view.Take(2, false);
        At(1000);
        if (isGone)
        {
            Store().Messages().Delete({next[0]});
        }
        view.Sync();
        EXPECT_EQ(view.Take(1, false), std::vector<RowKey>{next[isGone ? 1 : 0]});
        EXPECT_EQ(view.Position(), 11u);
    }
}

TEST_F(DateOrderTest, CursorStaysThroughManyChanges)
{
    Fill(600);
    TableView view(Rows());
    view.Sort(ByDate());
    view.Take(10, true);
    const std::vector<RowKey> next = view.Take(1, false);
    for (int i = 0; i < 300; ++i) // more than are listed
    {
        At(1000 + i);
    }
    view.Sync();
    EXPECT_EQ(view.Take(1, false), next);
    EXPECT_EQ(view.Position(), 310u);
}

TEST_F(DateOrderTest, AViewShowsItsLastSync)
{
    Fill(600);
    TableView view(Rows());
    view.Sort(ByDate());
    EXPECT_EQ(view.Count(), 600u);
    const std::vector<RowKey> first = view.Take(1, false);
    const MessageId message = At(1000);
    EXPECT_EQ(view.Count(), 600u);
    EXPECT_EQ(view.Take(1, false), first);
    view.Sync();
    EXPECT_EQ(view.Count(), 601u);
    LONG moved = 0;
    view.Seek(BOOKMARK_BEGINNING, 0, moved);
    EXPECT_EQ(view.Take(1, false), std::vector<RowKey>{message});
}

TEST_F(DateOrderTest, BookmarksOfUnreadViewStay)
{
    Fill(100);
    TableView view(Rows());
    view.Sort(ByDate());
    const BOOKMARK bookmark = view.CreateBookmark();
    const std::vector<RowKey> first = view.Take(1, false);
    At(1000);
    view.Sync();
    LONG moved = 0;
    EXPECT_EQ(view.Seek(bookmark, 0, moved), S_OK);
    EXPECT_EQ(view.Take(1, false), first);
}

TEST_F(DateOrderTest, OlderFilesHaveTheFirstRowsToo)
{
    Fill(700);
    const std::vector<RowKey> all = Rows()->Keys(nullptr, ByDate().get());
    MakeOlder(Store(), 4);
    m_store.reset();
    StoreFile::OpenOptions reading;
    reading.readOnly = true;
    m_store = StoreFile::Open(Path("test.zeb"), reading);
    EXPECT_EQ(Store().Version(), 4);
    EXPECT_FALSE(Rows()->FirstKeys(*ByDate(), 1));
    TableView view(Rows());
    view.Sort(ByDate());
    EXPECT_EQ(KeysOf(view, 50, 701), all);
    Reopen();
    EXPECT_EQ(Store().Version(), SchemaVersion);
    EXPECT_EQ(Waiting(), 0);
    ExpectFirstRows();
}

TEST_F(DateOrderTest, RowsThatWaitTooLongAreRepaired)
{
    Fill(2100);
    Store().Connection().Db().Execute("UPDATE message SET parts=parts | 16 WHERE id & 4294967295 IN (5, 2100)");
    const std::vector<std::string> problems = Store().CheckWhole();
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].find("it is not in the index by date"), std::string::npos) << problems[0];
    std::vector<std::string> found;
    RepairStore(Store(),
                {[&](const std::string& text) { found.push_back(text); }, [](std::uint64_t, std::uint64_t) {}});
    EXPECT_EQ(found, std::vector<std::string>{"1 messages were not in the index by date: added"});
    ExpectFirstRows();
}

} // namespace
} // namespace zebstore::test
