// The call guard: every method of every interface and every exported function goes through it.
#pragma once

#include "zebstore/base/Error.h"
#include "zebstore/base/LastError.h"
#include "zebstore/base/Watch.h"

#include <type_traits>

namespace zebstore
{

/// Turns the exception in flight into its result code and remembers its text as this thread's last error.
HRESULT ResultOfCurrentException() noexcept;

/// Runs the body of one method: no exception leaves it, the call is counted and traced when asked, and the
/// fault switch can fail it before the body runs.
/// @param method "Interface::Method", a literal.
/// @param body returns HRESULT, or nothing for S_OK.
template <class Body>
HRESULT Guarded(const char* method, Body&& body) noexcept
{
    const bool watched = g_callsWatched.load(std::memory_order_relaxed);
    unsigned long number = 0;
    HRESULT result = S_OK;
    if (!watched || !CallBegins(number, result))
    {
        try
        {
            if constexpr (std::is_void_v<decltype(body())>)
            {
                body();
            }
            else
            {
                result = body();
            }
            if (FAILED(result))
            {
                ForgetErrorText(result);
            }
        }
        catch (...)
        {
            result = ResultOfCurrentException();
        }
    }
    if (watched)
    {
        CallEnds(number, method, result);
    }
    return result;
}

/// For IMAPIProp::GetLastError and similar methods: a MAPIERROR in MAPI memory (owned by the caller) when this thread's
/// last failed call failed with `code`, else S_OK with null.
HRESULT LastErrorAsMapi(HRESULT code, ULONG flags, MAPIERROR** error);

} // namespace zebstore
