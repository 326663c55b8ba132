// MAPI's utility functions on values and rows, for tests that run without a provider.
#pragma once

#include "tests/support/MapiMemory.h"
#include "zebapi/frame/internal/EntryPoints.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace zeb::test
{

/// Binds PropCopyMore and FreeProws for its lifetime. They work on MapiMemory, which must outlive it. One at a time.
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

    static SCODE CopyBytes(const void* source, size_t size, LPALLOCATEMORE allocate, void* parent, void** copy)
    {
        const SCODE result =
            parent != nullptr ? allocate(static_cast<ULONG>(size), parent, copy) : MAPI_E_INVALID_PARAMETER;
        if (result == S_OK && size != 0)
        {
            std::memcpy(*copy, source, size);
        }
        return result;
    }

    /// An array of `count` elements of fixed size.
    template <class Element>
    static SCODE CopyArray(Element*& target, const Element* source, ULONG count, LPALLOCATEMORE allocate, void* parent)
    {
        void* block = nullptr;
        const SCODE result = CopyBytes(source, count * sizeof(Element), allocate, parent, &block);
        target = static_cast<Element*>(block);
        return result;
    }
    template <class Char>
    static SCODE CopyText(Char*& target, const Char* source, LPALLOCATEMORE allocate, void* parent)
    {
        return CopyArray(target, source, static_cast<ULONG>(std::char_traits<Char>::length(source) + 1), allocate,
                         parent);
    }
    template <class Char>
    static SCODE CopyTexts(Char**& target, Char* const* source, ULONG count, LPALLOCATEMORE allocate, void* parent)
    {
        SCODE result = CopyArray(target, const_cast<Char**>(source), count, allocate, parent);
        for (ULONG i = 0; result == S_OK && i < count; ++i)
        {
            result = CopyText<Char>(target[i], source[i], allocate, parent);
        }
        return result;
    }
    static SCODE CopyBinaries(SBinary*& target, const SBinary* source, ULONG count, LPALLOCATEMORE allocate,
                              void* parent)
    {
        SCODE result = CopyArray(target, source, count, allocate, parent);
        for (ULONG i = 0; result == S_OK && i < count; ++i)
        {
            result = CopyArray(target[i].lpb, source[i].lpb, source[i].cb, allocate, parent);
        }
        return result;
    }

    /// Everything that MAPI copies: all types but objects. Like MAPI's own it reads through null text.
    static SCODE WINAPI PropCopyMore(LPSPropValue dest, LPSPropValue src, ALLOCATEMORE* allocate, void* parent)
    {
        ++Current()->copies;
        Current()->lastParent = parent;
        auto& to = dest->Value;
        const auto& from = src->Value;
        *dest = *src;
        switch (PROP_TYPE(src->ulPropTag))
        {
        case PT_NULL:
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
            return CopyText(to.lpszA, from.lpszA, allocate, parent);
        case PT_UNICODE:
            return CopyText(to.lpszW, from.lpszW, allocate, parent);
        case PT_CLSID:
            return CopyArray(to.lpguid, from.lpguid, 1, allocate, parent);
        case PT_BINARY:
            return CopyArray(to.bin.lpb, from.bin.lpb, from.bin.cb, allocate, parent);
        case PT_MV_I2:
            return CopyArray(to.MVi.lpi, from.MVi.lpi, from.MVi.cValues, allocate, parent);
        case PT_MV_LONG:
            return CopyArray(to.MVl.lpl, from.MVl.lpl, from.MVl.cValues, allocate, parent);
        case PT_MV_STRING8:
            return CopyTexts(to.MVszA.lppszA, from.MVszA.lppszA, from.MVszA.cValues, allocate, parent);
        case PT_MV_UNICODE:
            return CopyTexts(to.MVszW.lppszW, from.MVszW.lppszW, from.MVszW.cValues, allocate, parent);
        case PT_MV_BINARY:
            return CopyBinaries(to.MVbin.lpbin, from.MVbin.lpbin, from.MVbin.cValues, allocate, parent);
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
