#include "zebapi/AdviseSink.h"
#include "ObjectsTest.h"
#include "tests/support/FailingNew.h"

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

using namespace zeb::test;

namespace
{

/// Writes down which operations are called.
class Listener : public CAdviseSinkDelegate
{
public:
    explicit Listener(Journal& journal)
        : m_journal(journal)
    {
    }
    void OnTable_Modified(TABLE_NOTIFICATION* notification) override
    {
        m_journal.Write("modified " + Number(notification->ulTableEvent));
        if (m_inside)
        {
            m_inside();
        }
        CAdviseSinkDelegate::OnTable_Modified(notification);
    }
    void OnTableModified_ReloadCommon() override { m_journal.Write("reload common"); }
    void OnTableModified_Row_Added(TABLE_NOTIFICATION*) override { m_journal.Write("added"); }
    void OnTableModified_Row_Deleted(TABLE_NOTIFICATION*) override { m_journal.Write("deleted"); }
    void OnTableModified_Row_Modified(TABLE_NOTIFICATION*) override { m_journal.Write("row modified"); }

    std::function<void()> m_inside;

private:
    Journal& m_journal;
};

NOTIFICATION Event(ULONG tableEvent, ULONG type = fnevTableModified)
{
    NOTIFICATION notification = {};
    notification.ulEventType = type;
    notification.info.tab.ulTableEvent = tableEvent;
    return notification;
}

class AdviseSink : public ObjectsTest
{
protected:
    Listener m_listener{m_journal};
    RowTable m_double{m_journal};
    CZebTable m_table{&m_double};
};

} // namespace

TEST_F(AdviseSink, EachEventReachesItsOperation)
{
    for (ULONG tableEvent = 0; tableEvent <= 10; ++tableEvent)
    {
        NOTIFICATION notification = Event(tableEvent);
        m_listener.OnTable_Modified(&notification.info.tab);
    }
    EXPECT_EQ(Calls(),
              (Lines{"modified 0x0", "modified 0x1", "reload common", "modified 0x2", "reload common", "modified 0x3",
                     "added", "modified 0x4", "deleted", "modified 0x5", "row modified", "modified 0x6", "modified 0x7",
                     "modified 0x8", "modified 0x9", "reload common", "modified 0xA"}));
}

TEST_F(AdviseSink, WithoutADelegateAcceptsEverything)
{
    auto* sink = new CAdviseSink(nullptr);
    NOTIFICATION notification = Event(TABLE_CHANGED);
    EXPECT_EQ(sink->OnNotify(1, &notification), 0u);
    EXPECT_EQ(sink->OnNotify(1, nullptr), 0u);
    EXPECT_EQ(sink->Release(), 0u);
}

TEST_F(AdviseSink, OnlyTableEventsReachTheDelegate)
{
    auto* sink = new CAdviseSink(&m_listener);
    NOTIFICATION batch[] = {Event(TABLE_ROW_ADDED), Event(TABLE_ROW_DELETED, fnevNewMail), Event(TABLE_SORT_DONE)};
    EXPECT_EQ(sink->OnNotify(3, batch), 0u);
    EXPECT_EQ(Calls(), (Lines{"modified 0x3", "added", "modified 0x6"}));
    EXPECT_EQ(sink->Release(), 0u);
}

