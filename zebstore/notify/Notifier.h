// The thread on which advise sinks are called.
#pragma once

#include "platform/thread.h"
#include "zebstore/base/Error.h"
#include "zebstore/base/Locks.h"
#include "zebstore/base/Object.h"
#include "zebstore/storage/CommitObserver.h"

#include <memory>
#include <thread>
#include <vector>

namespace zebstore
{

/// One registration of an advise sink; holds a reference on the sink until it is cut.
/// Threads: any. No lock is held while the sink is called.
class Connection
{
public:
    explicit Connection(IMAPIAdviseSink* sink)
        : m_sink(Ref<IMAPIAdviseSink>::Share(sink))
    {
    }

    /// Hands the notifications to the sink, unless the connection is cut.
    void Deliver(ULONG count, NOTIFICATION* notifications);
    /// After it the sink is not called any more: a call in progress is waited for, unless it is this thread's own.
    void Cut();

private:
    MutexOf<lockorder::Connection> m_lock;
    Condition m_idle;
    Ref<IMAPIAdviseSink> m_sink;
    std::thread::id m_deliverer; // of the call in progress
};

/// A number for a new connection. None is given twice in a process, so one of another object is known for wrong.
ULONG_PTR NextConnectionNumber();

/// Looks for changes, and has sinks to tell of them.
class Notified
{
public:
    virtual ~Notified() = default;
    /// Called on the notifier's thread after each commit of this process, and every few milliseconds for the commits of
    /// other processes. @return true when there was something to tell
    virtual bool LookAndDeliver() noexcept = 0;
};

/// Owns the provider's one notification thread, which runs from the first Add to Stop and sleeps while it has no
/// members. Threads: any.
class Notifier : public CommitObserver
{
public:
    /// The only one. It is never destroyed: a host that does not uninitialize may leave the thread running.
    static Notifier& The();

    void Add(const std::shared_ptr<Notified>& member);
    /// After it `member` is not looked at any more, nor kept alive; a look in progress is waited for, unless it is this
    /// thread's own.
    void Remove(const Notified* member);
    /// Wakes the thread.
    void Committed() noexcept override;
    /// Forgets all members and ends the thread's work, which it waits for; called from a sink, on the thread itself, it
    /// leaves it asleep. May be called while the library is unloaded: the end of the thread itself is not waited for
    /// where it would need the loader.
    void Stop();

private:
    using NotifierLock = MutexOf<lockorder::Notifier>;

    /// Of one thread; it and the notifier share it.
    struct Work
    {
        bool stopping = false;
        bool began = false;
        bool ended = false;
    };

    Notifier() = default;
    static void RunThread(void* work);
    void StartThread();
    void Run(Work& work);
    void RunUntilStopped(std::unique_lock<NotifierLock>& hold, const bool& stopping);
    bool LookAtAll(std::unique_lock<NotifierLock>& hold, const bool& stopping);

    NotifierLock m_lock;
    Condition m_changed;
    Condition m_idle;
    std::vector<std::shared_ptr<Notified>> m_members;
    const Notified* m_current = nullptr;
    bool m_woken = false;
    zeb::platform::LibraryThread m_thread;
    std::thread::id m_runner;
    std::shared_ptr<Work> m_work; // of the thread
};

/// Has the notifier look at `member` for the sake of its connection `number`, which ends when that fails.
template <class Member>
void LookFor(const std::shared_ptr<Member>& member, ULONG_PTR number)
{
    try
    {
        Notifier::The().Add(member);
    }
    catch (...)
    {
        member->Unadvise(number);
        throw;
    }
}

/// Takes the connection of this number out of a map of what is known of each connection.
/// @throws Error MAPI_E_INVALID_PARAMETER with this text when there is none
template <class Map>
std::shared_ptr<Connection> TakeConnection(Map& connections, ULONG_PTR number, const char* none)
{
    const auto found = connections.find(number);
    if (found == connections.end())
    {
        throw Error(MAPI_E_INVALID_PARAMETER, none);
    }
    std::shared_ptr<Connection> connection = std::move(found->second.connection);
    connections.erase(found);
    return connection;
}

} // namespace zebstore
