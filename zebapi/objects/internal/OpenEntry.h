// Opens an object by entry identifier; shared by sessions, stores, containers and address books.
#pragma once

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/internal/Calls.h"
#include "zebapi/frame/internal/Subject.h"
#include "zebapi/objects/IProp.h"

namespace zeb
{

/// Opens the object from `source` with the target's interface and checks that the target accepts its type.
/// REQUIRES: the caller holds a reference on `source`; `target` is emptied and may be the only other holder of it.
/// @throws CZebException* the call's result, with the extended error of `source`; MAPI_E_INVALID_TYPE, with `target`
/// left empty, when it does not accept the type; MAPI_E_CALL_FAILED when there is no object
template <class Interface>
void OpenEntry(Interface* source, const SBinary& entryID, CZebIProp& target, ULONG flags, const char* file = ZEB_FILE,
               int line = ZEB_LINE)
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
