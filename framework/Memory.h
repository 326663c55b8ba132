// Memory that a host and the library share: what one of them allocates the other may free.
#pragma once

#include "platform/mapi.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <utility>

namespace zeb::framework
{

/// Throws this module's exception for want of memory. Each module (a program, a library) has its own, null at first.
inline void (*g_throwOutOfMemory)() = nullptr;

/// Says that memory is out: throws what this module throws for it, std::bad_alloc when nothing else was set.
[[noreturn]] inline void ThrowOutOfMemory()
{
    if (g_throwOutOfMemory != nullptr)
    {
        g_throwOutOfMemory();
    }
    throw std::bad_alloc();
}

/// The same for more elements than a container can hold; std::length_error when nothing else was set.
[[noreturn]] inline void ThrowTooLong(const char* what)
{
    if (g_throwOutOfMemory != nullptr)
    {
        g_throwOutOfMemory();
    }
    throw std::length_error(what);
}

/// Runs `body`; where the standard library finds no memory, ThrowOutOfMemory says so.
/// @return what `body` returns
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

/// A block of the process: the process heap on Windows, which every C runtime of the process can free; malloc on Linux,
/// where there is one C library.
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
