// Internal: MAPI memory with checked size, typed pointers and ownership.
#pragma once

#include "zebapi/frame/Exception.h"
#include "zebapi/frame/MEM.h"

#include <cstdint>
#include <memory>

namespace zeb
{

/// head + count * each in bytes, for MAPI's allocator. @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY when the size
/// exceeds 32 bits
inline ULONG BlockSize(std::uint64_t head, std::uint64_t count, std::uint64_t each, const char* file = ZEB_FILE,
                       int line = ZEB_LINE)
{
    if (count > (UINT32_MAX - head) / each)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY, file, line);
    }
    return static_cast<ULONG>(head + count * each);
}

/// A zero-filled block of `size` bytes, chained to `parent` when there is one. @throws CZebException*
template <class T>
T* Allocate(ULONG size, void* parent)
{
    return static_cast<T*>(Zeb_MemAllocate(size, parent));
}

/// A zero-filled array, likewise.
template <class T>
T* AllocateArray(std::uint64_t count, void* parent, const char* file = ZEB_FILE, int line = ZEB_LINE)
{
    return Allocate<T>(BlockSize(0, count, sizeof(T), file, line), parent);
}

/// Frees a root block, with all that is chained to it, and clears the pointer; null is allowed.
template <class T>
void FreeBlock(T*& block)
{
    void* untyped = block;
    Zeb_MemExFree(untyped);
    block = nullptr;
}

struct BlockDeleter
{
    void operator()(void* block) const { Zeb_MemExFree(block); }
};

/// Owns a root block until it is released to another owner.
template <class T>
using Block = std::unique_ptr<T, BlockDeleter>;

} // namespace zeb
