// MAPI memory: chained blocks, freed whole with their root.
#pragma once

#include "zebstore/base/Error.h"
#include "zebstore/base/Watch.h"

#include <utility>

namespace zebstore
{

/// The provider's own use of the allocator that it exports. Blocks are 16-byte aligned and not zeroed.
/// @param parent any block of the chain that the new one joins; null for a root block.
/// @throws Error MAPI_E_NOT_ENOUGH_MEMORY, also for more than a ULONG can say.
void* Allocate(size_t size, void* parent = nullptr);

/// Frees a root block and everything chained to it; null is ignored.
void Free(void* root) noexcept;
/// The same for a caller outside: what is no live root block is counted and named in the trace, and stays.
/// @param by the function that was called, a literal
/// @return MAPI_E_INVALID_PARAMETER for what is no live root block
HRESULT FreeOf(void* root, const char* by) noexcept;

/// Terminated copies in MAPI memory, owned by the chain of `parent` (a root of their own when null).
char* CopyNarrow(const char* text, void* parent);
WCHAR* CopyWide(const WCHAR* text, void* parent);
/// A copy of `size` bytes.
void* CopyBytes(const void* bytes, size_t size, void* parent);

/// Owns one root block.
template <class T>
class Buffer
{
public:
    Buffer() = default;
    explicit Buffer(void* block)
        : m_block(static_cast<T*>(block))
    {
    }
    Buffer(Buffer&& other) noexcept
        : m_block(other.Detach())
    {
    }
    Buffer& operator=(Buffer&& other) noexcept
    {
        if (this != &other)
        {
            Free(m_block);
            m_block = other.Detach();
        }
        return *this;
    }
    Buffer(const Buffer&) = delete;
    Buffer& operator=(const Buffer&) = delete;
    ~Buffer() { Free(m_block); }

    T* Get() const { return m_block; }
    T* operator->() const { return m_block; }
    T& operator*() const { return *m_block; }
    /// Hands the block to the caller.
    T* Detach() { return std::exchange(m_block, nullptr); }

private:
    T* m_block = nullptr;
};

} // namespace zebstore
