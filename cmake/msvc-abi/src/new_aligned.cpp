// Operators for types that are aligned more strictly than malloc aligns.
#include <malloc.h>
#include <stdlib.h>

#include <vcruntime_new.h>

extern "C" int __cdecl _callnewh(size_t size);

void* __cdecl operator new(size_t size, std::align_val_t alignment)
{
    for (;;)
    {
        if (void* block = _aligned_malloc(size != 0 ? size : 1, static_cast<size_t>(alignment)))
        {
            return block;
        }
        if (_callnewh(size) == 0)
        {
            throw std::bad_alloc();
        }
    }
}

void* __cdecl operator new(size_t size, std::align_val_t alignment, std::nothrow_t const&) noexcept
{
    try
    {
        return operator new(size, alignment);
    }
    catch (...)
    {
        return nullptr;
    }
}

void* __cdecl operator new[](size_t size, std::align_val_t alignment)
{
    return operator new(size, alignment);
}

void* __cdecl operator new[](size_t size, std::align_val_t alignment, std::nothrow_t const& nothrow) noexcept
{
    return operator new(size, alignment, nothrow);
}

void __cdecl operator delete(void* block, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void __cdecl operator delete(void* block, size_t, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void __cdecl operator delete(void* block, std::align_val_t, std::nothrow_t const&) noexcept
{
    _aligned_free(block);
}

void __cdecl operator delete[](void* block, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void __cdecl operator delete[](void* block, size_t, std::align_val_t) noexcept
{
    _aligned_free(block);
}

void __cdecl operator delete[](void* block, std::align_val_t, std::nothrow_t const&) noexcept
{
    _aligned_free(block);
}
