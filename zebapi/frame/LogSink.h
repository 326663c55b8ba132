// The library's log, handed to the host.
#pragma once

#include "platform/export.h"

extern "C"
{
    /// Receives one line of the library's log.
    ///
    /// @param context    what Zeb_SetLogSink was given
    /// @param level      1 failures, 2 notes, 3 progress; -1 for a line without a level
    /// @param component  "ZebAPI"
    /// @param text       the line in 8-bit text, without a line end or a time
    ///
    /// The texts are valid during the call. Nothing may be thrown.
    ///
    /// Threads: called on the thread that writes the line, which may be any that is inside the library, a provider's that
    /// delivers a notification too. Calls never overlap: a lock is held that every line takes, so do not wait here for
    /// another thread that may log. A sink may use the library, and set another sink; the lines of that come nested.
    typedef void (*ZebLogSink)(void* context, int level, const char* component, const char* text);
}

/// Sends every line of the library's log, whatever its level, to sink instead of where ZEBAPI_LOG says; null brings that
/// back. When it returns, no call of the former sink is in progress on another thread, and none follows.
/// @param context  handed to sink; stays the host's, and must live as long as sink is set
/// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY; the former sink stays then
ZEBAPI_EXPORT void Zeb_SetLogSink(ZebLogSink sink, void* context);
