// Memory that a host and the library share: what one of them allocates the other may free.
#pragma once

#include "platform/mapi.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace zeb::framework
{

/// A block of the process: the process heap on Windows, which every C runtime of the process can free; malloc on Linux,
/// where there is one C library.
/// @return never null, aligned for any fundamental type. @throws std::bad_alloc
inline void* AllocateShared(std::size_t bytes)
{
#ifdef _WIN32
    void* const block = HeapAlloc(GetProcessHeap(), 0, bytes);
#else
    void* const block = std::malloc(bytes != 0 ? bytes : 1);
#endif
    if (block == nullptr)
    {
        throw std::bad_alloc();
    }
    return block;
}

/// Frees a block of AllocateShared; null is left alone.
inline void FreeShared(void* block) noexcept
{
#ifdef _WIN32
    if (block != nullptr)
    {
        HeapFree(GetProcessHeap(), 0, block);
    }
#else
    std::free(block);
#endif
}

} // namespace zeb::framework
