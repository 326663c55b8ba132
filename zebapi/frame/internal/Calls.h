// Internal: arguments and result checks of MAPI calls.
#pragma once

#include "zebapi/frame/Exception.h"

namespace zeb
{

/// The bytes of an entry identifier as an argument of MAPI calls.
inline LPENTRYID EntryID(const SBinary& entryID)
{
    return reinterpret_cast<LPENTRYID>(entryID.lpb);
}

/// A window as the UI parameter of MAPI calls: the full handle.
inline ULONG_PTR UIParam(HWND window)
{
    return reinterpret_cast<ULONG_PTR>(window);
}

/// Rejects a call that reported success but returned no object.
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
