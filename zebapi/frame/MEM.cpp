#include "zebapi/frame/MEM.h"

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/internal/EntryPoints.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace
{

// IWABObject has no published identifier; the object itself is used.
const IID& IID_ZebIWABObject = IID_IUnknown;

// Plain memory without a destructor: released or abandoned together with the provider.
struct AllocatorBinding
{
    LPALLOCATEBUFFER allocateBuffer;
    LPALLOCATEMORE allocateMore;
    LPFREEBUFFER freeBuffer;
    IUnknown* wabReference;
    IWABObject* wabObject;

    SCODE Allocate(ULONG size, void** block) const
    {
        if (allocateBuffer != nullptr)
        {
            return allocateBuffer(size, block);
        }
        return wabObject != nullptr ? wabObject->AllocateBuffer(size, block) : MAPI_E_NOT_INITIALIZED;
    }

    SCODE AllocateMore(ULONG size, void* parent, void** block) const
    {
        if (allocateMore != nullptr)
        {
            return allocateMore(size, parent, block);
        }
        return wabObject != nullptr ? wabObject->AllocateMore(size, parent, block) : MAPI_E_NOT_INITIALIZED;
    }

    SCODE Free(void* block) const
    {
        if (freeBuffer != nullptr)
        {
            return static_cast<SCODE>(freeBuffer(block));
        }
        return wabObject != nullptr ? wabObject->FreeBuffer(block) : MAPI_E_NOT_INITIALIZED;
    }

    void DropWabObject()
    {
        IUnknown* reference = std::exchange(wabReference, nullptr);
        wabObject = nullptr;
        if (reference != nullptr)
        {
            reference->Release();
        }
    }
};

AllocatorBinding g_binding = {};

} // namespace

void Zeb_MemInitialize(LPALLOCATEBUFFER allocateBuffer, LPALLOCATEMORE allocateMore, LPFREEBUFFER freeBuffer)
{
    g_binding.allocateBuffer = allocateBuffer;
    g_binding.allocateMore = allocateMore;
    g_binding.freeBuffer = freeBuffer;
}

void Zeb_MemInitialize(void* wabObject)
{
    g_binding.DropWabObject();
    if (wabObject == nullptr)
    {
        return;
    }
    void* answer = nullptr;
    const HRESULT result = static_cast<IUnknown*>(wabObject)->QueryInterface(IID_ZebIWABObject, &answer);
    if (result == E_NOINTERFACE)
    {
        return;
    }
    if (FAILED(result))
    {
        RaiseComError(result);
    }
    g_binding.wabReference = static_cast<IUnknown*>(answer);
    g_binding.wabObject = static_cast<IWABObject*>(answer);
}

void Zeb_MemUninitialize()
{
    Zeb_MemInitialize(nullptr, nullptr, nullptr);
    g_binding.DropWabObject();
}

void zeb::AbandonMem()
{
    g_binding = {};
}

void* Zeb_MemAllocate(ULONG size, void* parent)
{
    void* block = nullptr;
    ThrowIfFailed(parent != nullptr ? g_binding.AllocateMore(size, parent, &block) : g_binding.Allocate(size, &block));
    if (block == nullptr)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    std::memset(block, 0, size);
    return block;
}

void* Zeb_MemReallocate(void* old, ULONG newSize, ULONG oldSize)
{
    void* block = Zeb_MemAllocate(newSize, nullptr);
    if (old != nullptr)
    {
        std::memcpy(block, old, std::min(newSize, oldSize));
        Zeb_MemFree(old);
    }
    return block;
}

void Zeb_MemFree(void* block)
{
    g_binding.Free(block);
}

void Zeb_MemExFree(void*& block)
{
    if (block != nullptr)
    {
        Zeb_MemFree(std::exchange(block, nullptr));
    }
}

void Zeb_PropCopyMore(SPropValue* dest, SPropValue* src, void* parent)
{
    ThrowIfFailed(zeb::PropCopyMore(dest, src, g_binding.allocateMore, parent));
}

void Zeb_FreeProws(SRowSet* rows)
{
    zeb::FreeProws(rows);
}
