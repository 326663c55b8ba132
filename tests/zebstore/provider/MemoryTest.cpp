#include "zebstore/Memory.h"
#include "zebstore/Guard.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace zebstore
{
namespace
{

TEST(ProviderMemory, BlocksAreAlignedAndFreedWithTheirRoot)
{
    const long before = g_liveBuffers;
    void* root = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(7, &root), S_OK);
    void* more = nullptr;
    void* evenMore = nullptr;
    ASSERT_EQ(MAPIAllocateMore(100, root, &more), S_OK);
    ASSERT_EQ(MAPIAllocateMore(1, more, &evenMore), S_OK);
    for (void* each : {root, more, evenMore})
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(each) % 16, 0u);
    std::memset(more, 1, 100);
    EXPECT_EQ(g_liveBuffers, before + 1);
    EXPECT_EQ(MAPIFreeBuffer(root), ULONG(S_OK));
    EXPECT_EQ(g_liveBuffers, before);
}

TEST(ProviderMemory, ZeroBytesGiveABlock)
{
    void* block = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(0, &block), S_OK);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(MAPIFreeBuffer(block), ULONG(S_OK));
}

TEST(ProviderMemory, RefusesWhatIsNoRoot)
{
    void* root = nullptr;
    void* more = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(8, &root), S_OK);
    ASSERT_EQ(MAPIAllocateMore(8, root, &more), S_OK);
    EXPECT_EQ(MAPIFreeBuffer(more), static_cast<ULONG>(MAPI_E_INVALID_PARAMETER));
    EXPECT_EQ(MAPIFreeBuffer(root), ULONG(S_OK));
    EXPECT_EQ(MAPIFreeBuffer(nullptr), ULONG(S_OK));
    EXPECT_EQ(MAPIAllocateMore(8, nullptr, &more), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(MAPIAllocateBuffer(8, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST(ProviderMemory, RefusesMoreThanMapiCanSay)
{
    try
    {
        Allocate(size_t{1} << 32);
        FAIL() << "allocated";
    }
    catch (const Error& error)
    {
        EXPECT_EQ(error.Code(), MAPI_E_NOT_ENOUGH_MEMORY);
    }
}

} // namespace
} // namespace zebstore
