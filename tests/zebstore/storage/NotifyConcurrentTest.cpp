#include "tests/zebstore/storage/NotifyTables.h"

#include "zebstore/notify/Notifier.h"

#include <atomic>
#include <random>

namespace zebstore::test
{
namespace
{

class NotifyConcurrentTest : public NotifyTables
{
protected:
    // Runs the bodies side by side; what one throws fails the test.
    static void Race(std::vector<std::function<void()>> bodies)
    {
        std::vector<std::thread> threads;
        for (std::function<void()>& body : bodies)
        {
            threads.emplace_back([body = std::move(body)]
            {
                try
                {
                    body();
                }
                catch (const std::exception& error)
                {
                    ADD_FAILURE() << error.what();
                }
            });
        }
        for (std::thread& thread : threads)
        {
            thread.join();
        }
    }

    // Adds, changes, moves and deletes messages of its own through a connection of its own.
    void Write(unsigned seed, int rounds)
    {
        const auto store = StoreFile::Open(Path("test.zeb"), {});
        std::mt19937 random(seed);
        std::vector<MessageId> mine;
        for (int i = 0; i < rounds; ++i)
        {
            if (mine.size() < 4 || random() % 3 == 0)
            {
                mine.push_back(store->Messages().Create({Inbox, false}, Numbered(LONG(random() % 100))));
            }
            MessageId& message = mine[random() % mine.size()];
            switch (random() % 3)
            {
            case 0:
                store->Messages().Save(message, Numbered(LONG(random() % 100)), 0);
                break;
            case 1:
                message =
                    store->Messages().Move({message}, ContentsKey::Of(message).Folder() == Inbox ? Archive : Inbox)[0];
                break;
            default:
                store->Messages().Delete({message});
                std::swap(message, mine.back());
                mine.pop_back();
            }
        }
    }
};

TEST_F(NotifyConcurrentTest, CopiesCatchUpWithSeveralWriters)
{
    std::vector<Followed> tables;
    tables.emplace_back(Contents());
    tables.emplace_back(Sorted(Contents(), PR_IMPORTANCE));
    tables.emplace_back(Restricted(Sorted(Contents(), PR_SUBJECT_A), 50));
    tables.emplace_back(Contents(Archive));
    tables.emplace_back(Hierarchy(IdOf(StandardFolder::Root), true));
    const auto read = [&]
    {
        for (int i = 0; i < 40; ++i)
        {
            for (Followed& each : tables)
            {
                ReadCopy(each.Table());
            }
        }
    };
    Race({[&] { Write(1, 60); }, [&] { Write(2, 60); }, read});
    // After too many changes at once a client reads everything again; otherwise its copy equals a new read.
    for (Followed& each : tables)
    {
        EXPECT_TRUE(each.Sink().BecomesOrIsLost(ReadCopy(each.Table())));
    }
}

TEST_F(NotifyConcurrentTest, SinksMayChangeDuringNotifications)
{
    const Ref<IMAPITable> shared = Sorted(Contents(), PR_SUBJECT_A);
    std::atomic<int> calls{0};
    const auto comeAndGo = [&](bool ownTable)
    {
        for (int i = 0; i < 150; ++i)
        {
            const Ref<IMAPITable> table = ownTable ? Contents() : shared;
            const Ref<CountingSink> sink = Ref<CountingSink>::Adopt(new CountingSink(calls));
            ULONG_PTR connection = 0;
            EXPECT_EQ(table->Advise(fnevTableModified, sink.Get(), &connection), S_OK);
            Store().Messages().Create({Inbox, false}, Numbered(i));
            if (!ownTable)
            {
                EXPECT_EQ(table->Unadvise(connection), S_OK);
                sink->Close();
            }
        }
    };
    Race({[&] { comeAndGo(true); }, [&] { comeAndGo(false); }, [&] { comeAndGo(false); }, [&] { Write(3, 80); }});
    EXPECT_GT(calls, 0);
}

TEST_F(NotifyConcurrentTest, TheThreadEndsAndComesAgain)
{
    for (int i = 0; i < 20; ++i)
    {
        Followed followed(Contents());
        Race({[&] { Store().Messages().Create({Inbox, false}, Numbered(i)); }, [] { Notifier::The().Stop(); }});
    }
    Followed followed(Contents());
    Store().Messages().Create({Inbox, false}, Numbered(1));
    EXPECT_TRUE(followed.Sink().Receives(1));
}

} // namespace
} // namespace zebstore::test