TEST_F(AdviseSink, AnswersForItsTwoInterfaces)
{
    auto* sink = new CAdviseSink(&m_listener);
    for (const IID* iid : {&IID_IUnknown, &IID_IMAPIAdviseSink})
    {
        void* result = nullptr;
        EXPECT_EQ(sink->QueryInterface(*iid, &result), S_OK);
        EXPECT_EQ(result, static_cast<IMAPIAdviseSink*>(sink));
        EXPECT_EQ(sink->Release(), 1u);
    }
    void* result = sink;
    EXPECT_EQ(sink->QueryInterface(IID_IMAPITable, &result), E_NOINTERFACE);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(sink->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(sink->AddRef(), 2u);
    EXPECT_EQ(sink->Release(), 1u);
    EXPECT_EQ(sink->Release(), 0u);
}

TEST_F(AdviseSink, CopiesCopyCountAndDelegate)
{
    auto* sink = new CAdviseSink(&m_listener);
    sink->AddRef();
    auto* copy = new CAdviseSink(*sink);
    NOTIFICATION notification = Event(TABLE_SORT_DONE);
    copy->OnNotify(1, &notification);
    EXPECT_EQ(Calls(), (Lines{"modified 0x6"}));
    EXPECT_EQ(copy->Release(), 1u);
    auto* assigned = new CAdviseSink(nullptr);
    *assigned = *sink;
    assigned->OnNotify(1, &notification);
    EXPECT_EQ(Calls().size(), 1u);
    EXPECT_EQ(assigned->Release(), 1u);
    EXPECT_EQ(assigned->Release() + copy->Release() + sink->Release(), 1u);
    EXPECT_EQ(sink->Release(), 0u);
}

TEST_F(AdviseSink, ADelegatesExceptionIsLogged)
{
    auto* sink = new CAdviseSink(&m_listener);
    int calls = 0;
    m_listener.m_inside = [&]
    {
        ++calls;
        if (calls == 1)
        {
            CZebException::Throw(MAPI_E_BUSY, "x", 1);
        }
        if (calls == 2)
        {
            RaiseComError(E_FAIL);
        }
        throw calls;
    };
    NOTIFICATION batch[] = {Event(1), Event(1), Event(1)};
    EXPECT_EQ(sink->OnNotify(3, batch), 0u);
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"MAPI_E_BUSY\""), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: _com_error: 0x80004005"), 1u);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: <Unknown>"), 1u);
    sink->Release();
}

TEST_F(AdviseSink, TheBinderAdvisesAndUnadvises)
{
    {
        CAdviseSinkBinder binder(&m_listener, &m_table);
        EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
        EXPECT_EQ(m_double.References(), 2u) << "the binder holds the table";
        m_double.Notify(TABLE_ROW_ADDED);
        EXPECT_EQ(Calls(), (Lines{"modified 0x3", "added"}));
        binder.Advise(m_table);
        EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0xABABABAB0000004D)", "table: Advise(0x100)"}));
    }
    EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0xABABABAB0000004D)"}));
    EXPECT_EQ(m_double.References(), 1u);
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(AdviseSink, UnadvisingTwiceUnregistersOnce)
{
    CAdviseSinkBinder binder(&m_listener, &m_table);
    binder.Unadvise();
    binder.Unadvise();
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)", "table: Unadvise(0xABABABAB0000004D)"}));
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(AdviseSink, ABinderMayHaveNoTable)
{
    CAdviseSinkBinder binder(&m_listener, nullptr);
    binder.Unadvise();
    EXPECT_TRUE(Calls().empty());
}

TEST_F(AdviseSink, AnEmptyTableEndsIdle)
{
    CZebTable empty;
    CAdviseSinkBinder binder(&m_listener, &empty);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: _com_error: 0x80004003"), 1u);
    binder.Unadvise();
    EXPECT_TRUE(Calls().empty());
}

TEST_F(AdviseSink, ARefusedRegistrationEndsIdle)
{
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    CAdviseSinkBinder binder(&m_listener, &m_table);
    EXPECT_EQ(m_log.CountBeginning("EXCEPTION: Description: \"MAPI_E_NO_SUPPORT\""), 1u);
    EXPECT_EQ(m_double.References(), 1u) << "the table is let go";
    binder.Unadvise();
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
}

TEST_F(AdviseSink, AFailingUnregistrationIsLogged)
{
    m_double.Fail("Unadvise", MAPI_E_NETWORK_ERROR);
    CAdviseSinkBinder binder(&m_listener, &m_table);
    IMAPIAdviseSink* const kept = m_double.Sink();
    kept->AddRef();
    binder.Unadvise();
    EXPECT_EQ(Caught(), 1u);
    Calls();
    NOTIFICATION notification = Event(TABLE_CHANGED);
    EXPECT_EQ(kept->OnNotify(1, &notification), 0u);
    EXPECT_TRUE(Calls().empty());
    EXPECT_EQ(kept->Release(), 0u);
}

TEST_F(AdviseSink, FailuresAreLoggedWithTheirSource)
{
    m_double.Fail("Unadvise", MAPI_E_NETWORK_ERROR);
    {
        CAdviseSinkBinder binder(&m_listener, &m_table);
    }
    const std::vector<std::string> texts = m_log.Texts();
    ASSERT_EQ(texts.size(), 2u);
    EXPECT_NE(texts[0].find("File zebapi/tables/Table.cpp"), std::string::npos) << texts[0];
    EXPECT_NE(texts[1].find("File: \"zebapi/tables/AdviseSink.cpp\""), std::string::npos) << texts[1];
    m_log.Clear();
    auto* sink = new CAdviseSink(&m_listener);
    m_listener.m_inside = [] { throw 1; };
    NOTIFICATION notification = Event(TABLE_CHANGED);
    sink->OnNotify(1, &notification);
    sink->Release();
    EXPECT_NE(m_log.Texts().at(0).find("File: \"zebapi/tables/AdviseSink.cpp\""), std::string::npos);
}

