#include "zebstore/base/Watch.h"

#include "platform/environment.h"
#include "platform/text.h"
#include "platform/thread.h"
#include "zebstore/base/LastError.h"
#include "zebstore/base/Locks.h"

#include <cstdio>
#include <new>

namespace zebstore
{

std::atomic<bool> g_callsWatched{false};
std::atomic<long> g_liveObjects{0};
std::atomic<long> g_liveBuffers{0};
std::atomic<long> g_badFrees{0};

namespace
{

struct Watch
{
    MutexOf<lockorder::Watch> lock;
    std::FILE* trace = nullptr;
    std::atomic<unsigned long> calls{0};
    std::atomic<unsigned long> allocations{0};
    std::atomic<bool> happened{false};
    Switches switches;
};

Watch& TheWatch()
{
    // Never destroyed, as calls come until the process ends; it holds no memory of its own.
    alignas(Watch) static unsigned char place[sizeof(Watch)];
    static Watch* const watch = new (place) Watch;
    return *watch;
}

} // namespace

bool CallBegins(unsigned long& number, HRESULT& result) noexcept
{
    Watch& watch = TheWatch();
    number = ++watch.calls;
    if (number != watch.switches.failingCall)
    {
        return false;
    }
    watch.happened = true;
    result = watch.switches.failingCode;
    RememberError(result, "failed by the fault switch");
    return true;
}

void CallEnds(unsigned long number, const char* method, HRESULT result) noexcept
{
    Watch& watch = TheWatch();
    const std::lock_guard hold(watch.lock);
    if (watch.trace == nullptr)
    {
        return;
    }
    std::string text;
    if (FAILED(result))
    {
        try
        {
            text = LastErrorText(result);
        }
        catch (...)
        {
        }
    }
    std::fprintf(watch.trace, "%lu %s 0x%08X%s%s\n", number, method, static_cast<unsigned>(result),
                 text.empty() ? "" : " ", text.c_str());
    std::fflush(watch.trace);
}

bool ParseFault(const std::string& text, Switches& switches)
{
    unsigned long number = 0;
    unsigned int code = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), "call:%lu:%x%n", &number, &code, &used) == 2 &&
        text.size() == static_cast<size_t>(used) && number > 0 && FAILED(static_cast<HRESULT>(code)))
    {
        switches.failingCall = number;
        switches.failingCode = static_cast<HRESULT>(code);
        return true;
    }
    if (std::sscanf(text.c_str(), "alloc:%lu%n", &number, &used) == 1 && text.size() == static_cast<size_t>(used) &&
        number > 0)
    {
        switches.failingAllocation = number;
        return true;
    }
    return false;
}

void ApplySwitches(const Switches& switches)
{
    Watch& watch = TheWatch();
    const std::lock_guard hold(watch.lock);
    g_callsWatched = false;
    if (watch.trace != nullptr)
    {
        std::fclose(watch.trace);
    }
    watch.trace = nullptr;
    watch.calls = 0;
    watch.allocations = 0;
    watch.happened = false;
    watch.switches = switches;
    std::string().swap(watch.switches.traceFile);
    if (!switches.traceFile.empty())
    {
        watch.trace = zeb::platform::OpenFile(switches.traceFile, "a");
        if (watch.trace == nullptr)
        {
            std::fprintf(stderr, "zebstore: the trace file %s cannot be written\n", switches.traceFile.c_str());
        }
    }
    g_callsWatched = watch.trace != nullptr || switches.failingCall != 0 || switches.failingAllocation != 0;
}

void ApplySwitchesOfEnvironment()
{
    Switches switches;
    switches.traceFile = zeb::platform::EnvironmentVariable("ZEBSTORE_TRACE").value_or("");
    const std::string fault = zeb::platform::EnvironmentVariable("ZEBSTORE_FAULT").value_or("");
    if (!fault.empty() && !ParseFault(fault, switches))
    {
        std::fprintf(stderr, "zebstore: ZEBSTORE_FAULT '%s' is neither call:N:CODE nor alloc:N\n", fault.c_str());
    }
    ApplySwitches(switches);
}

unsigned long CallsCounted() noexcept
{
    return TheWatch().calls;
}

bool FaultHappened() noexcept
{
    return TheWatch().happened;
}

bool AllocationFails() noexcept
{
    Watch& watch = TheWatch();
    if (++watch.allocations != watch.switches.failingAllocation)
    {
        return false;
    }
    watch.happened = true;
    return true;
}

void CountBadFree(const char* by, const void* block) noexcept
{
    ++g_badFrees;
    Watch& watch = TheWatch();
    const std::lock_guard hold(watch.lock);
    if (watch.trace == nullptr)
    {
        return;
    }
    std::fprintf(watch.trace, "bad free: %s of %p, which is no live buffer\n", by, block);
    std::fflush(watch.trace);
}

void TraceNote(const std::string& text) noexcept
{
    Watch& watch = TheWatch();
    const std::lock_guard hold(watch.lock);
    if (watch.trace == nullptr)
    {
        return;
    }
    std::fprintf(watch.trace, "note: %s\n", text.c_str());
    std::fflush(watch.trace);
}

void TraceLiveCounts() noexcept
{
    Watch& watch = TheWatch();
    // A thread that ended with the process may have held the lock.
    std::unique_lock hold(watch.lock, std::defer_lock);
    if (zeb::platform::IsProcessEnding() ? !hold.try_lock() : (hold.lock(), false))
    {
        return;
    }
    if (watch.trace == nullptr)
    {
        return;
    }
    std::fprintf(watch.trace, "live objects %ld, live buffers %ld, bad frees %ld\n", g_liveObjects.load(),
                 g_liveBuffers.load(), g_badFrees.load());
    std::fflush(watch.trace);
}

} // namespace zebstore
