// The call guard: every method of every interface and every exported function goes through it.
#pragma once

#include "zebstore/base/Error.h"

#include <atomic>
#include <string>
#include <type_traits>

namespace zebstore
{

/// True when a trace or a fault is switched on; read at the start of each call, so that a call costs one load
/// when nothing is.
extern std::atomic<bool> g_callsWatched;

/// Turns the exception in flight into its result code and remembers its text as this thread's last error.
HRESULT ResultOfCurrentException() noexcept;

/// Forgets this thread's last error text when it belongs to `code`: the call failed without one of its own.
void ForgetErrorText(HRESULT code) noexcept;

/// Counts a watched call. @return true when the fault switch fails this one; `result` then holds the code.
bool CallBegins(unsigned long& number, HRESULT& result) noexcept;
/// Writes the trace line of a watched call.
void CallEnds(unsigned long number, const char* method, HRESULT result) noexcept;

/// Runs the body of one method: no exception leaves it, the call is counted and traced when asked, and the
/// fault switch can fail it before the body runs.
/// @param method "Interface::Method", a literal.
/// @param body returns HRESULT, or nothing for S_OK.
template <typename Body>
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

/// The text of this thread's last failed call when it failed with `code`; else empty. UTF-8.
std::string LastErrorText(HRESULT code);

/// IMAPIProp::GetLastError and its kin: a MAPIERROR in MAPI memory (owned by the caller) when this thread's
/// last failed call failed with `code`, else S_OK with null.
HRESULT LastErrorAsMapi(HRESULT code, ULONG flags, MAPIERROR** error);

/// The switches, as ZEBSTORE_TRACE and ZEBSTORE_FAULT give them. Counting starts anew.
struct Switches
{
    std::string traceFile;         ///< a line a call is appended there; empty: no trace
    unsigned long failingCall = 0; ///< from 1; 0: none
    HRESULT failingCode = S_OK;
    unsigned long failingAllocation = 0; ///< from 1; 0: none
};

/// Reads "call:N:CODE" or "alloc:N" into `switches`. @return false when the text is neither.
bool ParseFault(const std::string& text, Switches& switches);

/// Sets the switches and starts counting anew.
void ApplySwitches(const Switches& switches);
/// The switches of the environment; a fault text that can not be read is reported on standard error and ignored.
void ApplySwitchesOfEnvironment();
/// Calls counted since the switches were applied; only watched calls are counted.
unsigned long CallsCounted() noexcept;
/// True once the fault switched on has been given to a call or an allocation.
bool FaultHappened() noexcept;

/// Asked by the allocator for each block while a fault or trace is on. @return true: fail this one.
bool AllocationFails() noexcept;

/// Live COM objects of the provider; the counted base moves it.
extern std::atomic<long> g_liveObjects;

/// Blocks that were freed although they were not live.
extern std::atomic<long> g_badFrees;
/// Counts one and names it in the trace. @param by the function that was called, a literal
void CountBadFree(const char* by, const void* block) noexcept;

/// Writes a line of its own into the trace, when there is one.
void TraceNote(const std::string& text) noexcept;

/// Ends the trace with the counts of live objects, live buffers and bad frees.
void TraceLiveCounts() noexcept;

} // namespace zebstore
