// That a store knows of commits without reading its tables.
#include "tests/zebstore/storage/Storage.h"
#include "zebstore/storage/ContentsRows.h"
#include "zebstore/storage/RowSource.h"
#include "zebstore/storage/StoreFile.h"

#include <sqlite3.h>

#include <string_view>
#include <thread>

namespace zebstore::test
{
namespace
{

class Commits : public StorageTest
{
protected:
    void SetUp() override
    {
        StorageTest::SetUp();
        m_other = StoreFile::Open(Path("test.zeb"), {});
        m_rows = MakeContentsRows(m_store, {Inbox, false}, nullptr);
    }
    void TearDown() override
    {
        m_rows.reset();
        m_other.reset();
        StorageTest::TearDown();
    }
    std::uint64_t Number() { return Store().Connection().Db().Commits(); }
    /// The statements that `body` runs on the store's connection, besides asking for the data version.
    template <class Body>
    int StatementsOf(Body&& body)
    {
        int count = 0;
        sqlite3* const handle = Store().Connection().Db().Handle();
        sqlite3_trace_v2(handle, SQLITE_TRACE_STMT, [](unsigned, void* counted, void*, void* sql)
        {
            if (std::string_view(static_cast<const char*>(sql)) != "PRAGMA data_version")
            {
                ++*static_cast<int*>(counted);
            }
            return 0;
        }, &count);
        body();
        sqlite3_trace_v2(handle, 0, nullptr, nullptr);
        return count;
    }

    std::shared_ptr<StoreFile> m_other; // a connection of its own, as of another process
    std::shared_ptr<RowSource> m_rows;
};

TEST_F(Commits, ReachTheirConnectionsObserver)
{
    struct Counter final : CommitObserver
    {
        int commits = 0;
        void Committed() noexcept override { ++commits; }
    } counter;
    StoreFile::OpenOptions options;
    options.observer = &counter;
    const auto observed = StoreFile::Open(Path("test.zeb"), options);
    const int before = counter.commits;
    observed->Messages().Create({Inbox, false}, Mail("observed"));
    EXPECT_EQ(counter.commits, before + 1);
    EXPECT_NE(CodeOf([&] { observed->Messages().Create({4711, false}, Mail("no folder")); }), S_OK);
    EXPECT_EQ(counter.commits, before + 1) << "nothing was committed";
    {
        StoreTransaction transaction(observed->Connection());
        observed->Messages().Create({Inbox, false}, Mail("one"));
        observed->Messages().Create({Inbox, false}, Mail("two"));
        EXPECT_EQ(counter.commits, before + 1) << "the transaction goes on";
        transaction.Commit();
    }
    EXPECT_EQ(counter.commits, before + 2);
    m_other->Messages().Create({Inbox, false}, Mail("of another connection"));
    EXPECT_EQ(counter.commits, before + 2);
}

TEST_F(Commits, CountWithEachOfAnyConnection)
{
    const std::uint64_t first = Number();
    EXPECT_NE(first, 0u);
    EXPECT_EQ(Number(), first);
    Store().Messages().Create({Inbox, false}, Mail("mine"));
    const std::uint64_t second = Number();
    EXPECT_NE(second, first);
    m_other->Messages().Create({Inbox, false}, Mail("another's"));
    const std::uint64_t third = Number();
    EXPECT_NE(third, second);
    EXPECT_EQ(Number(), third);
}

TEST_F(Commits, OfThisProcessAreSeenImmediately)
{
    Store().Connection().Db().SetPollInterval(std::chrono::hours(1));
    for (ULONG added = 1; added <= 10; ++added)
    {
        ASSERT_EQ(m_rows->Count(), added - 1);
        m_other->Messages().Create({Inbox, false}, Mail("another's"));
        ASSERT_EQ(m_rows->Count(), added);
    }
}

TEST_F(Commits, OfOtherProcessesAreSeenLater)
{
    // Written past the storage, so that this process does not count the commit.
    sqlite3* const other = m_other->Connection().Db().Handle();
    Store().Connection().Db().SetPollInterval(std::chrono::hours(1));
    const std::uint64_t first = Number();
    ASSERT_EQ(sqlite3_exec(other, "UPDATE folder SET id = id", nullptr, nullptr, nullptr), SQLITE_OK);
    EXPECT_EQ(Number(), first);
    Store().Connection().Db().SetPollInterval({});
    EXPECT_NE(Number(), first);
}

TEST_F(Commits, AreNotReportedInsideATransaction)
{
    const StoreSnapshot snapshot(Store().Connection());
    EXPECT_EQ(Number(), 0u) << "even one that has not read yet";
    Query query(Store().Connection().Db(), "SELECT id FROM folder");
    EXPECT_TRUE(query.Step());
    EXPECT_EQ(Number(), 0u);
}

TEST_F(Commits, AreNotReportedDuringAStatement)
{
    Query query(Store().Connection().Db(), "SELECT id FROM folder");
    EXPECT_TRUE(query.Step());
    EXPECT_EQ(Number(), 0u);
}

TEST_F(Commits, CountAndGenerationAreCached)
{
    EXPECT_EQ(m_rows->Count(), 0u);
    const std::uint64_t before = m_rows->Generation();
    EXPECT_EQ(StatementsOf(
                  [&]
    {
        for (int i = 0; i < 100; ++i)
        {
            EXPECT_EQ(m_rows->Count(), 0u);
            EXPECT_EQ(m_rows->Generation(), before);
        }
    }),
              0);
    for (ULONG added = 1; added <= 6; ++added)
    {
        StoreFile& writer = added % 2 != 0 ? *m_other : Store();
        writer.Messages().Create({Inbox, false}, Mail("new"));
        EXPECT_EQ(StatementsOf([&] { EXPECT_EQ(m_rows->Count(), added); }), 1);
        EXPECT_EQ(m_rows->Generation(), before + added);
    }
}

TEST_F(Commits, DuringASnapshotAreSeenAfterwards)
{
    m_rows->Count();
    {
        const auto snapshot = m_rows->Snapshot();
        EXPECT_EQ(m_rows->Count(), 0u);
        // Not on this thread: it holds the other connection's lock.
        std::thread([&] { m_other->Messages().Create({Inbox, false}, Mail("meanwhile")); }).join();
        EXPECT_EQ(m_rows->Count(), 0u) << "a snapshot is one state";
    }
    EXPECT_EQ(m_rows->Count(), 1u);
}

TEST_F(Commits, OfOtherFoldersLeaveTheGeneration)
{
    const std::uint64_t before = m_rows->Generation();
    m_other->Messages().Create({IdOf(StandardFolder::SentItems), false}, Mail("elsewhere"));
    EXPECT_EQ(m_rows->Generation(), before);
}

} // namespace
} // namespace zebstore::test
