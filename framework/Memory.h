// Memory shared by a host and the library: either may free what the other allocated.
#pragma once

#include "platform/mapi.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

namespace zeb::framework
{

/// Throws this module's exception for out of memory. Each module (a program, a library) has its own, null at first.
inline void (*g_throwOutOfMemory)() = nullptr;

/// Reports out of memory: calls this module's handler; std::bad_alloc when none is set.
[[noreturn]] inline void ThrowOutOfMemory()
{
    if (g_throwOutOfMemory != nullptr)
    {
        g_throwOutOfMemory();
    }
    throw std::bad_alloc();
}

/// The same for more elements than a container can hold; std::length_error when no handler is set.
[[noreturn]] inline void ThrowTooLong(const char* what)
{
    if (g_throwOutOfMemory != nullptr)
    {
        g_throwOutOfMemory();
    }
    throw std::length_error(what);
}

/// Runs `body`; converts std::bad_alloc to ThrowOutOfMemory. @return the result of `body`
template <class Body>
auto WithMemory(Body&& body) -> decltype(body())
{
    try
    {
        return std::forward<Body>(body)();
    }
    catch (const std::bad_alloc&)
    {
        ThrowOutOfMemory();
    }
    catch (const std::length_error&)
    {
        ThrowOutOfMemory();
    }
}

/// Allocates a block that every C runtime of the process can free: from the process heap on Windows, with malloc on
/// Linux (one C library).
/// @return never null, aligned for any fundamental type. @throws as ThrowOutOfMemory
inline void* AllocateShared(std::size_t bytes)
{
#ifdef _WIN32
    void* const block = HeapAlloc(GetProcessHeap(), 0, bytes);
#else
    void* const block = std::malloc(bytes != 0 ? bytes : 1);
#endif
    if (block == nullptr)
    {
        ThrowOutOfMemory();
    }
    return block;
}

/// Frees a block of AllocateShared; null is allowed.
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
