// Starting, stopping and asking from several threads at once.
#include "tests/zebapi/frame/LibraryFixture.h"

#include "tests/support/doubles/RecordingStore.h"

#include <atomic>
#include <functional>
#include <future>
#include <thread>

namespace zeb::test
{

namespace
{

using Lifetime = LibraryFixture;

/// Stays in Logoff until it is released.
class SlowSession : public RecordingSession
{
public:
    using RecordingSession::RecordingSession;

    HRESULT STDMETHODCALLTYPE Logoff(ULONG_PTR window, ULONG flags, ULONG reserved) override
    {
        m_inLogoff.set_value();
        m_goOn.get_future().wait();
        return RecordingSession::Logoff(window, flags, reserved);
    }

    std::promise<void> m_inLogoff;
    std::promise<void> m_goOn;
};

} // namespace

TEST_F(Lifetime, FlagsAreReadableDuringAnotherStart)
{
    Start(ProviderFile::Undecorated());
    std::atomic<bool> stop{false};
    std::atomic<int> failed{0};
    std::vector<std::thread> readers;
    for (int i = 0; i < 3; ++i)
    {
        readers.emplace_back([&]
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

TEST_F(Lifetime, StartsAndStopsTakeTurns)
{
    Install(ProviderFile::Decorated());
    std::atomic<bool> stop{false};
    std::thread reader([&]
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
        starters.emplace_back([&]
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

TEST_F(Lifetime, ProviderCallsAwaitARunningStop)
{
    Journal journal;
    SlowSession session(journal);
    provider.session = &session;
    Start(ProviderFile::Undecorated());
    CZebSession opened = library.OpenSession(nullptr, nullptr);
    platform::RegistryKey::DeleteTree(platform::RegistryRoot::LocalMachine, OutlookClientKey);
    std::thread stop([&] { library.Uninitialize(&opened); });
    session.m_inLogoff.get_future().wait();

    const std::pair<const char*, std::function<HRESULT()>> users[] = {
        {"OpenSession", [this] { return ThrownBy([this] { library.OpenSession(nullptr, nullptr); }); }},
        {"GetProfAdmin", [] { return ThrownBy([] { CZebProfAdmin::Open(); }); }},
        {"GetWABAddressBook", [this] { return ThrownBy([this] { library.GetWABAddressBook(true); }); }},
        {"Initialize(true)", [this] { return ThrownBy([this] { library.Initialize(true); }); }},
        {"Initialize(false)", [this] { return ThrownBy([this] { library.Initialize(false); }); }},
        {"Uninitialize", [this] { return ThrownBy([this] { library.Uninitialize(nullptr); }); }},
    };
    std::vector<std::future<HRESULT>> results;
    for (const auto& user : users)
    {
        results.push_back(std::async(std::launch::async, user.second));
    }
    for (size_t i = 0; i < results.size(); ++i)
    {
        EXPECT_EQ(results[i].wait_for(std::chrono::milliseconds(100)), std::future_status::timeout) << users[i].first;
    }
    EXPECT_TRUE(library.WasInitialized()) << "the flags need no lock";

    session.m_goOn.set_value();
    stop.join();
    EXPECT_EQ(results[0].get(), E_POINTER);
    EXPECT_EQ(results[1].get(), MAPI_E_CALL_FAILED);
    EXPECT_EQ(results[2].get(), MAPI_E_VERSION);
    EXPECT_EQ(results[3].get(), MAPI_E_CALL_FAILED);
    EXPECT_EQ(results[4].get(), MAPI_E_CALL_FAILED);
    EXPECT_EQ(results[5].get(), S_OK);
    EXPECT_EQ(provider.uninitializeCalls, 1);
    ExpectNothingLoaded();
}

} // namespace zeb::test
