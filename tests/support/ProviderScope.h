// Distinguishes the library's code from that of a double acting as provider.
#pragma once

#include "platform/mapi.h"

namespace zeb::test
{

/// While it lives, this thread runs a provider's code, or a host's: its allocations are exempt from simulated failures.
class ProviderScope
{
public:
    ProviderScope() { ++Depth(); }
    ~ProviderScope() { --Depth(); }
    ProviderScope(const ProviderScope&) = delete;
    ProviderScope& operator=(const ProviderScope&) = delete;

    static bool IsInside() { return Depth() != 0; }

private:
    static int& Depth()
    {
        static thread_local int depth = 0;
        return depth;
    }
};

/// While it lives, calls of doubles on this thread fail after the next `after` ones; with
/// `once` only the first of those. One at a time.
class FailingCalls
{
public:
    static constexpr HRESULT Result = MAPI_E_NETWORK_ERROR;

    FailingCalls(int after, bool once)
    {
        Left() = after;
        Once() = once;
        Failed() = false;
    }
    ~FailingCalls() { Left() = -1; }
    FailingCalls(const FailingCalls&) = delete;
    FailingCalls& operator=(const FailingCalls&) = delete;

    bool HasFailed() const { return Failed(); }

    /// Counts a call. @return whether it must fail
    static bool NextFails()
    {
        int& left = Left();
        if (left > 0)
        {
            --left;
            return false;
        }
        if (left < 0)
        {
            return false;
        }
        left = Once() ? -1 : 0;
        Failed() = true;
        return true;
    }

private:
    static int& Left()
    {
        static thread_local int left = -1; // none fails
        return left;
    }
    static bool& Once()
    {
        static thread_local bool once = false;
        return once;
    }
    static bool& Failed()
    {
        static thread_local bool failed = false;
        return failed;
    }
};

} // namespace zeb::test
