// Cached tables and binders that come and go, read and let go while a provider's own thread notifies.
#include "Delivery.h"
#include "platform/messages.h"
#include "tests/support/doubles/DeliveringTable.h"
#include "zebapi/CachedTable.h"

#include <chrono>
#include <condition_variable>
#include <memory>

using namespace zeb::test;

namespace
{

constexpr int Rounds = 10000;

LONG IndexOf(const CZebRow& row)
{
    return row[DeliveringTable::Index].operator LONG();
}

/// Two threads that meet.
class Meeting
{
public:
    void Open()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_open = true;
        m_changed.notify_all();
    }
    /// @return false when it was not opened in time
    bool Await(int milliseconds = 10000)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return m_open; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_open = false;
};

} // namespace

TEST_F(Delivery, TenThousandTablesGoDuringNotifications)
{
    DeliveringTable provider(60);
    for (int i = 0; i < Rounds; ++i)
    {
        CZebCachedTable table(&provider);
        if (i % 10 == 0)
        {
            ASSERT_EQ(IndexOf(table[3]), 3);
            provider.AwaitDelivery();
        }
    }
    EXPECT_GE(provider.Delivered(), 2000u);
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(Delivery, TenThousandGoDuringLockedDeliveries)
{
    DeliveringTable provider(60, DeliveringTable::Lock::Held);
    provider.m_notifiesReaders = true;
    for (int i = 0; i < Rounds; ++i)
    {
        CZebCachedTable table(&provider);
        if (i % 10 == 0)
        {
            ASSERT_EQ(IndexOf(table[3]), 3);
        }
    }
    EXPECT_GE(provider.Delivered(), 1000u);
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(Delivery, TenThousandGoWhileHandlersThrow)
{
    DeliveringTable provider(60);
    const CZebTable source(&provider);
    size_t calls = 0;
    size_t caught = 0;
    for (int i = 0; i < Rounds; ++i)
    {
        Handling table([](Handling&) { CZebException::Throw(MAPI_E_BUSY, nullptr, 0); });
        table = source;
        if (i % 10 == 0)
        {
            ASSERT_EQ(IndexOf(table[3]), 3);
            provider.AwaitDelivery();
        }
        table.Free();
        calls += static_cast<size_t>(table.m_calls);
        caught += Caught();
        m_log.Clear();
    }
    EXPECT_GE(calls, 1000u);
    EXPECT_EQ(caught, calls) << "every throw is caught and logged";
}

TEST_F(Delivery, TenThousandGoWhileHandlersUnbind)
{
    DeliveringTable provider(60);
    const CZebTable source(&provider);
    int calls = 0;
    for (int i = 0; i < Rounds; ++i)
    {
        Handling table([](Handling& handling) { handling.Unbind(); });
        table = source;
        if (i % 10 == 0)
        {
            ASSERT_EQ(IndexOf(table[3]), 3);
            while (table.m_calls == 0)
            {
                std::this_thread::yield();
            }
        }
        // In the other rounds the table and its handler may unbind at once.
        table.Free();
        calls += table.m_calls;
    }
    // Unbinding in the first notification is enough, also where that comes before the registration is answered.
    provider.m_notifiesAdvisers = true;
    for (int i = 0; i < Rounds / 10; ++i)
    {
        Handling table([](Handling& handling) { handling.Unbind(); });
        table = source;
        // The provider's own thread may still be at it, and nothing else unbinds.
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        while (provider.Sinks() != 0 && std::chrono::steady_clock::now() < end)
        {
            std::this_thread::yield();
        }
        ASSERT_EQ(provider.Sinks(), 0u);
        calls += table.m_calls;
    }
    EXPECT_GE(calls, Rounds / 5);
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(Delivery, RowsReadDuringDeliveriesAreFresh)
{
    for (const auto lock : {DeliveringTable::Lock::Dropped, DeliveringTable::Lock::Held})
    {
        DeliveringTable provider(200, lock);
        CZebCachedTable table(&provider);
        for (ULONG i = 0; i < 4000; ++i)
        {
            provider.m_notifiesReaders = i % 3 == 0;
            const ULONG index = i * 7 % 200;
            const CZebRow row = table[index];
            ASSERT_EQ(IndexOf(row), static_cast<LONG>(index));
        }
        provider.m_notifiesReaders = false;
        // A window read before a notification is never read from after it.
        for (int i = 0; i < 200; ++i)
        {
            table[3];
            const ULONG before = provider.Newest();
            provider.AwaitDelivery();
            ASSERT_GE(table[3][DeliveringTable::Generation].operator LONG(), static_cast<LONG>(before)) << i;
        }
    }
}

TEST_F(Delivery, TheOwnerWindowReceivesItsMessage)
{
    RowTable provider(m_journal);
    provider.m_rows.resize(10);
    CZebCachedTable table(&provider);
    Meeting made;
    Meeting posted;
    HWND window = nullptr;
    std::thread owner([&]
    {
        window = zeb::platform::CreateMessageWindow();
        made.Open();
        zeb::platform::WindowMessage message = {};
        EXPECT_TRUE(zeb::platform::WaitWindowMessage(window, 10000, message));
        EXPECT_EQ(message.message, 1175u);
        EXPECT_EQ(message.wParam, 0u);
        EXPECT_EQ(message.lParam, 0);
        EXPECT_TRUE(posted.Await()) << "the notification ends whether or not the window looks";
        EXPECT_FALSE(zeb::platform::WaitWindowMessage(window, 0, message)) << "one message a notification";
        zeb::platform::DestroyMessageWindow(window);
    });
    ASSERT_TRUE(made.Await());
    ASSERT_NE(window, nullptr);
    table.SetOwnerWindow(window);
    std::thread([&]
    {
        provider.Notify(TABLE_ROW_ADDED);
        posted.Open();
    }).join();
    owner.join();
    Calls();
}

TEST_F(Delivery, NotificationsNeverWaitForAWindow)
{
    RowTable provider(m_journal);
    CZebCachedTable table(&provider);
    const HWND window = zeb::platform::CreateMessageWindow();
    table.SetOwnerWindow(window);
    std::thread([&] { provider.Notify(TABLE_CHANGED); }).join();
    zeb::platform::WindowMessage message = {};
    EXPECT_TRUE(zeb::platform::WaitWindowMessage(window, 0, message));
    zeb::platform::DestroyMessageWindow(window);
    provider.Notify(TABLE_CHANGED);
    EXPECT_EQ(m_log.Lines().size(), 0u) << "a window that is gone is no fault";
    Calls();
}

TEST_F(Delivery, FreeingWaitsForAnUnbindingHandler)
{
    RowTable provider(m_journal);
    const CZebTable source(&provider);
    Meeting unbound;
    std::atomic<bool> done{false};
    Handling table([&](Handling& handling)
    {
        handling.Unbind();
        unbound.Open();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        done = true;
    });
    table = source;
    IMAPIAdviseSink* const sink = provider.Sink();
    sink->AddRef();
    std::thread notifying([&] { Notify(sink); });
    EXPECT_TRUE(unbound.Await());
    table.Free();
    EXPECT_TRUE(done);
    notifying.join();
    EXPECT_EQ(sink->Release(), 0u);
    Calls();
}

TEST_F(Delivery, TwoHandlersMayUnbindAtOnce)
{
    RowTable provider(m_journal);
    const CZebTable source(&provider);
    std::atomic<int> inside{0};
    Handling table([&](Handling& handling)
    {
        for (++inside; inside < 2;)
        {
            std::this_thread::yield();
        }
        handling.Unbind();
    });
    table = source;
    IMAPIAdviseSink* const sink = provider.Sink();
    sink->AddRef();
    std::thread first([&] { Notify(sink); });
    std::thread second([&] { Notify(sink); });
    first.join();
    second.join();
    EXPECT_EQ(table.m_calls, 2);
    EXPECT_EQ(sink->Release(), 0u);
    Calls();
}

TEST_F(Delivery, UnadvisingWaitsForAnUnadvisingHandler)
{
    RowTable provider(m_journal);
    CZebTable table(&provider);
    Meeting unadvised;
    std::atomic<bool> done{false};
    std::unique_ptr<CAdviseSinkBinder> binder;
    Handler handler([&]
    {
        binder->Unadvise();
        unadvised.Open();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        done = true;
    });
    binder = std::make_unique<CAdviseSinkBinder>(&handler, &table);
    IMAPIAdviseSink* const sink = provider.Sink();
    sink->AddRef();
    std::thread notifying([&] { Notify(sink); });
    EXPECT_TRUE(unadvised.Await());
    binder.reset();
    EXPECT_TRUE(done);
    notifying.join();
    EXPECT_EQ(sink->Release(), 0u);
    Calls();
}

TEST_F(Delivery, SeveralSinksReceiveInParallel)
{
    Meeting first;
    Meeting second;
    std::atomic<bool> met{false};
    Handler waiting([&]
    {
        first.Open();
        met = second.Await();
    });
    int notified = 0;
    Handler other([&] { ++notified; });
    auto* waitingSink = new CAdviseSink(&waiting);
    auto* otherSink = new CAdviseSink(&other);
    std::thread notifying([&] { Notify(waitingSink); });
    EXPECT_TRUE(first.Await());
    Notify(otherSink);
    otherSink->Cut();
    CAdviseSink::AwaitDeliveries(&other);
    second.Open();
    notifying.join();
    EXPECT_EQ(notified, 1);
    EXPECT_TRUE(met) << "nothing is held while a delegate runs, and one sink does not wait for another's";
    waitingSink->Release();
    otherSink->Release();
}

TEST_F(Delivery, CuttingASinkOffAwaitsDelivery)
{
    Meeting entered;
    std::atomic<bool> done{false};
    Handler handler([&]
    {
        entered.Open();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        done = true;
    });
    auto* sink = new CAdviseSink(&handler);
    std::thread notifying([&] { Notify(sink); });
    EXPECT_TRUE(entered.Await());
    sink->Cut();
    EXPECT_TRUE(done);
    notifying.join();
    EXPECT_EQ(sink->Release(), 0u);
}

// A delegate of several tables can be notified without pause.
TEST_F(Delivery, AwaitingIgnoresLaterDeliveries)
{
    bool returned = false;
    // Where the machine is too busy to begin waiting in time, another try tells.
    for (int attempt = 0; attempt < 5 && !returned; ++attempt)
    {
        std::atomic<int> entered{0};
        Meeting firstMayGo;
        Meeting secondMayGo;
        std::atomic<bool> secondInTime{false};
        Handler handler([&]
        {
            if (++entered == 1)
            {
                firstMayGo.Await();
                return;
            }
            firstMayGo.Open();
            secondInTime = secondMayGo.Await(2000);
        });
        auto* sink = new CAdviseSink(&handler);
        std::thread first([&] { Notify(sink); });
        while (entered == 0)
        {
            std::this_thread::yield();
        }
        std::thread second([&]
        {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            Notify(sink);
        });
        CAdviseSink::AwaitDeliveries(&handler);
        secondMayGo.Open();
        first.join();
        second.join();
        returned = secondInTime;
        EXPECT_EQ(sink->Release(), 0u);
    }
    EXPECT_TRUE(returned);
}

TEST_F(Delivery, UnadvisingIgnoresAnotherTablesDelivery)
{
    RowTable first(m_journal, "first");
    RowTable second(m_journal, "second");
    CZebTable firstTable(&first);
    CZebTable secondTable(&second);
    Meeting entered;
    Meeting unadvised;
    std::atomic<bool> inTime{false};
    Handler handler([&]
    {
        entered.Open();
        inTime = unadvised.Await(2000);
    });
    CAdviseSinkBinder firstBinder(&handler, &firstTable);
    CAdviseSinkBinder secondBinder(&handler, &secondTable);
    std::thread notifying([&] { first.Notify(TABLE_CHANGED); });
    ASSERT_TRUE(entered.Await());
    secondBinder.Unadvise();
    unadvised.Open();
    notifying.join();
    EXPECT_TRUE(inTime);
    Calls();
}

TEST_F(Delivery, DestroyingABinderAwaitsEveryDelivery)
{
    RowTable first(m_journal, "first");
    RowTable second(m_journal, "second");
    CZebTable firstTable(&first);
    CZebTable secondTable(&second);
    Meeting entered;
    std::atomic<bool> done{false};
    Handler handler([&]
    {
        entered.Open();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        done = true;
    });
    CAdviseSinkBinder firstBinder(&handler, &firstTable);
    auto secondBinder = std::make_unique<CAdviseSinkBinder>(&handler, &secondTable);
    std::thread notifying([&] { first.Notify(TABLE_CHANGED); });
    ASSERT_TRUE(entered.Await());
    secondBinder.reset();
    EXPECT_TRUE(done);
    notifying.join();
    Calls();
}
