#include "zebstore/base/Memory.h"
#include "tests/support/TempFolder.h"
#include "zebstore/base/Guard.h"
#include "zebstore/base/LiveBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <new>
#include <random>

namespace zebstore
{
namespace
{

TEST(ProviderMemory, BlocksAreAlignedAndFreedTogether)
{
    const long before = g_liveBuffers;
    void* root = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(7, &root), S_OK);
    void* more = nullptr;
    void* evenMore = nullptr;
    ASSERT_EQ(MAPIAllocateMore(100, root, &more), S_OK);
    ASSERT_EQ(MAPIAllocateMore(1, more, &evenMore), S_OK);
    for (void* each : {root, more, evenMore})
    {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(each) % 16, 0u);
    }
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
    EXPECT_EQ(g_badFrees.exchange(0), 1);
    EXPECT_EQ(MAPIAllocateMore(8, nullptr, &more), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(MAPIAllocateBuffer(8, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST(ProviderMemory, CountsAndNamesInvalidFrees)
{
    const zeb::test::TempFolder folder;
    Switches switches;
    switches.traceFile = folder.File("trace.txt");
    ApplySwitches(switches);
    void* block = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(8, &block), S_OK);
    EXPECT_EQ(MAPIFreeBuffer(block), ULONG(S_OK));
    EXPECT_EQ(MAPIFreeBuffer(block), static_cast<ULONG>(MAPI_E_INVALID_PARAMETER));
    int foreign[8] = {};
    EXPECT_EQ(MAPIFreeBuffer(foreign), static_cast<ULONG>(MAPI_E_INVALID_PARAMETER));
    // A row set and one of its rows are freed twice.
    ASSERT_EQ(MAPIAllocateBuffer(CbNewSRowSet(1), &block), S_OK);
    auto* rows = static_cast<SRowSet*>(block);
    rows->cRows = 1;
    void* values = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(sizeof(SPropValue), &values), S_OK);
    rows->aRow[0].lpProps = static_cast<SPropValue*>(values);
    EXPECT_EQ(MAPIFreeBuffer(values), ULONG(S_OK));
    FreeProws(rows);
    FreeProws(rows);
    EXPECT_EQ(g_badFrees.load(), 4);
    TraceLiveCounts();
    ApplySwitches({});
    std::ifstream file(switches.traceFile);
    const std::string text((std::istreambuf_iterator<char>(file)), {});
    EXPECT_EQ(text.rfind("bad free: MAPIFreeBuffer of ", 0), 0u) << text;
    EXPECT_NE(text.find("\nbad free: FreeProws of "), std::string::npos) << text;
    EXPECT_NE(text.find("live buffers 0, bad frees 4\n"), std::string::npos) << text;
    g_badFrees = 0;
}

// The leak checker decides: hosts may leave blocks, and the library that counts them may be unloaded before the process
// ends.
TEST(ProviderMemory, BlocksMayOutliveItsEnd)
{
    LiveBlocks blocks;
    for (std::uint64_t i = 1; i <= 20000; ++i)
    {
        ASSERT_TRUE(blocks.Add(reinterpret_cast<void*>(i * 16)));
    }
    blocks.~LiveBlocks();
    EXPECT_TRUE(blocks.Has(reinterpret_cast<void*>(std::uint64_t{16})));
    EXPECT_TRUE(blocks.Remove(reinterpret_cast<void*>(std::uint64_t{32}))) << "a host's global, freed later";
    new (&blocks) LiveBlocks;
}

TEST(ProviderMemory, KnowsItsLiveBlocksAmongThousands)
{
    LiveBlocks blocks;
    std::vector<void*> inside;
    std::mt19937 random(7);
    const auto some = [&](std::uint64_t number) { return reinterpret_cast<void*>(number * 16); };
    for (std::uint64_t i = 1; i <= 20000; ++i)
    {
        ASSERT_TRUE(blocks.Add(some(i * 37)));
        inside.push_back(some(i * 37));
        if (i % 3)
        {
            continue;
        }
        std::swap(inside[random() % inside.size()], inside.back());
        ASSERT_TRUE(blocks.Remove(inside.back()));
        ASSERT_FALSE(blocks.Remove(inside.back()));
        ASSERT_FALSE(blocks.Has(inside.back()));
        inside.pop_back();
    }
    std::shuffle(inside.begin(), inside.end(), random);
    for (void* each : inside)
    {
        ASSERT_TRUE(blocks.Has(each));
    }
    for (void* each : inside)
    {
        ASSERT_TRUE(blocks.Remove(each));
        ASSERT_FALSE(blocks.Has(each));
    }
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
