#include "platform/lockorder.h"

#ifdef ZEB_CHECK_LOCKS

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

namespace zeb::platform
{

namespace
{

struct Held
{
    const void* lock;
    int rank;
    const char* name;
};

// Without a destructor: locks are used until the thread has ended.
constexpr size_t MostHeld = 64;
thread_local Held g_held[MostHeld];
thread_local size_t g_heldCount = 0;

/// The latest cases of a lock that was taken while another one of its rank was held. Nothing here has a destructor or comes
/// from the heap: locks are used until the library is unloaded, and by code that has no memory left.
struct SameRank
{
    const void* held;
    const void* taken;
};
std::mutex g_sameRankLock;
std::array<SameRank, 256> g_sameRank;
size_t g_sameRankNext = 0;

[[noreturn]] void Fail(const Held& held, int rank, const char* name, const char* why)
{
    std::fprintf(stderr, "lock order: \"%s\" (rank %d) is locked while \"%s\" (rank %d) is held%s\n", name, rank,
                 held.name, held.rank, why);
    std::fflush(stderr);
    std::abort();
}

bool WasTaken(const void* held, const void* taken)
{
    return std::any_of(g_sameRank.begin(), g_sameRank.end(),
                       [&](const SameRank& each) { return each.held == held && each.taken == taken; });
}

void TakeSameRank(const Held& held, const void* lock, int rank, const char* name)
{
    const std::lock_guard hold(g_sameRankLock);
    if (WasTaken(lock, held.lock))
    {
        Fail(held, rank, name, ", and the other way round before");
    }
    if (!WasTaken(held.lock, lock))
    {
        g_sameRank[g_sameRankNext++ % g_sameRank.size()] = {held.lock, lock};
    }
}

bool IsHeld(const void* lock)
{
    for (size_t i = 0; i < g_heldCount; ++i)
    {
        if (g_held[i].lock == lock)
        {
            return true;
        }
    }
    return false;
}

} // namespace

void LockIsTaken(const void* lock, int rank, const char* name) noexcept
{
    if (!IsHeld(lock))
    {
        for (size_t i = 0; i < g_heldCount; ++i)
        {
            const Held& held = g_held[i];
            if (held.rank > rank)
            {
                Fail(held, rank, name, "");
            }
            if (held.rank == rank)
            {
                TakeSameRank(held, lock, rank, name);
            }
        }
    }
    LockIsTried(lock, rank, name);
}

void LockIsTried(const void* lock, int rank, const char* name) noexcept
{
    if (g_heldCount == MostHeld)
    {
        Fail(g_held[0], rank, name, ": too many locks");
    }
    g_held[g_heldCount++] = {lock, rank, name};
}

void LockIsReleased(const void* lock) noexcept
{
    for (size_t i = g_heldCount; i-- > 0;)
    {
        if (g_held[i].lock == lock)
        {
            for (--g_heldCount; i < g_heldCount; ++i)
            {
                g_held[i] = g_held[i + 1];
            }
            return;
        }
    }
}

void LockIsGone(const void* lock) noexcept
{
    const std::lock_guard hold(g_sameRankLock);
    for (SameRank& each : g_sameRank)
    {
        if (each.held == lock || each.taken == lock)
        {
            each = {};
        }
    }
}

} // namespace zeb::platform

#endif
