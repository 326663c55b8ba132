// MAPI's utility functions on values and rows, for tests that run without a provider.
#pragma once

#include "tests/support/MapiMemory.h"
#include "zebapi/EntryPoints.h"

#include <gtest/gtest.h>

#include <cstring>

namespace zeb::test
{

/// Puts PropCopyMore and FreeProws in place for its lifetime. They work on MapiMemory, which must outlive it. One at
/// a time.
class MapiUtilities
{
public:
    MapiUtilities()
    {
        Current() = this;
        SetEntryPoint(EntryPoint::PropCopyMore, reinterpret_cast<void*>(&PropCopyMore));
        SetEntryPoint(EntryPoint::FreeProws, reinterpret_cast<void*>(&FreeProws));
    }
    ~MapiUtilities()
    {
        SetEntryPoint(EntryPoint::PropCopyMore, nullptr);
        SetEntryPoint(EntryPoint::FreeProws, nullptr);
        Current() = nullptr;
    }
    MapiUtilities(const MapiUtilities&) = delete;
    MapiUtilities& operator=(const MapiUtilities&) = delete;

    /// Calls of FreeProws so far.
    int freedRowSets = 0;
    /// Calls of PropCopyMore so far, and the parent of the last.
    int copies = 0;
    void* lastParent = nullptr;

private:
    static MapiUtilities*& Current()
    {
        static MapiUtilities* current = nullptr;
        return current;
    }

    static SCODE CopyBytes(const void* source, size_t size, LPALLOCATEMORE allocate, void* parent,
                           void** copy)
    {
        const SCODE result =
            parent != nullptr ? allocate(static_cast<ULONG>(size), parent, copy) : MAPI_E_INVALID_PARAMETER;
        if (result == S_OK)
        {
            std::memcpy(*copy, source, size);
        }
        return result;
    }

    /// Numbers, text, binaries and identifiers of classes; other types are refused.
    static SCODE WINAPI PropCopyMore(LPSPropValue dest, LPSPropValue src, ALLOCATEMORE* allocate,
                                     void* parent)
    {
        ++Current()->copies;
        Current()->lastParent = parent;
        const auto copyTo = [&](auto*& target, const void* source, size_t size)
        {
            void* block = nullptr;
            const SCODE result = CopyBytes(source, size, allocate, parent, &block);
            target = static_cast<std::remove_reference_t<decltype(target)>>(block);
            return result;
        };
        *dest = *src;
        switch (PROP_TYPE(src->ulPropTag))
        {
        case PT_I2:
        case PT_LONG:
        case PT_R4:
        case PT_DOUBLE:
        case PT_CURRENCY:
        case PT_APPTIME:
        case PT_ERROR:
        case PT_BOOLEAN:
        case PT_I8:
        case PT_SYSTIME:
            return S_OK;
        case PT_STRING8:
            return copyTo(dest->Value.lpszA, src->Value.lpszA, std::strlen(src->Value.lpszA) + 1);
        case PT_UNICODE:
            return copyTo(dest->Value.lpszW, src->Value.lpszW,
                          (std::char_traits<WCHAR>::length(src->Value.lpszW) + 1) * sizeof(WCHAR));
        case PT_CLSID:
            return copyTo(dest->Value.lpguid, src->Value.lpguid, sizeof(GUID));
        case PT_BINARY:
            return copyTo(dest->Value.bin.lpb, src->Value.bin.lpb, src->Value.bin.cb);
        default:
            return MAPI_E_NO_SUPPORT;
        }
    }

    static void WINAPI FreeProws(LPSRowSet rows)
    {
        ++Current()->freedRowSets;
        for (ULONG i = 0; i < rows->cRows; ++i)
        {
            MapiMemory::FreeBuffer(rows->aRow[i].lpProps);
        }
        MapiMemory::FreeBuffer(rows);
    }
};

} // namespace zeb::test
