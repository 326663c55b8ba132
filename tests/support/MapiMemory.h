// A counting MAPI allocator: bound for the duration of a test, it fails the test when a block is leaked or freed
// wrongly.
#pragma once

#include "platform/mapi.h"
#include "tests/support/ProviderScope.h"
#include "zebapi/MEM.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <set>
#include <string>

namespace zeb::test
{

/// Binds itself by Zeb_MemInitialize; the destructor unbinds and expects every root block to have been freed.
///
/// New blocks are filled with 0xCD, freed ones with 0xDD; freeing a root frees what was allocated under it. Freeing a
/// child, a foreign pointer or a block twice fails the test. There may be one object at a time. Threads: may be called
/// from any.
class MapiMemory
{
public:
    MapiMemory()
    {
        Current() = this;
        Bind();
    }
    ~MapiMemory()
    {
        Zeb_MemUninitialize();
        EXPECT_EQ(m_roots.size() - m_kept.size(), 0u) << "root blocks of MAPI memory were not freed";
        for (auto& root : m_roots)
        {
            FreeAll(root.first, root.second);
        }
        Current() = nullptr;
    }
    MapiMemory(const MapiMemory&) = delete;
    MapiMemory& operator=(const MapiMemory&) = delete;

    /// Binds this allocator again, after a test has bound something else.
    void Bind() { Zeb_MemInitialize(&AllocateBuffer, &AllocateMore, &FreeBuffer); }

    /// Root blocks that are not freed yet, except those kept by design.
    size_t LiveRoots() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_roots.size() - m_kept.size();
    }
    /// Calls of AllocateBuffer and AllocateMore so far.
    size_t Allocations() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_allocations;
    }
    /// Calls of FreeBuffer so far.
    size_t Frees() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_frees;
    }
    bool IsRoot(const void* block) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_roots.count(const_cast<void*>(block)) != 0;
    }
    /// The requested size of a live block, root or child; 0 for a foreign block.
    ULONG SizeOf(const void* block) const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_sizes.find(const_cast<void*>(block));
        return found != m_sizes.end() ? found->second : 0;
    }
    /// The n-th allocation from now (1 is the next) fails with `result`; later ones succeed again.
    void FailAllocation(size_t n, SCODE result = MAPI_E_NOT_ENOUGH_MEMORY)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_failAt = m_allocations + n;
        m_failure = result;
    }
    /// Like FailAllocation, for the library's own allocations: those of doubles do not count.
    void FailOwnAllocation(size_t n)
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_failAtOwn = m_ownAllocations + n;
    }
    /// Whether the allocation of FailOwnAllocation has been reached.
    bool HasFailedOwn() const
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_failAtOwn != 0 && m_ownAllocations >= m_failAtOwn;
    }
    /// Frees every root block that is left.
    void FreeRest()
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        for (auto& root : m_roots)
        {
            FreeAll(root.first, root.second);
        }
        m_roots.clear();
        m_kept.clear();
    }
    /// The n-th allocation from now succeeds with a null pointer.
    void GiveNull(size_t n) { FailAllocation(n, S_OK); }

    /// Memory as returned by a provider.
    void* Allocate(ULONG size)
    {
        void* block = nullptr;
        EXPECT_EQ(AllocateBuffer(size, &block), S_OK);
        return block;
    }
    void* AllocateUnder(void* parent, ULONG size)
    {
        void* block = nullptr;
        EXPECT_EQ(AllocateMore(size, parent, &block), S_OK);
        return block;
    }
    /// A copy of `text` under `parent`; null for null.
    char* Text(void* parent, const char* text)
    {
        if (text == nullptr)
        {
            return nullptr;
        }
        const size_t size = std::strlen(text) + 1;
        return static_cast<char*>(std::memcpy(AllocateUnder(parent, static_cast<ULONG>(size)), text, size));
    }

    /// The extended error of a MAPI object. Exceptions keep it permanently, so it does not count as a leak; nothing
    /// else is exempt.
    MAPIERROR* NewMapiError(ULONG version, const char* error, const char* component, ULONG lowLevelError, ULONG context)
    {
        auto* mapiError = static_cast<MAPIERROR*>(Allocate(sizeof(MAPIERROR)));
        mapiError->ulVersion = version;
        mapiError->lpszError = Text(mapiError, error);
        mapiError->lpszComponent = Text(mapiError, component);
        mapiError->ulLowLevelError = lowLevelError;
        mapiError->ulContext = context;
        std::lock_guard<std::mutex> lock(m_mutex);
        m_kept.insert(mapiError);
        return mapiError;
    }

    static SCODE WINAPI AllocateBuffer(ULONG size, void** block)
    {
        MapiMemory& memory = *Current();
        std::lock_guard<std::mutex> lock(memory.m_mutex);
        const bool fails = memory.OwnFails();
        const ProviderScope inside;
        const SCODE result = memory.Make(size, block, fails);
        if (*block != nullptr)
        {
            memory.m_roots[*block];
        }
        return result;
    }

    static SCODE WINAPI AllocateMore(ULONG size, void* parent, void** block)
    {
        MapiMemory& memory = *Current();
        std::lock_guard<std::mutex> lock(memory.m_mutex);
        const bool fails = memory.OwnFails();
        const ProviderScope inside;
        const auto root = memory.m_roots.find(parent);
        if (root == memory.m_roots.end())
        {
            ADD_FAILURE() << "the parent of a block is not a live root block";
            *block = nullptr;
            return MAPI_E_INVALID_PARAMETER;
        }
        const SCODE result = memory.Make(size, block, fails);
        if (*block != nullptr)
        {
            root->second.insert(*block);
        }
        return result;
    }

    static ULONG WINAPI FreeBuffer(void* block)
    {
        MapiMemory& memory = *Current();
        std::lock_guard<std::mutex> lock(memory.m_mutex);
        ++memory.m_frees;
        if (block == nullptr)
        {
            return 0;
        }
        const auto root = memory.m_roots.find(block);
        if (root == memory.m_roots.end())
        {
            ADD_FAILURE() << "freed what is not a live root block";
            return static_cast<ULONG>(MAPI_E_INVALID_PARAMETER);
        }
        memory.FreeAll(root->first, root->second);
        memory.m_kept.erase(block);
        memory.m_roots.erase(root);
        return 0;
    }

