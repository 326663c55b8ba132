// Opening an object by entry identifier, the same for everything that can: sessions, stores, containers, address books.
#pragma once

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/objects/IProp.h"

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
inline void RequireObject(bool given, const char* file, int line, const char* operation = ZEB_CALLER)
{
    if (!given)
    {
        CZebException::Throw(MAPI_E_CALL_FAILED, file, line, operation);
    }
}

/// Asks `source` for the object as the target's interface and checks that the target accepts its type.
/// REQUIRES: the caller holds a reference on `source`; `target` is emptied and may be what else held it.
/// @throws CZebException* the call's result, with the extended error of `source`; MAPI_E_INVALID_TYPE, with `target`
/// left empty, when it does not accept the type; MAPI_E_CALL_FAILED when there is no object
template <class Interface>
void OpenEntry(Interface* source, const SBinary& entryID, CZebIProp& target, ULONG flags, const char* file, int line)
{
    const auto entry = [&] { return EntryText(entryID); };
    ULONG type = 0;
    ThrowIfFailedAbout(
        entry, source->OpenEntry(entryID.cb, EntryID(entryID), target.GetInterfaceCIID(), flags, &type, &target),
        source, file, line);
    if (!target.IsMAPITypeAcceptable(type))
    {
        target.Free();
        ThrowAbout(entry, MAPI_E_INVALID_TYPE, file, line);
    }
    RequireObject(target.IsValid(), file, line);
}

} // namespace zeb
