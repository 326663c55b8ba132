#include "zebstore/notify/Notifier.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>

namespace zebstore
{

namespace
{

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// Poll interval for commits of other processes.
constexpr auto Poll = 20ms;
// While one commit follows the other, the thread rests as long as it worked, so that it takes no more than half of the
// store's time and reports several at once.
constexpr Clock::duration LongestRest = 20ms;

} // namespace

void Connection::Deliver(ULONG count, NOTIFICATION* notifications)
{
    Ref<IMAPIAdviseSink> sink;
    {
        const std::lock_guard hold(m_lock);
        if (!m_sink)
        {
            return;
        }
        sink = m_sink;
        m_deliverer = std::this_thread::get_id();
    }
    try
    {
        sink->OnNotify(count, notifications);
    }
    catch (...)
    {
        // A sink cannot report a failure to anyone.
    }
    // Before the call counts as over: whoever waits in Cut may unload the sink's code next.
    sink = {};
    const std::lock_guard hold(m_lock);
    m_deliverer = {};
    m_idle.notify_all();
}

void Connection::Cut()
{
    Ref<IMAPIAdviseSink> sink;
    std::unique_lock hold(m_lock);
    std::swap(sink, m_sink);
    if (m_deliverer != std::this_thread::get_id())
    {
        m_idle.wait(hold, [&] { return m_deliverer == std::thread::id(); });
    }
    // The sink's last reference may go with this, and it may call back: not under the lock.
    hold.unlock();
}

ULONG_PTR NextConnectionNumber()
{
    static std::atomic<ULONG_PTR> last{0};
    return ++last;
}

Notifier& Notifier::The()
{
    // Neither destroyed nor on the heap: it holds nothing once it was stopped, so unloading the library loses nothing.
    alignas(Notifier) static unsigned char place[sizeof(Notifier)];
    static Notifier* const notifier = new (place) Notifier;
    return *notifier;
}

void Notifier::Add(const std::shared_ptr<Notified>& member)
{
    const std::lock_guard hold(m_lock);
    if (std::find(m_members.begin(), m_members.end(), member) != m_members.end())
    {
        return;
    }
    m_members.push_back(member);
    try
    {
        if (!m_thread.IsStarted())
        {
            StartThread();
        }
    }
    catch (...)
    {
        m_members.pop_back();
        throw;
    }
    m_changed.notify_all();
}

void Notifier::StartThread()
{
    // Ends the thread of a host that did not, before the library's code goes.
    static const struct AtEnd
    {
        ~AtEnd() { The().Stop(); }
    } atEnd;
    m_work = std::make_shared<Work>();
    auto shared = std::make_unique<std::shared_ptr<Work>>(m_work);
    if (!m_thread.Start(RunThread, shared.get()))
    {
        throw Error(MAPI_E_NOT_ENOUGH_RESOURCES, "the system gives no thread for notifications");
    }
    static_cast<void>(shared.release()); // now the thread owns it
}

void Notifier::RunThread(void* work)
{
    const std::unique_ptr<std::shared_ptr<Work>> shared(static_cast<std::shared_ptr<Work>*>(work));
    The().Run(**shared);
}

void Notifier::Remove(const Notified* member)
{
    std::shared_ptr<Notified> last;
    std::unique_lock hold(m_lock);
    const auto found =
        std::find_if(m_members.begin(), m_members.end(), [&](const auto& each) { return each.get() == member; });
    if (found == m_members.end())
    {
        return;
    }
    last = std::move(*found);
    m_members.erase(found);
    if (m_runner != std::this_thread::get_id())
    {
        m_idle.wait(hold, [&] { return m_current != member; });
    }
    hold.unlock();
}

void Notifier::Committed() noexcept
{
    const std::lock_guard hold(m_lock);
    if (m_woken || m_members.empty())
    {
        return;
    }
    m_woken = true;
    m_changed.notify_all();
}

void Notifier::Stop()
{
    if (zeb::platform::IsProcessEnding())
    {
        return;
    }
    std::vector<std::shared_ptr<Notified>> members;
    std::unique_lock hold(m_lock);
    members.swap(m_members);
    if (!m_thread.IsStarted() || m_runner == std::this_thread::get_id())
    {
        return;
    }
    const std::shared_ptr<Work> work = std::move(m_work);
    work->stopping = true;
    m_changed.notify_all();
    zeb::platform::LibraryThread thread = std::move(m_thread);
    // One that has not begun may be waiting for the loader; it will do nothing.
    m_idle.wait(hold, [&] { return work->ended || !work->began; });
    hold.unlock();
    thread.End();
}

void Notifier::Run(Work& work)
{
    std::unique_lock hold(m_lock);
    if (!work.stopping)
    {
        work.began = true;
        m_runner = std::this_thread::get_id();
        RunUntilStopped(hold, work.stopping);
        m_runner = {};
    }
    work.ended = true;
    m_idle.notify_all();
}

void Notifier::RunUntilStopped(std::unique_lock<NotifierLock>& hold, const bool& stopping)
{
    while (!stopping)
    {
        if (m_members.empty())
        {
            m_changed.wait(hold, [&] { return stopping || !m_members.empty(); });
            continue;
        }
        m_changed.wait_for(hold, Poll, [&] { return stopping || m_woken; });
        m_woken = false;
        const Clock::time_point begin = Clock::now();
        if (!LookAtAll(hold, stopping))
        {
            continue;
        }
        const Clock::duration rest = std::min(Clock::now() - begin, LongestRest);
        m_changed.wait_for(hold, rest, [&] { return stopping; });
    }
}

bool Notifier::LookAtAll(std::unique_lock<NotifierLock>& hold, const bool& stopping)
{
    bool delivered = false;
    const std::vector<std::weak_ptr<Notified>> members(m_members.begin(), m_members.end());
    for (const std::weak_ptr<Notified>& each : members)
    {
        std::shared_ptr<Notified> member = each.lock();
        if (stopping || !member || std::find(m_members.begin(), m_members.end(), member) == m_members.end())
        {
            continue;
        }
        m_current = member.get();
        hold.unlock();
        delivered = member->LookAndDeliver() || delivered;
        member.reset();
        hold.lock();
        m_current = nullptr;
        m_idle.notify_all();
    }
    return delivered;
}

} // namespace zebstore
