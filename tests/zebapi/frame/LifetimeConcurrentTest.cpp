// Starting, stopping and asking from several threads at once.
#include "tests/zebapi/frame/LibraryFixture.h"

#include <atomic>
#include <thread>

namespace zeb::test
{

using Lifetime = LibraryFixture;

TEST_F(Lifetime, FlagsMayBeReadWhileMapiIsStartedAgain)
{
    Start(ProviderFile::Undecorated());
    std::atomic<bool> stop{false};
    std::atomic<int> failed{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
    {
        readers.emplace_back(
            [&]
            {
                while (!stop)
                {
                    const bool ready = library.WasInitialized() && !library.WasFailed() && !library.IsWAB();
                    failed += ready ? 0 : 1;
                    std::this_thread::yield();
                }
            });
    }
    for (int round = 0; round < 20; ++round)
    {
        library.Initialize(false);
    }
    stop = true;
    for (std::thread& reader : readers)
    {
        reader.join();
    }
    EXPECT_EQ(failed, 0);
    EXPECT_EQ(provider.initializeCalls, 21);
}

TEST_F(Lifetime, StartsAndStopsOfSeveralThreadsFollowOneAnother)
{
    Install(ProviderFile::Decorated());
    std::atomic<bool> stop{false};
    std::thread reader(
        [&]
        {
            while (!stop)
            {
                library.WasInitialized();
                library.WasFailed();
                library.IsWAB();
                library.SetWasFailed(false);
            }
        });
    std::vector<std::thread> starters;
    for (int i = 0; i < 3; ++i)
    {
        starters.emplace_back(
            [&]
            {
                for (int round = 0; round < 10; ++round)
                {
                    library.Initialize(false);
                    library.Uninitialize(nullptr);
                }
            });
    }
    for (std::thread& starter : starters)
    {
        starter.join();
    }
    stop = true;
    reader.join();
    EXPECT_EQ(provider.initializeCalls, 30);
    EXPECT_GE(provider.uninitializeCalls, 1);
    EXPECT_EQ(log.CountBeginning("THROW"), 0u);
    ExpectNothingLoaded();
}

} // namespace zeb::test
