// Sinks of a table: slow ones, ones that throw, and ones that come and go meanwhile.
#include "tests/zebstore/storage/NotifyTables.h"

#include <functional>
#include <future>

namespace zebstore::test
{
namespace
{

using Events = std::vector<ULONG>;

// Holds the notification thread inside a sink from the first event until it is opened.
class Gate
{
public:
    explicit Gate(CopyingSink& sink)
    {
        // The sink may still be on its way through when the gate is gone.
        sink.Then([state = m_state]
        {
            state->inside = true;
            state->open.wait();
        });
    }
    void WaitUntilInside() const
    {
        while (!m_state->inside)
        {
            std::this_thread::yield();
        }
    }
    void Open() { m_state->opener.set_value(); }

private:
    struct State
    {
        std::promise<void> opener;
        std::shared_future<void> open = opener.get_future().share();
        std::atomic<bool> inside{false};
    };
    const std::shared_ptr<State> m_state = std::make_shared<State>();
};

class NotifySinkTest : public NotifyTables
{
protected:
    // Adds a first message; its notification lasts until the gate is opened.
    Gate Hold(Followed& followed)
    {
        Gate gate(followed.Sink());
        Add(0);
        gate.WaitUntilInside();
        return gate;
    }
};

TEST_F(NotifySinkTest, AThrowingSinkStaysNotified)
{
    Followed followed(Contents());
    followed.Sink().Then([] { throw std::runtime_error("from a sink"); });
    Add(1);
    ASSERT_TRUE(followed.Sink().Receives(1));
    Add(2);
    ASSERT_TRUE(followed.Sink().Receives(2));
    followed.Sink().Then({});
}

TEST_F(NotifySinkTest, UnadviseReleasesTheSink)
{
    const Ref<IMAPITable> table = Contents();
    const Ref<CopyingSink> sink = Ref<CopyingSink>::Adopt(new CopyingSink);
    ULONG_PTR connection = 0xABABABABABABABAB;
    ASSERT_EQ(table->Advise(fnevTableModified, sink.Get(), &connection), S_OK);
    EXPECT_LE(connection, UINT32_MAX) << "all 64 bits are written";
    EXPECT_EQ(table->Unadvise(connection | 0x100000000), MAPI_E_INVALID_PARAMETER) << "and all are read";
    Add(1);
    ASSERT_TRUE(sink->Receives(1));
    EXPECT_EQ(table->Unadvise(connection), S_OK);
    sink->AddRef();
    EXPECT_EQ(sink->Release(), 1u) << "the provider's reference is gone";
    EXPECT_EQ(table->Unadvise(connection), MAPI_E_INVALID_PARAMETER);
    Followed witness(Contents());
    Add(2);
    ASSERT_TRUE(witness.Sink().Receives(1));
    EXPECT_EQ(sink->Events().size(), 1u);
}

TEST_F(NotifySinkTest, ASinkMayReadAndUnadvise)
{
    Followed followed(Contents());
    CopiedRows seen;
    followed.Sink().Then([&]
    {
        seen = ReadCopy(followed.Table());
        EXPECT_EQ(followed.Table().Unadvise(followed.Number()), S_OK);
        Add(2); // from inside a sink: no lock is held
    });
    Followed witness(Contents());
    Add(1);
    ASSERT_TRUE(witness.Sink().Receives(2));
    EXPECT_EQ(seen.size(), 1u);
    EXPECT_EQ(followed.Sink().Events().size(), 1u);
    followed.Forget();
}

TEST_F(NotifySinkTest, ASlowSinkReceivesTableChanged)
{
    Followed followed(Contents());
    Gate gate = Hold(followed);
    for (LONG i = 0; i < 300; ++i)
    {
        Add(i);
        if (i % 100 == 99)
        {
            ReadCopy(followed.Table()); // takes over what has changed
        }
    }
    gate.Open();
    EXPECT_TRUE(followed.Sink().HearsWhole());
    EXPECT_EQ(followed.Sink().Events(), (Events{TABLE_ROW_ADDED, TABLE_CHANGED}));
    followed.Sink().Then({});
}

TEST_F(NotifySinkTest, ALateSinkReceivesLaterChanges)
{
    Followed followed(Contents());
    Gate gate = Hold(followed);
    for (LONG i = 0; i < 300; ++i)
    {
        Add(i);
    }
    ReadCopy(followed.Table()); // takes over what has changed
    const Ref<CopyingSink> late = Ref<CopyingSink>::Adopt(new CopyingSink);
    ULONG_PTR connection = 0;
    ASSERT_EQ(followed.Table().Advise(fnevTableModified, late.Get(), &connection), S_OK);
    Add(300);
    ReadCopy(followed.Table());
    gate.Open();
    EXPECT_TRUE(late->HearsWhole());
    EXPECT_EQ(followed.Table().Unadvise(connection), S_OK);
    followed.Sink().Then({});
}

TEST_F(NotifySinkTest, SortingDropsWaitingNotifications)
{
    Followed followed(Contents());
    Gate gate = Hold(followed);
    Add(50);
    EXPECT_EQ(ReadCopy(followed.Table()).size(), 2u);
    Sorted(followed.TablePointer(), PR_IMPORTANCE, TABLE_SORT_DESCEND);
    followed.Sink().Start(ReadCopy(followed.Table()));
    gate.Open();
    Add(60);
    EXPECT_TRUE(followed.Sink().Receives(1));
    ExpectFollowed(followed);
    EXPECT_EQ(followed.Sink().Events(), Events{TABLE_ROW_ADDED});
    followed.Sink().Then({});
}

TEST_F(NotifySinkTest, AnAdviseSeesOnlyLaterChanges)
{
    Followed followed(Contents());
    Gate gate = Hold(followed);
    Add(1);
    Followed later(followed.TablePointer());
    EXPECT_EQ(later.Sink().Rows().size(), 2u);
    gate.Open();
    Add(2);
    EXPECT_TRUE(later.Sink().Receives(1));
    ExpectFollowed(later);
    ExpectFollowed(followed);
    EXPECT_EQ(later.Sink().Events(), Events{TABLE_ROW_ADDED});
    EXPECT_EQ(followed.Sink().Events(), (Events{TABLE_ROW_ADDED, TABLE_ROW_ADDED, TABLE_ROW_ADDED}));
    followed.Sink().Then({});
}

TEST_F(NotifySinkTest, UnadviseAwaitsARunningCall)
{
    Followed followed(Contents());
    const Followed stays(followed.TablePointer());
    std::atomic<bool> inside{false};
    std::atomic<bool> over{false};
    followed.Sink().Then([&]
    {
        inside = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        over = true;
    });
    Add(1);
    while (!inside)
    {
        std::this_thread::yield();
    }
    EXPECT_EQ(followed.Table().Unadvise(followed.Number()), S_OK);
    EXPECT_TRUE(over);
    followed.Forget();
}

TEST_F(NotifySinkTest, ReleasingTheTableEndsItsConnections)
{
    const Ref<CopyingSink> sink = Ref<CopyingSink>::Adopt(new CopyingSink);
    {
        const Ref<IMAPITable> table = Contents();
        ULONG_PTR connection = 0;
        ASSERT_EQ(table->Advise(fnevTableModified, sink.Get(), &connection), S_OK);
    }
    sink->AddRef();
    EXPECT_EQ(sink->Release(), 1u);
    EXPECT_EQ(m_store.use_count(), 1) << "the table's hold on the store is gone too";
}

} // namespace
} // namespace zebstore::test
