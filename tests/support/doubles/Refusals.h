// Arguments that every provider may refuse according to MAPI's documentation; doubles refuse them too.
#pragma once

#include "platform/mapi.h"

#include <initializer_list>

namespace zeb::test
{

/// MAPI_E_UNKNOWN_FLAGS for a flag that is not in `known`.
inline HRESULT RefuseFlags(ULONG flags, ULONG known)
{
    return (flags & ~known) != 0 ? MAPI_E_UNKNOWN_FLAGS : S_OK;
}

inline HRESULT Require(bool holds, HRESULT otherwise = MAPI_E_INVALID_PARAMETER)
{
    return holds ? S_OK : otherwise;
}

/// The first failure, or S_OK.
inline HRESULT FirstOf(std::initializer_list<HRESULT> results)
{
    for (const HRESULT result : results)
    {
        if (FAILED(result))
        {
            return result;
        }
    }
    return S_OK;
}

/// A list of tags that is not null and not empty.
inline HRESULT RequireTags(const SPropTagArray* tags)
{
    return Require(tags != nullptr && tags->cValues != 0);
}

/// A list of identifiers that is not null and not empty, each with its bytes.
inline HRESULT RequireList(const SBinaryArray* list)
{
    bool whole = list != nullptr && list->cValues != 0 && list->lpbin != nullptr;
    for (ULONG i = 0; whole && i < list->cValues; ++i)
    {
        whole = list->lpbin[i].cb != 0 && list->lpbin[i].lpb != nullptr;
    }
    return Require(whole);
}

/// The bytes of an identifier where it has a count.
inline HRESULT RequireBytes(ULONG count, const void* entryID)
{
    return Require(count == 0 || entryID != nullptr);
}

/// The arguments of every OpenEntry.
inline HRESULT RefuseOpen(ULONG count, const void* entryID, ULONG flags)
{
    constexpr ULONG NoCache = 0x200;
    constexpr ULONG CacheOnly = 0x4000;
    constexpr ULONG ShowSoftDeletes = 2;
    return FirstOf({RefuseFlags(flags, MAPI_BEST_ACCESS | MAPI_MODIFY | MAPI_DEFERRED_ERRORS | NoCache | CacheOnly |
                                           ShowSoftDeletes),
                    RequireBytes(count, entryID)});
}

/// A valid value for SetProps: of a writable type, and with its data.
inline HRESULT RequireWritable(const SPropValue& value)
{
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_UNSPECIFIED:
    case PT_NULL:
    case PT_ERROR:
    case PT_OBJECT:
        return MAPI_E_INVALID_TYPE;
    case PT_STRING8:
        return Require(value.Value.lpszA != nullptr);
    case PT_UNICODE:
        return Require(value.Value.lpszW != nullptr);
    case PT_CLSID:
        return Require(value.Value.lpguid != nullptr);
    case PT_BINARY:
        return RequireBytes(value.Value.bin.cb, value.Value.bin.lpb);
    default:
        return (PROP_TYPE(value.ulPropTag) & MV_FLAG) == 0 ? S_OK
                                                           : RequireBytes(value.Value.MVl.cValues, value.Value.MVl.lpl);
    }
}

} // namespace zeb::test
