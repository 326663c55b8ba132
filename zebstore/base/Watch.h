// Trace and fault injection: which calls are counted, written to a file, or made to fail.
#pragma once

#include "zebstore/base/Error.h"

#include <atomic>
#include <string>

namespace zebstore
{

/// True when a trace or a fault is switched on; read at the start of each call, so that a call costs one load
/// when nothing is.
extern std::atomic<bool> g_callsWatched;

/// Counts a watched call. @return true when the fault switch fails this one; `result` then holds the code.
bool CallBegins(unsigned long& number, HRESULT& result) noexcept;
/// Writes the trace line of a watched call.
void CallEnds(unsigned long number, const char* method, HRESULT result) noexcept;

/// The switches, as ZEBSTORE_TRACE and ZEBSTORE_FAULT give them. Counting starts again.
struct Switches
{
    std::string traceFile;         ///< a line a call is appended there; empty: no trace
    unsigned long failingCall = 0; ///< from 1; 0: none
    HRESULT failingCode = S_OK;
    unsigned long failingAllocation = 0; ///< from 1; 0: none
};

/// Reads "call:N:CODE" or "alloc:N" into `switches`. @return false when the text is neither.
bool ParseFault(const std::string& text, Switches& switches);

/// Sets the switches and starts counting again.
void ApplySwitches(const Switches& switches);
/// The switches of the environment; a fault text that cannot be read is reported on standard error and ignored.
void ApplySwitchesOfEnvironment();
/// Calls counted since the switches were applied; only watched calls are counted.
unsigned long CallsCounted() noexcept;
/// True once the fault switched on has been given to a call or an allocation.
bool FaultHappened() noexcept;

/// Asked by the allocator for each block while a fault or trace is on. @return true: fail this one.
bool AllocationFails() noexcept;

/// Live COM objects of the provider, counted by their base.
extern std::atomic<long> g_liveObjects;
/// Root blocks of MAPI memory that have been allocated and not yet freed.
extern std::atomic<long> g_liveBuffers;

/// Blocks that were freed although they were not live.
extern std::atomic<long> g_badFrees;
/// Counts one and names it in the trace. @param by the function that was called, a literal
void CountBadFree(const char* by, const void* block) noexcept;

/// Writes a separate line into the trace, when there is one.
void TraceNote(const std::string& text) noexcept;

/// Ends the trace with the counts of live objects, live buffers and bad frees.
void TraceLiveCounts() noexcept;

} // namespace zebstore
