// That a view returns what it takes over from its source.
#include "zebstore/tables/TableView.h"
#include "tests/zebstore/storage/Restrictions.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/tables/RowDifference.h"

#include <random>

namespace zebstore::test
{
namespace
{

using Kind = RowChange::Kind;
using Extent = RowChanges::Extent;

/// Applies changes to a copy of a view's rows, as their receiver does.
void ApplyTo(std::vector<RowKey>& copy, const RowChanges& changes)
{
    ASSERT_EQ(changes.extent, Extent::Listed);
    for (const RowChange& change : changes.rows)
    {
        const auto place = std::find(copy.begin(), copy.end(), change.key);
        ASSERT_EQ(place != copy.end(), change.WasThere()) << change.key;
        if (place != copy.end())
        {
            copy.erase(place);
        }
        if (change.kind != Kind::Deleted)
        {
            const auto prior = change.prior ? std::find(copy.begin(), copy.end(), *change.prior) : copy.end();
            ASSERT_EQ(change.prior.has_value(), prior != copy.end());
            copy.insert(change.prior ? prior + 1 : copy.begin(), change.key);
        }
    }
}

class TableViewTest : public StorageTest
{
protected:
    std::shared_ptr<RowSource> Rows() { return MakeContentsRows(m_store, {Inbox, false}, nullptr); }
    MessageId Create(const std::string& subject) { return Store().Messages().Create({Inbox, false}, Mail(subject)); }
    static std::unique_ptr<SortOrder> BySubject()
    {
        return std::make_unique<SortOrder>(*SortSet({{PR_SUBJECT_W, TABLE_SORT_ASCEND}}));
    }
    static std::vector<RowKey> KeysOf(TableView& view)
    {
        LONG moved = 0;
        view.Seek(BOOKMARK_BEGINNING, 0, moved);
        return view.Take(10000, false);
    }
};

TEST_F(TableViewTest, SyncReturnsChangesWithTheirPrior)
{
    const MessageId first = Create("a");
    TableView view(Rows());
    view.Follow(true);
    const MessageId second = Create("b");
    RowChanges changes = view.Sync();
    ASSERT_EQ(changes.rows.size(), 1u);
    EXPECT_EQ(changes.rows[0].kind, Kind::Added);
    EXPECT_EQ(changes.rows[0].key, second);
    EXPECT_EQ(changes.rows[0].prior, first);
    Store().Messages().Save(first, Mail("c"), 0);
    changes = view.Sync();
    ASSERT_EQ(changes.rows.size(), 1u);
    EXPECT_EQ(changes.rows[0].kind, Kind::Modified);
    EXPECT_EQ(changes.rows[0].key, first);
    EXPECT_FALSE(changes.rows[0].prior);
    Store().Messages().Delete({second});
    changes = view.Sync();
    ASSERT_EQ(changes.rows.size(), 1u);
    EXPECT_EQ(changes.rows[0].kind, Kind::Deleted);
    EXPECT_EQ(changes.rows[0].key, second);
    EXPECT_TRUE(view.Sync().IsNone());
}

TEST_F(TableViewTest, ReplacedContentIsReportedWhole)
{
    Create("a");
    TableView view(Rows());
    view.Follow(true);
    Store().Folders().Empty(Inbox, false);
    EXPECT_EQ(view.Sync().extent, Extent::Replaced);
    EXPECT_EQ(view.Count(), 0u);
}

TEST_F(TableViewTest, AnUnfollowedViewReturnsNothing)
{
    TableView view(Rows());
    Create("a");
    EXPECT_TRUE(view.IsBehind());
    EXPECT_TRUE(view.Sync().IsNone());
    EXPECT_FALSE(view.IsBehind());
    view.Follow(true);
    view.Follow(false);
    Create("b");
    EXPECT_TRUE(view.Sync().IsNone());
    EXPECT_EQ(view.Count(), 2u);
}

TEST_F(TableViewTest, AViewShowsItsLastSync)
{
    Create("b");
    TableView view(Rows());
    view.Sort(BySubject());
    EXPECT_EQ(view.Count(), 1u);
    Create("a");
    EXPECT_EQ(view.Count(), 1u);
    view.Sync();
    EXPECT_EQ(view.Count(), 2u);
}

TEST_F(TableViewTest, ACopyFollowsASortedView)
{
    std::mt19937 random(7);
    std::vector<MessageId> messages;
    for (int i = 0; i < 30; ++i)
    {
        messages.push_back(Create(std::to_string(random() % 50)));
    }
    TableView view(Rows());
    view.Sort(BySubject());
    view.Follow(true);
    std::vector<RowKey> copy = KeysOf(view);
    for (int round = 0; round < 40; ++round)
    {
        for (int i = 0; i < 5; ++i)
        {
            const size_t at = random() % messages.size();
            if (random() % 3 == 0)
            {
                Store().Messages().Delete({messages[at]});
                messages[at] = Create(std::to_string(random() % 50));
            }
            else
            {
                Store().Messages().Save(messages[at], Mail(std::to_string(random() % 50)), 0);
            }
        }
        ApplyTo(copy, view.Sync());
        ASSERT_EQ(copy, KeysOf(view)) << round;
    }
}

TEST(RowDifference, LeadsFromOldToNewOrder)
{
    std::mt19937 random(11);
    for (int round = 0; round < 200; ++round)
    {
        std::vector<RowKey> all(20);
        for (size_t i = 0; i < all.size(); ++i)
        {
            all[i] = static_cast<RowKey>(i + 1);
        }
        std::shuffle(all.begin(), all.end(), random);
        std::vector<RowKey> copy(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(random() % 20));
        std::shuffle(all.begin(), all.end(), random);
        const std::vector<RowKey> after(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(random() % 20));
        ApplyTo(copy, DifferenceOf(copy, after, {}));
        ASSERT_EQ(copy, after) << round;
    }
}

TEST(RowDifference, ListsAChangedUnmovedRow)
{
    const RowChanges changes = DifferenceOf({1, 2, 3}, {1, 2, 3}, {{Kind::Modified, 2, {}}});
    ASSERT_EQ(changes.rows.size(), 1u);
    EXPECT_EQ(changes.rows[0].kind, Kind::Modified);
    EXPECT_EQ(changes.rows[0].key, 2);
    EXPECT_EQ(changes.rows[0].prior, 1);
}

TEST(RowDifference, IsUnknownBeyond128Changes)
{
    std::vector<RowKey> after(128);
    for (size_t i = 0; i < after.size(); ++i)
    {
        after[i] = static_cast<RowKey>(i + 1);
    }
    EXPECT_EQ(DifferenceOf({}, after, {}).rows.size(), 128u);
    after.push_back(1000);
    EXPECT_EQ(DifferenceOf({}, after, {}).extent, Extent::Unknown);
}

TEST(ContentsKey, IsAMessagesUpperPart)
{
    constexpr ContentsKey contents(5, true);
    constexpr MessageId message = contents.Message(7);
    static_assert(ContentsKey::Of(message) == contents);
    static_assert(contents.Folder() == 5 && contents.IsAssociated() && !contents.CountsUnread());
    static_assert(ContentsKey::NumberOf(message) == 7);
    static_assert(contents.FirstMessage() < message && message < contents.LastMessage());
    EXPECT_EQ(message, (std::int64_t(11) << 32) + 7) << "as files have it";
    EXPECT_FALSE(ContentsKey::Embedded().CountsUnread());
    EXPECT_TRUE(ContentsKey(5, false).CountsUnread());
}

} // namespace
} // namespace zebstore::test
