// Internal: what MAPI's calls take, and what they must give.
#pragma once

#include "zebapi/frame/Exception.h"

namespace zeb
{

/// The bytes of an entry identifier, as MAPI's calls take them.
inline LPENTRYID EntryID(const SBinary& entryID)
{
    return reinterpret_cast<LPENTRYID>(entryID.lpb);
}

/// A window, as MAPI's calls take their UI parameter: the whole handle.
inline ULONG_PTR UIParam(HWND window)
{
    return reinterpret_cast<ULONG_PTR>(window);
}

/// Refuses a call that reported success and gave no object.
/// @throws CZebException* MAPI_E_CALL_FAILED when `given` is false
inline void RequireObject(bool given, const char* file = ZEB_FILE, int line = ZEB_LINE,
                          const char* operation = ZEB_CALLER)
{
    if (!given)
    {
        CZebException::Throw(MAPI_E_CALL_FAILED, file, line, operation);
    }
}

} // namespace zeb