TEST_F(AdviseSink, LackOfMemoryEndsIdle)
{
    CAdviseSinkBinder binder(&m_listener, nullptr);
    {
        const FailingNew failing(0, true);
        binder.Advise(m_table);
    }
    EXPECT_EQ(Caught(), 1u);
    EXPECT_TRUE(Calls().empty());
    EXPECT_EQ(m_double.References(), 1u) << "the table is let go";
    binder.Advise(m_table);
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
}

TEST_F(AdviseSink, ACheckedRegistrationNotifies)
{
    CAdviseSinkBinder binder(&m_listener, nullptr);
    binder.AdviseChecked(m_table);
    m_double.Notify(TABLE_ROW_ADDED);
    binder.AdviseChecked(m_table);
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)", "modified 0x3", "added", "table: Unadvise(0xABABABAB0000004D)",
                              "table: Advise(0x100)"}));
    EXPECT_EQ(m_log.Lines().size(), 0u);
}

TEST_F(AdviseSink, ACheckedRegistrationThrowsItsFailure)
{
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    m_double.m_error = "no notifications here";
    CAdviseSinkBinder binder(&m_listener, nullptr);
    EXPECT_NE(Described([&] { binder.AdviseChecked(m_table); }).find("no notifications here"), std::string::npos);
    EXPECT_EQ(Thrown([&] { binder.AdviseChecked(m_table); }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(m_double.References(), 1u) << "the table is let go";
    EXPECT_EQ(Caught(), 0u);
    CZebTable empty;
    EXPECT_EQ(Raised([&] { binder.AdviseChecked(empty); }), E_POINTER);
    Calls();
    binder.Unadvise();
    EXPECT_EQ(Calls(), Lines{});
}

TEST_F(AdviseSink, CheckedRegistrationReportsLackOfMemory)
{
    CAdviseSinkBinder binder(&m_listener, nullptr);
    HRESULT thrown = S_OK;
    {
        const FailingNew failing(0, true);
        thrown = Thrown([&] { binder.AdviseChecked(m_table); });
    }
    EXPECT_EQ(thrown, MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(Calls(), Lines{});
    EXPECT_EQ(m_double.References(), 1u);
}

TEST_F(AdviseSink, NotificationsMayEndACheckedRegistration)
{
    auto binder = std::make_unique<CAdviseSinkBinder>(&m_listener, nullptr);
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    m_listener.m_inside = [&] { binder.reset(); };
    m_double.m_whileAdvising = [&] { m_double.Notify(TABLE_CHANGED); };
    CAdviseSinkBinder* const advised = binder.get();
    EXPECT_EQ(Thrown([&] { advised->AdviseChecked(m_table); }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(binder, nullptr);
}

TEST_F(AdviseSink, AdvisingAnotherTablePassesThroughIdle)
{
    RowTable other(m_journal, "other");
    CZebTable otherTable(&other);
    CAdviseSinkBinder binder(&m_listener, &m_table);
    binder.Advise(otherTable);
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)", "table: Unadvise(0xABABABAB0000004D)", "other: Advise(0x100)"}));
    EXPECT_EQ(m_double.References(), 1u);
    EXPECT_EQ(other.References(), 2u);
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    binder.Advise(m_table);
    EXPECT_EQ(Calls(), (Lines{"other: Unadvise(0xABABABAB0000004D)", "table: Advise(0x100)"}));
    EXPECT_EQ(m_double.References() + other.References(), 2u) << "a failed registration ends idle";
    binder.Unadvise();
    EXPECT_TRUE(Calls().empty());
}

TEST_F(AdviseSink, ARefusedConnectionIsNotUnregistered)
{
    m_double.Fail("Advise", MAPI_E_NO_SUPPORT);
    m_double.m_fillsConnectionOnFailure = true;
    CAdviseSinkBinder binder(&m_listener, &m_table);
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)"}));
}

TEST_F(AdviseSink, TheBinderUnadvisesThroughItsSlot)
{
    class Counting : public CAdviseSinkBinder
    {
    public:
        using CAdviseSinkBinder::CAdviseSinkBinder;
        void Unadvise() override
        {
            ++m_unadvised;
            CAdviseSinkBinder::Unadvise();
        }
        int m_unadvised = 0;
    };
    Counting binder(&m_listener, nullptr);
    binder.Advise(m_table);
    EXPECT_EQ(binder.m_unadvised, 1);
    CZebTable empty;
    binder.Advise(empty);
    EXPECT_EQ(binder.m_unadvised, 3) << "once first, once after the failure";
}

TEST_F(AdviseSink, MapisReferenceKeepsTheSinkAlive)
{
    CAdviseSinkBinder binder(&m_listener, &m_table);
    IMAPIAdviseSink* const sink = m_double.Sink();
    EXPECT_EQ(sink->AddRef(), 3u) << "the binder's, the provider's and this one";
    binder.Unadvise();
    EXPECT_EQ(sink->Release(), 0u);
}

TEST_F(AdviseSink, CopiedBindersShareSinkAndConnection)
{
    m_double.m_connection = 0x4D;
    CAdviseSinkBinder binder(&m_listener, &m_table);
    IMAPIAdviseSink* const sink = m_double.Sink();
    sink->AddRef();
    CAdviseSinkBinder copy(binder);
    CAdviseSinkBinder assigned(nullptr, nullptr);
    assigned = binder;
    EXPECT_EQ(sink->AddRef(), 4u) << "copies do not count";
    EXPECT_EQ(m_double.References(), 4u) << "but each holds the table";
    sink->AddRef();
    Calls();
    copy.Unadvise();
    assigned.Unadvise();
    binder.Unadvise();
    EXPECT_EQ(Calls(), (Lines{"table: Unadvise(0x4D)", "table: Unadvise(0x4D)", "table: Unadvise(0x4D)"}));
    EXPECT_EQ(sink->Release(), 0u);
}

TEST_F(AdviseSink, CopyingADelegateCopiesNothing)
{
    CAdviseSinkDelegate plain;
    CAdviseSinkDelegate copy(plain);
    copy = plain;
    NOTIFICATION notification = Event(TABLE_CHANGED);
    copy.OnTable_Modified(&notification.info.tab);
    EXPECT_EQ(sizeof(CAdviseSinkDelegate), sizeof(void*));
}

TEST_F(AdviseSink, ADelegateMayUnadviseInside)
{
    CAdviseSinkBinder binder(&m_listener, &m_table);
    m_listener.m_inside = [&] { binder.Unadvise(); };
    NOTIFICATION batch[] = {Event(TABLE_SORT_DONE), Event(TABLE_SORT_DONE)};
    m_double.Sink()->OnNotify(2, batch);
    EXPECT_EQ(Calls(), (Lines{"table: Advise(0x100)", "modified 0x6", "table: Unadvise(0xABABABAB0000004D)"}));
}

TEST_F(AdviseSink, UnadvisingAwaitsADelivery)
{
    CAdviseSinkBinder binder(&m_listener, &m_table);
    std::atomic<bool> entered{false};
    std::atomic<bool> done{false};
    m_listener.m_inside = [&]
    {
        entered = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        done = true;
    };
    IMAPIAdviseSink* const sink = m_double.Sink();
    std::thread provider([&]
    {
        NOTIFICATION notification = Event(TABLE_SORT_DONE);
        sink->OnNotify(1, &notification);
    });
    while (!entered)
    {
        std::this_thread::yield();
    }
    binder.Unadvise();
    EXPECT_TRUE(done);
    provider.join();
}

TEST_F(AdviseSink, ABinderMayGoDuringNotifications)
{
    std::atomic<bool> alive{false};
    std::atomic<bool> stop{false};
    std::atomic<int> late{0};
    m_listener.m_inside = [&] { late += alive ? 0 : 1; };
    for (int i = 0; i < 200; ++i)
    {
        alive = true;
        stop = false;
        CAdviseSinkBinder binder(&m_listener, &m_table);
        IMAPIAdviseSink* const sink = m_double.Sink();
        sink->AddRef();
        std::thread provider([&]
        {
            NOTIFICATION notification = Event(TABLE_SORT_DONE);
            while (!stop)
            {
                sink->OnNotify(1, &notification);
            }
        });
        binder.Unadvise();
        alive = false;
        std::this_thread::yield();
        stop = true;
        provider.join();
        sink->Release();
    }
    EXPECT_EQ(late, 0);
}
