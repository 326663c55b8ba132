// That the first rows in the order of dates come from runs of dates, and are those of the whole order.
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
    std::vector<std::int64_t> Numbers(const std::string& sql)
    {
        return Query(Store().Connection().Db(), sql).Numbers();
    }
    /// The numbers of the first messages of the groups that have a run.
    std::vector<std::int64_t> Runs() { return Numbers("SELECT id & 4294967295 FROM date_run ORDER BY id"); }
    std::vector<std::string> Repaired()
    {
        std::vector<std::string> found;
        RepairStore(Store(),
                    {[&](const std::string& text) { found.push_back(text); }, [](std::uint64_t, std::uint64_t) {}});
        return found;
    }
    /// From the file, by the store's connection since it was opened.
    std::int64_t PagesRead()
    {
        int misses = 0;
        int greatest = 0;
        sqlite3_db_status(Store().Connection().Db().Handle(), SQLITE_DBSTATUS_CACHE_MISS, &misses, &greatest, 0);
        return misses;
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

TEST_F(DateOrderTest, FullGroupsHaveRuns)
{
    Fill(255);
    EXPECT_EQ(Runs(), std::vector<std::int64_t>{});
    Fill(1);
    EXPECT_EQ(Runs(), std::vector<std::int64_t>{0});
    Fill(600);
    EXPECT_EQ(Runs(), (std::vector<std::int64_t>{0, 256, 512}));
    EXPECT_EQ(Numbers("SELECT length(dates) / 9 FROM date_run ORDER BY id"),
              (std::vector<std::int64_t>{255, 256, 256}));
    ExpectFirstRows();
}

TEST_F(DateOrderTest, EmptyGroupsHaveNone)
{
    Fill(700);
    const std::vector<MessageId> first(m_messages.begin(), m_messages.begin() + 255);
    const std::vector<MessageId> second(m_messages.begin() + 255, m_messages.begin() + 511);
    Store().Messages().Delete({first.begin(), first.end() - 1});
    EXPECT_EQ(Runs(), (std::vector<std::int64_t>{0, 256}));
    Store().Messages().Delete({first.back()});
    EXPECT_EQ(Runs(), std::vector<std::int64_t>{256});
    Store().Messages().Move(second, IdOf(StandardFolder::SentItems));
    EXPECT_EQ(Runs(), std::vector<std::int64_t>{0}) << "the run of the target";
    ExpectFirstRows();
    ExpectFirstRows(IdOf(StandardFolder::SentItems));
}

TEST_F(DateOrderTest, EmptiedFoldersHaveNone)
{
    Fill(600);
    Store().Folders().Empty(Inbox, false);
    EXPECT_EQ(Runs(), std::vector<std::int64_t>{});
    Fill(600);
    EXPECT_EQ(Runs(), (std::vector<std::int64_t>{512, 768}));
    ExpectFirstRows();
}

TEST_F(DateOrderTest, MessagesInAttachmentsHaveNone)
{
    MessageContent content = Mail("outer");
    content.attachments.resize(300);
    for (ULONG number = 0; number < 300; ++number)
    {
        content.attachments[number].number = number;
        content.attachments[number].embedded = std::make_shared<MessageContent>(Random());
    }
    const MessageId message = Store().Messages().Create({Inbox, false}, content);
    EXPECT_EQ(Runs(), std::vector<std::int64_t>{});
    Store().Messages().Delete({message});
}

// Of a mailbox whose messages are deleted soon after they came.
TEST_F(DateOrderTest, FewAreLeftOfManyGroups)
{
    Fill(4000);
    std::vector<MessageId> most;
    for (size_t i = 0; i < m_messages.size(); ++i)
    {
        if (i % 50 != 0)
        {
            most.push_back(m_messages[i]);
        }
    }
    Store().Messages().Delete(most);
    EXPECT_EQ(Runs().size(), 15u);
    ExpectFirstRows();
}

TEST_F(DateOrderTest, ManyHaveOneDate)
{
    StoreTransaction transaction(Store().Connection());
    for (int i = 0; i < 12000; ++i)
    {
        At(i < 11990 ? 7 : i);
    }
    transaction.Commit();
    const std::vector<RowKey> all = Rows()->Keys(nullptr, ByDate().get());
    EXPECT_FALSE(Rows()->FirstKeys(*ByDate(), 50)) << "reading all is not slower";
    const std::vector<RowKey> first(all.begin(), all.begin() + 10);
    EXPECT_EQ(Rows()->FirstKeys(*ByDate(), 10), first);
    TableView view(Rows());
    view.Sort(ByDate());
    EXPECT_EQ(KeysOf(view, 50, 12000), all);
}

TEST_F(DateOrderTest, DeletedMessagesLeaveTheirRuns)
{
    const auto lengths = [&] { return Numbers("SELECT length(dates) / 9 FROM date_run ORDER BY id"); };
    Fill(600);
    std::shuffle(m_messages.begin(), m_messages.end(), m_random);
    Store().Messages().Delete({m_messages.begin(), m_messages.begin() + 100});
    const std::int64_t closed = Numbers("SELECT count(*) FROM message WHERE id & 4294967295 < 512")[0];
    const std::vector<std::int64_t> listed = lengths();
    ASSERT_EQ(listed.size(), 2u);
    EXPECT_LT(closed, 511);
    EXPECT_EQ(listed[0] + listed[1], closed);
    EXPECT_EQ(Store().CheckWhole(), std::vector<std::string>{}) << "first and last are right, too";
    ExpectFirstRows();
}

TEST_F(DateOrderTest, DeletionLeavesADamagedRunDamaged)
{
    Fill(600);
    Store().Connection().Db().Execute("UPDATE date_run SET sum=sum+1");
    const auto runs = [&] { return Numbers("SELECT sum + first + last + length(dates) FROM date_run ORDER BY id"); };
    const std::vector<std::int64_t> before = runs();
    Store().Messages().Delete({m_messages[9]});
    EXPECT_EQ(runs(), before);
    EXPECT_EQ(CodeOf([&] { Rows()->FirstKeys(*ByDate(), 500); }), MAPI_E_CORRUPT_STORE);
    EXPECT_EQ(Repaired(), std::vector<std::string>{"2 runs of dates did not match their messages: rebuilt"});
}

TEST_F(DateOrderTest, LargeFoldersAreListedByTheirRuns)
{
    Fill(6000);
    std::vector<MessageId> deleted;
    for (size_t i = 0; i < m_messages.size(); i += 7)
    {
        deleted.push_back(m_messages[i]);
    }
    Store().Messages().Delete(deleted);
    const std::vector<RowKey> expected = Numbers("SELECT id FROM message ORDER BY id");
    ASSERT_EQ(expected.size(), 5142u);
    Reopen();
    EXPECT_EQ(Rows()->Keys(nullptr, nullptr), expected);
    EXPECT_LE(PagesRead(), Numbers("PRAGMA page_count")[0] / 4);
}

TEST_F(DateOrderTest, LargeFoldersWithWrongRunsAreRead)
{
    Fill(6000);
    const std::string run = " WHERE id & 4294967295 = 512";
    for (const std::string& damage : std::vector<std::string>{
             "UPDATE date_run SET sum=sum+1" + run, "DELETE FROM date_run" + run,
             "DELETE FROM message WHERE id & 4294967295 = 700; UPDATE contents SET rows=rows-1 WHERE rows=6000"})
    {
        SCOPED_TRACE(damage);
        Store().Connection().Db().Execute(damage.c_str());
        Reopen();
        EXPECT_EQ(Rows()->Keys(nullptr, nullptr), Numbers("SELECT id FROM message ORDER BY id"));
    }
    EXPECT_NE(Repaired(), std::vector<std::string>{});
}

TEST_F(DateOrderTest, CompactingForgetsDeletedMessages)
{
    Fill(600);
    const auto lengths = [&] { return Numbers("SELECT length(dates) / 9 FROM date_run ORDER BY id"); };
    Store().Connection().Db().Execute("CREATE TEMP TABLE former AS SELECT * FROM date_run");
    Store().Messages().Delete({m_messages.begin(), m_messages.begin() + 100});
    EXPECT_EQ(lengths(), (std::vector<std::int64_t>{155, 256}));
    Store().Connection().Db().Execute("REPLACE INTO date_run SELECT * FROM former");
    ExpectFirstRows();
    CompactStore(Store(), {[](const std::string&) {}, [](std::uint64_t, std::uint64_t) {}});
    EXPECT_EQ(lengths(), (std::vector<std::int64_t>{155, 256}));
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
    EXPECT_EQ(Runs(), (std::vector<std::int64_t>{0, 256}));
    ExpectFirstRows();
}

TEST_F(DateOrderTest, FilesWithAnIndexGetRuns)
{
    Fill(700);
    MakeOlder(Store(), 5);
    Reopen();
    EXPECT_EQ(Store().Version(), SchemaVersion);
    EXPECT_EQ(Runs(), (std::vector<std::int64_t>{0, 256}));
    EXPECT_EQ(Numbers("SELECT count(*) FROM message WHERE parts & 16"), std::vector<std::int64_t>{0});
    EXPECT_EQ(Numbers("SELECT count(*) FROM sqlite_schema WHERE name='message_by_date'"), std::vector<std::int64_t>{0});
    ExpectFirstRows();
}

TEST_F(DateOrderTest, ADamagedRunIsReported)
{
    Fill(700);
    Store().Connection().Db().Execute("UPDATE date_run SET dates=zeroblob(length(dates)) WHERE id % 512 = 0");
    std::string text;
    EXPECT_EQ(CodeOf([&] { Rows()->FirstKeys(*ByDate(), 500); }, &text), MAPI_E_CORRUPT_STORE);
    EXPECT_NE(text.find("the dates of folder 3 cannot be read"), std::string::npos) << text;
    EXPECT_EQ(Repaired(), std::vector<std::string>{"1 runs of dates did not match their messages: rebuilt"});
}

TEST_F(DateOrderTest, WrongRunsAreRepaired)
{
    Fill(1400);
    Store().Messages().Delete({m_messages.begin() + 255, m_messages.begin() + 511});
    const std::string sent = std::to_string(ContentsKey(IdOf(StandardFolder::SentItems), false).Message(256));
    const std::string empty = std::to_string(ContentsKey(Inbox, false).Message(256));
    for (const std::string& damage : std::vector<std::string>{
             "DELETE FROM date_run WHERE id & 4294967295 = 0",
             "UPDATE date_run SET dates=x'' WHERE id & 4294967295 = 512",
             "UPDATE date_run SET sum=sum+1 WHERE id & 4294967295 = 512",
             "UPDATE date_run SET first=first+1 WHERE id & 4294967295 = 512",
             "UPDATE date_run SET last=last-1 WHERE id & 4294967295 = 512",
             "UPDATE date_run SET id=id+1280 WHERE id & 4294967295 = 0",
             "INSERT INTO date_run SELECT " + sent + ", first, last, sum, dates FROM date_run LIMIT 1",
             "INSERT INTO date_run SELECT " + empty + ", first, last, sum, dates FROM date_run LIMIT 1",
             "UPDATE message SET submitted=5000 WHERE id & 4294967295 = 600"})
    {
        SCOPED_TRACE(damage);
        Store().Connection().Db().Execute(damage.c_str());
        const std::vector<std::string> problems = Store().CheckWhole();
        ASSERT_FALSE(problems.empty());
        EXPECT_NE(problems.back().find("do not match the messages"), std::string::npos) << problems.back();
        EXPECT_NE(Repaired(), std::vector<std::string>{});
        EXPECT_EQ(Store().CheckWhole(), std::vector<std::string>{});
        ExpectFirstRows();
    }
}

} // namespace
} // namespace zebstore::test
