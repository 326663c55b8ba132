#include "zebstore/exports/CopyValue.h"

#include "platform/text.h"
#include "zebstore/base/Error.h"

#include <cstring>

namespace zebstore
{
namespace
{

/// Allocates on one parent and remembers the first failure; after it every copy is null.
class Copier
{
public:
    Copier(ALLOCATEMORE* allocateMore, void* parent)
        : m_allocateMore(allocateMore)
        , m_parent(parent)
    {
    }

    template <class T>
    T* Copy(const T* source, size_t count)
    {
        if (FAILED(m_result) || (!source && count == 0))
        {
            return nullptr;
        }
        if (!source)
        {
            m_result = MAPI_E_INVALID_PARAMETER;
            return nullptr;
        }
        const size_t bytes = count * sizeof(T);
        void* block = nullptr;
        if (bytes > 0x7FFFFFFF)
        {
            m_result = MAPI_E_NOT_ENOUGH_MEMORY;
        }
        else
        {
            m_result = m_allocateMore(static_cast<ULONG>(bytes), m_parent, &block);
        }
        if (FAILED(m_result) || !block)
        {
            m_result = FAILED(m_result) ? m_result : MAPI_E_NOT_ENOUGH_MEMORY;
            return nullptr;
        }
        std::memcpy(block, source, bytes);
        return static_cast<T*>(block);
    }

    LPSTR Copy(const char* text) { return text != nullptr ? Copy(text, std::strlen(text) + 1) : nullptr; }
    LPWSTR Copy(const WCHAR* text)
    {
        return text != nullptr ? Copy(text, zeb::platform::WideLength(text) + 1) : nullptr;
    }

    SBinary Copy(const SBinary& binary)
    {
        SBinary copy = binary;
        copy.lpb = Copy(binary.lpb, binary.cb);
        return copy;
    }

    /// Replaces an array of plain elements with its copy.
    template <class T>
    void Own(T*& array, ULONG count)
    {
        array = Copy(array, count);
    }

    /// The same, including the data that each element points to.
    template <class T>
    void OwnEach(T*& array, ULONG count)
    {
        Own(array, count);
        for (ULONG i = 0; array && i < count; ++i)
        {
            array[i] = Copy(array[i]);
        }
    }

    SCODE Result() const { return m_result; }
    void Fail(SCODE code) { m_result = code; }

private:
    ALLOCATEMORE* m_allocateMore;
    void* m_parent;
    SCODE m_result = S_OK;
};

bool IsPlain(ULONG type)
{
    switch (type)
    {
    case PT_UNSPECIFIED:
    case PT_NULL:
    case PT_I2:
    case PT_LONG:
    case PT_R4:
    case PT_DOUBLE:
    case PT_CURRENCY:
    case PT_APPTIME:
    case PT_ERROR:
    case PT_BOOLEAN:
    case PT_OBJECT:
    case PT_I8:
    case PT_SYSTIME:
        return true;
    default:
        return false;
    }
}

void CopyMultiple(_PV& value, ULONG type, Copier& copier)
{
    switch (type)
    {
    case PT_MV_I2:
        return copier.Own(value.MVi.lpi, value.MVi.cValues);
    case PT_MV_LONG:
        return copier.Own(value.MVl.lpl, value.MVl.cValues);
    case PT_MV_R4:
        return copier.Own(value.MVflt.lpflt, value.MVflt.cValues);
    case PT_MV_DOUBLE:
    case PT_MV_APPTIME:
        return copier.Own(value.MVdbl.lpdbl, value.MVdbl.cValues);
    case PT_MV_CURRENCY:
        return copier.Own(value.MVcur.lpcur, value.MVcur.cValues);
    case PT_MV_SYSTIME:
        return copier.Own(value.MVft.lpft, value.MVft.cValues);
    case PT_MV_I8:
        return copier.Own(value.MVli.lpli, value.MVli.cValues);
    case PT_MV_CLSID:
        return copier.Own(value.MVguid.lpguid, value.MVguid.cValues);
    case PT_MV_STRING8:
        return copier.OwnEach(value.MVszA.lppszA, value.MVszA.cValues);
    case PT_MV_UNICODE:
        return copier.OwnEach(value.MVszW.lppszW, value.MVszW.cValues);
    case PT_MV_BINARY:
        return copier.OwnEach(value.MVbin.lpbin, value.MVbin.cValues);
    default:
        copier.Fail(MAPI_E_INVALID_TYPE);
    }
}

/// Replaces the data that `copy` shares with its source with copies.
void CopyData(SPropValue& copy, Copier& copier)
{
    const ULONG type = PROP_TYPE(copy.ulPropTag) & ~ULONG(MV_INSTANCE);
    // An instance of a multi-valued column carries one value of the single type.
    const bool instance = (PROP_TYPE(copy.ulPropTag) & MV_INSTANCE) != 0;
    switch (instance ? type & ~ULONG(MV_FLAG) : type)
    {
    case PT_STRING8:
        copy.Value.lpszA = copier.Copy(copy.Value.lpszA);
        break;
    case PT_UNICODE:
        copy.Value.lpszW = copier.Copy(copy.Value.lpszW);
        break;
    case PT_BINARY:
        copy.Value.bin = copier.Copy(copy.Value.bin);
        break;
    case PT_CLSID:
        copy.Value.lpguid = copier.Copy(copy.Value.lpguid, 1);
        break;
    default:
        if (!instance)
        {
            CopyMultiple(copy.Value, type, copier);
        }
        else if (!IsPlain(type & ~ULONG(MV_FLAG)))
        {
            copier.Fail(MAPI_E_INVALID_TYPE);
        }
    }
}

} // namespace

SCODE CopyValue(SPropValue& dest, const SPropValue& source, ALLOCATEMORE* allocateMore, void* parent)
{
    SPropValue copy = source;
    const ULONG type = PROP_TYPE(source.ulPropTag) & ~ULONG(MV_INSTANCE);
    if (!IsPlain(type))
    {
        if (allocateMore == nullptr)
        {
            return MAPI_E_INVALID_PARAMETER;
        }
        Copier copier(allocateMore, parent);
        CopyData(copy, copier);
        if (FAILED(copier.Result()))
        {
            return copier.Result();
        }
    }
    dest = copy;
    return S_OK;
}

void CopyValue(SPropValue& dest, const SPropValue& source, void* parent)
{
    Check(CopyValue(dest, source, MAPIAllocateMore, parent), "a value cannot be copied");
}

} // namespace zebstore