private:
    static MapiMemory*& Current()
    {
        static MapiMemory* current = nullptr;
        return current;
    }

    /// Counts an allocation that is not made by a double. @return whether it must fail
    bool OwnFails() { return !ProviderScope::IsInside() && ++m_ownAllocations == m_failAtOwn; }

    SCODE Make(ULONG size, void** block, bool fails)
    {
        *block = nullptr;
        if (fails)
        {
            return MAPI_E_NOT_ENOUGH_MEMORY;
        }
        if (++m_allocations == m_failAt)
        {
            return m_failure;
        }
        *block = std::malloc(size != 0 ? size : 1);
        if (*block == nullptr)
        {
            return MAPI_E_NOT_ENOUGH_MEMORY;
        }
        std::memset(*block, 0xCD, size);
        m_sizes[*block] = size;
        return S_OK;
    }

    void FreeAll(void* root, const std::set<void*>& children)
    {
        for (void* child : children)
        {
            FreeOne(child);
        }
        FreeOne(root);
    }

    /// Overwritten first, so reading freed memory is detected without a memory checker.
    void FreeOne(void* block)
    {
        const auto size = m_sizes.find(block);
        std::memset(block, 0xDD, size->second);
        m_sizes.erase(size);
        std::free(block);
    }

    mutable std::mutex m_mutex;
    std::map<void*, std::set<void*>> m_roots;
    std::map<void*, ULONG> m_sizes;
    std::set<void*> m_kept;
    size_t m_allocations = 0;
    size_t m_frees = 0;
    size_t m_failAt = 0;
    size_t m_ownAllocations = 0;
    size_t m_failAtOwn = 0; ///< 0: none
    SCODE m_failure = S_OK;
};

} // namespace zeb::test
