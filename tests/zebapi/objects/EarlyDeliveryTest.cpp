// Notifications that come before the registration is answered.
#include "Delivery.h"

#include <chrono>
#include <future>
#include <memory>
#include <thread>

using namespace zeb::test;

namespace
{

/// Sends an event from inside Advise: on its own thread, or on another one that it waits for.
enum class Early
{
    SameThread,
    OtherThread
};

void NotifyEarly(RowTable& provider, Early early)
{
    provider.m_whileAdvising = [&provider, early]
    {
        provider.m_whileAdvising = nullptr;
        IMAPIAdviseSink* const sink = provider.Sink();
        sink->AddRef();
        if (early == Early::SameThread)
        {
            Notify(sink);
        }
        else
        {
            std::thread([sink] { Notify(sink); }).join();
        }
        sink->Release();
    };
}

class EarlyDelivery : public Delivery, public ::testing::WithParamInterface<Early>
{
protected:
    RowTable m_provider{m_journal};
    CZebTable m_table{&m_provider};
};

} // namespace

TEST_P(EarlyDelivery, ADelegateMayUnadvise)
{
    CAdviseSinkBinder* unadvised = nullptr;
    int calls = 0;
    Handler handler([&]
    {
        ++calls;
        unadvised->Unadvise();
    });
    CAdviseSinkBinder binder(&handler, nullptr);
    unadvised = &binder;
    NotifyEarly(m_provider, GetParam());
    binder.Advise(m_table);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(m_provider.Sink(), nullptr);
    EXPECT_EQ(m_provider.References(), 1u) << "the binder has let the table go";
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)", "table: Unadvise(0xABABABAB0000004D)"}));
    binder.Unadvise();
    EXPECT_TRUE(Calls().empty());
    binder.Advise(m_table);
    EXPECT_NE(m_provider.Sink(), nullptr) << "it can advise again";
    EXPECT_EQ(m_log.Lines().size(), 0u);
    Calls();
}

TEST_P(EarlyDelivery, ADelegateMayDestroyTheBinder)
{
    for (const bool refused : {false, true})
    {
        std::unique_ptr<CAdviseSinkBinder> binder;
        Handler handler([&] { binder.reset(); });
        binder = std::make_unique<CAdviseSinkBinder>(&handler, nullptr);
        if (refused)
        {
            m_provider.Fail("Advise", MAPI_E_NO_SUPPORT);
        }
        NotifyEarly(m_provider, GetParam());
        binder->Advise(m_table);
        EXPECT_EQ(binder, nullptr);
        EXPECT_EQ(m_provider.Sink(), nullptr);
        EXPECT_EQ(m_provider.References(), 1u);
        EXPECT_EQ(Caught(), refused ? 1u : 0u);
        const Lines once = {"table: Advise(0x100)"};
        const Lines both = {"table: Advise(0x100)", "table: Unadvise(0xABABABAB0000004D)"};
        EXPECT_EQ(Calls(), refused ? once : both);
    }
}

TEST_F(Delivery, LateHandlersMayDestroyTheBinder)
{
    RowTable provider(m_journal);
    CZebTable table(&provider);
    std::unique_ptr<CAdviseSinkBinder> binder;
    std::promise<void> entered;
    Handler handler([&]
    {
        entered.set_value();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        binder.reset();
    });
    binder = std::make_unique<CAdviseSinkBinder>(&handler, nullptr);
    provider.Fail("Advise", MAPI_E_NO_SUPPORT);
    std::thread notifying;
    provider.m_whileAdvising = [&]
    {
        IMAPIAdviseSink* const sink = provider.Sink();
        sink->AddRef();
        notifying = std::thread([sink]
        {
            Notify(sink);
            sink->Release();
        });
        entered.get_future().wait();
    };
    binder->Advise(table);
    notifying.join();
    EXPECT_EQ(binder, nullptr);
    EXPECT_EQ(provider.References(), 1u);
    EXPECT_EQ(Caught(), 1u);
    Calls();
}

TEST_F(Delivery, RegistrationsMayEndInAnyOrder)
{
    RowTable provider(m_journal);
    RowTable other(m_journal, "other");
    CZebTable table(&provider);
    CZebTable otherTable(&other);
    Handler handler([] {});
    CAdviseSinkBinder binder(&handler, nullptr);
    CAdviseSinkBinder later(&handler, nullptr);
    std::promise<void> begun;
    std::promise<void> ended;
    other.m_whileAdvising = [&]
    {
        begun.set_value();
        ended.get_future().wait();
    };
    std::thread advising;
    provider.m_whileAdvising = [&]
    {
        advising = std::thread([&] { later.Advise(otherTable); });
        begun.get_future().wait();
    };
    binder.Advise(table);
    EXPECT_NE(provider.Sink(), nullptr) << "the first ends while the second is under way";
    ended.set_value();
    advising.join();
    EXPECT_NE(other.Sink(), nullptr);
    binder.Unadvise();
    later.Unadvise();
    EXPECT_EQ(provider.Sink(), nullptr);
    EXPECT_EQ(other.Sink(), nullptr);
    Calls();
}

TEST_F(Delivery, UnadvisingLeavesTheOthersRegistration)
{
    RowTable provider(m_journal);
    RowTable other(m_journal, "other");
    CZebTable table(&provider);
    CZebTable otherTable(&other);
    Handler handler([] {});
    CAdviseSinkBinder binder(&handler, nullptr);
    CAdviseSinkBinder inner(&handler, nullptr);
    other.m_whileAdvising = [&]
    {
        inner.Unadvise();
        inner.Unadvise();
    };
    provider.m_whileAdvising = [&] { inner.Advise(otherTable); };
    binder.Advise(table);
    EXPECT_EQ(other.Sink(), nullptr) << "unadvised before its connection was known";
    EXPECT_NE(provider.Sink(), nullptr);
    binder.Unadvise();
    EXPECT_EQ(provider.Sink(), nullptr);
    Calls();
}

TEST_P(EarlyDelivery, ADelegateMayAdviseOnAnother)
{
    RowTable other(m_journal, "other");
    other.m_connection = 5;
    CZebTable otherTable(&other);
    CAdviseSinkBinder* advised = nullptr;
    Handler handler([&] { advised->Advise(otherTable); });
    {
        CAdviseSinkBinder binder(&handler, nullptr);
        advised = &binder;
        NotifyEarly(m_provider, GetParam());
        binder.Advise(m_table);
        EXPECT_EQ(Calls(),
                  (Lines{"table: Advise(0x100)", "other: Advise(0x100)", "table: Unadvise(0xABABABAB0000004D)"}));
    }
    EXPECT_EQ(Calls(), (Lines{"other: Unadvise(0x5)"})) << "each connection is ended on its own table";
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_P(EarlyDelivery, ACachedTableMayUnbind)
{
    Handling table([](Handling& handling) { handling.Unbind(); });
    NotifyEarly(m_provider, GetParam());
    table = m_table;
    EXPECT_EQ(table.m_calls, 1);
    EXPECT_TRUE(table.IsValid());
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)", "table: Unadvise(0xABABABAB0000004D)"}));
    EXPECT_EQ(m_provider.Sink(), nullptr);
    table.Free();
    EXPECT_TRUE(Calls().empty());
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Threads, EarlyDelivery, ::testing::Values(Early::SameThread, Early::OtherThread));
