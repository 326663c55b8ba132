// Arrays, and forms that do not throw, in terms of the operators for single objects.
#include <vcruntime_new.h>

void* __cdecl operator new(size_t size, std::nothrow_t const&) noexcept
{
    try
    {
        return operator new(size);
    }
    catch (...)
    {
        return nullptr;
    }
}

void* __cdecl operator new[](size_t size)
{
    return operator new(size);
}

void* __cdecl operator new[](size_t size, std::nothrow_t const& nothrow) noexcept
{
    return operator new(size, nothrow);
}

void __cdecl operator delete(void* block, std::nothrow_t const&) noexcept
{
    operator delete(block);
}

void __cdecl operator delete[](void* block) noexcept
{
    operator delete(block);
}

void __cdecl operator delete[](void* block, std::nothrow_t const&) noexcept
{
    operator delete(block);
}

void __cdecl operator delete[](void* block, size_t) noexcept
{
    operator delete(block);
}
