#include "zebstore/base/Memory.h"

#include "platform/text.h"
#include "zebstore/base/LiveBlocks.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace zebstore
{

namespace
{

constexpr std::uint64_t RootMark = 0x5A45425354524F54;
constexpr std::uint64_t MoreMark = 0x5A454253544D4F52;

// The header before each block. A chain is a list through `next`, in which a new block follows any block
// given as its parent; so a block that was itself chained serves as a parent too.
struct alignas(16) Header
{
    Header* next;
    std::uint64_t mark;
};
static_assert(sizeof(Header) == 16, "blocks stay 16-byte aligned");

Header* HeaderOf(void* block)
{
    return static_cast<Header*>(block) - 1;
}

Header* NewBlock(ULONG size) noexcept
{
    if (g_callsWatched.load(std::memory_order_relaxed) && AllocationFails())
    {
        return nullptr;
    }
    return static_cast<Header*>(std::malloc(sizeof(Header) + size));
}

SCODE NewRoot(ULONG size, void** block) noexcept
{
    Header* header = NewBlock(size);
    if (header == nullptr)
    {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    if (!g_roots.Add(header + 1))
    {
        std::free(header);
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    header->next = nullptr;
    header->mark = RootMark;
    g_liveBuffers.fetch_add(1, std::memory_order_relaxed);
    *block = header + 1;
    return S_OK;
}

SCODE NewMore(ULONG size, void* parent, void** block) noexcept
{
    Header* before = HeaderOf(parent);
    if (before->mark != RootMark && before->mark != MoreMark)
    {
        return MAPI_E_INVALID_PARAMETER;
    }
    Header* header = NewBlock(size);
    if (header == nullptr)
    {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    header->mark = MoreMark;
    header->next = before->next;
    before->next = header;
    *block = header + 1;
    return S_OK;
}

// Nothing is read of a block before it is known to be live.
HRESULT FreeChain(void* root, const char* by) noexcept
{
    if (!g_roots.Remove(root))
    {
        CountBadFree(by, root);
        return MAPI_E_INVALID_PARAMETER;
    }
    Header* header = HeaderOf(root);
    g_liveBuffers.fetch_sub(1, std::memory_order_relaxed);
    while (header != nullptr)
    {
        Header* next = header->next;
        header->mark = 0;
        std::free(header);
        header = next;
    }
    return S_OK;
}

} // namespace

void* Allocate(size_t size, void* parent)
{
    void* block = nullptr;
    if (size > 0xFFFFFFFFu - sizeof(Header))
    {
        throw Error(MAPI_E_NOT_ENOUGH_MEMORY, "more memory than MAPI can say");
    }
    const ULONG bytes = static_cast<ULONG>(size);
    Check(parent != nullptr ? NewMore(bytes, parent, &block) : NewRoot(bytes, &block), "out of memory");
    return block;
}

void Free(void* root) noexcept
{
    FreeOf(root, "the provider itself");
}

HRESULT FreeOf(void* root, const char* by) noexcept
{
    return root != nullptr ? FreeChain(root, by) : S_OK;
}

char* CopyNarrow(const char* text, void* parent)
{
    return static_cast<char*>(CopyBytes(text, std::strlen(text) + 1, parent));
}

WCHAR* CopyWide(const WCHAR* text, void* parent)
{
    return static_cast<WCHAR*>(CopyBytes(text, (zeb::platform::WideLength(text) + 1) * sizeof(WCHAR), parent));
}

void* CopyBytes(const void* bytes, size_t size, void* parent)
{
    void* copy = Allocate(size, parent);
    if (size)
    {
        std::memcpy(copy, bytes, size);
    }
    return copy;
}

} // namespace zebstore

using zebstore::NewMore;
using zebstore::NewRoot;

// The allocator's three exports stay outside the call guard: nothing in them throws, and they are the hottest
// of all.
SCODE WINAPI MAPIAllocateBuffer(ULONG size, LPVOID* block)
{
    return block != nullptr ? NewRoot(size, block) : MAPI_E_INVALID_PARAMETER;
}

SCODE WINAPI MAPIAllocateMore(ULONG size, LPVOID parent, LPVOID* block)
{
    return block != nullptr && parent != nullptr ? NewMore(size, parent, block) : MAPI_E_INVALID_PARAMETER;
}

ULONG WINAPI MAPIFreeBuffer(LPVOID block)
{
    return static_cast<ULONG>(zebstore::FreeOf(block, "MAPIFreeBuffer"));
}
