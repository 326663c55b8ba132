#include "platform/lockorder.h"

#ifdef ZEB_CHECK_LOCKS

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>

namespace zeb::platform
{

namespace
{

struct Held
{
    const void* lock;
    const LockKind* kind;
};

// Without a constructor and a destructor: locks are used until the thread, and the process, has ended.
constexpr size_t MostHeld = 64;
thread_local Held g_held[MostHeld];
thread_local size_t g_heldCount = 0;

/// The latest cases of a lock that was taken while another one of its kind was held. Nothing here has a destructor or comes
/// from the heap: locks are used until the library is unloaded, and by code that has no memory left.
struct Nesting
{
    std::atomic<const void*> held;
    std::atomic<const void*> taken;

    bool Is(const void* outer, const void* inner) const { return Get(held) == outer && Get(taken) == inner; }
    bool Names(const void* lock) const { return Get(held) == lock || Get(taken) == lock; }
    void Set(const void* outer, const void* inner)
    {
        held.store(outer, std::memory_order_relaxed);
        taken.store(inner, std::memory_order_relaxed);
    }

private:
    static const void* Get(const std::atomic<const void*>& value) { return value.load(std::memory_order_relaxed); }
};
std::mutex g_nestingLock;
std::array<Nesting, 256> g_nesting;
size_t g_nestingNext = 0;

[[noreturn]] void Fail(const Held& held, const LockKind& kind, const char* why)
{
    std::fprintf(stderr, "lock order: \"%s\" (rank %d) is locked while \"%s\" (rank %d) is held%s\n", kind.name,
                 kind.rank, held.kind->name, held.kind->rank, why);
    std::fflush(stderr);
    std::abort();
}

bool WasTaken(const void* held, const void* taken)
{
    return std::any_of(g_nesting.begin(), g_nesting.end(), [&](const Nesting& each) { return each.Is(held, taken); });
}

void Nest(const Held& held, const void* lock, const LockKind& kind)
{
    const std::lock_guard hold(g_nestingLock);
    if (WasTaken(lock, held.lock))
    {
        Fail(held, kind, ", and the other way round before");
    }
    if (!WasTaken(held.lock, lock))
    {
        g_nesting[g_nestingNext++ % g_nesting.size()].Set(held.lock, lock);
    }
}

const Held* FindHeld(const void* lock)
{
    Held* const end = g_held + g_heldCount;
    Held* const found = std::find_if(g_held, end, [&](const Held& held) { return held.lock == lock; });
    return found == end ? nullptr : found;
}

void RequireInside(const Held& held, const void* lock, const LockKind& kind)
{
    const bool same = held.kind->rank == kind.rank;
    if (held.kind->rank > kind.rank || (same && !kind.nests))
    {
        Fail(held, kind, "");
    }
    if (same)
    {
        Nest(held, lock, kind);
    }
}

} // namespace

void LockIsTaken(const void* lock, const LockKind& kind) noexcept
{
    const Held* const same = FindHeld(lock);
    if (same != nullptr && !kind.recursive)
    {
        Fail(*same, kind, ": it waits for itself");
    }
    for (size_t i = 0; same == nullptr && i < g_heldCount; ++i)
    {
        RequireInside(g_held[i], lock, kind);
    }
    LockIsTried(lock, kind);
}

void LockIsTried(const void* lock, const LockKind& kind) noexcept
{
    if (g_heldCount == MostHeld)
    {
        Fail(g_held[0], kind, ": too many locks");
    }
    g_held[g_heldCount++] = {lock, &kind};
}

void LockIsReleased(const void* lock) noexcept
{
    for (size_t i = g_heldCount; i-- > 0;)
    {
        if (g_held[i].lock == lock)
        {
            std::copy(g_held + i + 1, g_held + g_heldCount, g_held + i);
            --g_heldCount;
            return;
        }
    }
}

// Most locks never nest: the table's lock is left alone then, so that the thread sanitizer sees no order between threads
// that a release would not have.
void LockIsGone(const void* lock) noexcept
{
    const auto names = [&](const Nesting& each) { return each.Names(lock); };
    if (std::none_of(g_nesting.begin(), g_nesting.end(), names))
    {
        return;
    }
    const std::lock_guard hold(g_nestingLock);
    for (Nesting& each : g_nesting)
    {
        if (names(each))
        {
            each.Set(nullptr, nullptr);
        }
    }
}

} // namespace zeb::platform

#endif
