#include "zebapi/MEM.h"

#include "tests/support/LogCapture.h"
#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"
#include "tests/support/providers/WabObject.h"
#include "tests/zebapi/frame/EntryPointScope.h"
#include "zebapi/Exception.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace zeb::test
{

namespace
{

bool IsZero(const void* block, size_t size)
{
    const auto* bytes = static_cast<const unsigned char*>(block);
    return std::all_of(bytes, bytes + size, [](unsigned char byte) { return byte == 0; });
}

SPropValue* propCopyDest = nullptr;
SPropValue* propCopySource = nullptr;
ALLOCATEMORE* propCopyAllocate = nullptr;
void* propCopyParent = nullptr;
SCODE propCopyResult = S_OK;

SCODE WINAPI RecordPropCopyMore(SPropValue* dest, SPropValue* src, ALLOCATEMORE* allocateMore, void* parent)
{
    propCopyDest = dest;
    propCopySource = src;
    propCopyAllocate = allocateMore;
    propCopyParent = parent;
    return propCopyResult;
}

int refusedFrees = 0;

ULONG WINAPI RefuseFree(void*)
{
    ++refusedFrees;
    return static_cast<ULONG>(MAPI_E_INVALID_PARAMETER);
}

SRowSet* freedRows = nullptr;

void WINAPI RecordFreeProws(SRowSet* rows)
{
    freedRows = rows;
}

} // namespace

TEST(Mem, AllocatesAZeroedRootBlock)
{
    MapiMemory memory;
    void* block = Zeb_MemAllocate(100, nullptr);
    EXPECT_TRUE(memory.IsRoot(block));
    EXPECT_EQ(memory.SizeOf(block), 100u);
    EXPECT_TRUE(IsZero(block, 100));
    Zeb_MemFree(block);
}

TEST(Mem, AllocatesUnderAParent)
{
    MapiMemory memory;
    void* root = Zeb_MemAllocate(8, nullptr);
    void* child = Zeb_MemAllocate(50, root);
    EXPECT_FALSE(memory.IsRoot(child));
    EXPECT_EQ(memory.SizeOf(child), 50u);
    EXPECT_TRUE(IsZero(child, 50));
    Zeb_MemFree(root);
    EXPECT_EQ(memory.SizeOf(child), 0u);
}

TEST(Mem, ZeroBytesAreAskedFor)
{
    MapiMemory memory;
    void* block = Zeb_MemAllocate(0, nullptr);
    EXPECT_NE(block, nullptr);
    EXPECT_EQ(memory.Allocations(), 1u);
    EXPECT_EQ(memory.SizeOf(block), 0u);
    Zeb_MemFree(block);
}

TEST(Mem, AFailingAllocationThrowsItsResult)
{
    MapiMemory memory;
    LogCapture log;
    memory.FailAllocation(1, MAPI_E_NOT_ENOUGH_RESOURCES);
    EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(8, nullptr); }), MAPI_E_NOT_ENOUGH_RESOURCES);
    ASSERT_EQ(log.Lines().size(), 1u);
    EXPECT_THAT(log.Texts()[0], ::testing::HasSubstr("File zebapi/frame/MEM.cpp, line"));
}

TEST(Mem, FailingChildAllocationsThrowTheirResult)
{
    MapiMemory memory;
    void* root = Zeb_MemAllocate(8, nullptr);
    memory.FailAllocation(1, MAPI_E_NOT_ENOUGH_RESOURCES);
    EXPECT_EQ(ThrownBy([root] { Zeb_MemAllocate(8, root); }), MAPI_E_NOT_ENOUGH_RESOURCES);
    Zeb_MemFree(root);
}

TEST(Mem, ANullBlockIsNoMemory)
{
    MapiMemory memory;
    memory.GiveNull(1);
    EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(8, nullptr); }), MAPI_E_NOT_ENOUGH_MEMORY);
    void* root = Zeb_MemAllocate(8, nullptr);
    memory.GiveNull(1);
    EXPECT_EQ(ThrownBy([root] { Zeb_MemAllocate(8, root); }), MAPI_E_NOT_ENOUGH_MEMORY);
    Zeb_MemFree(root);
}

TEST(Mem, TheResultOfFreeIsIgnored)
{
    Zeb_MemInitialize(nullptr, nullptr, &RefuseFree);
    int block = 0;
    refusedFrees = 0;
    EXPECT_EQ(ThrownBy([&block] { Zeb_MemFree(&block); }), S_OK);
    void* pointer = &block;
    Zeb_MemExFree(pointer);
    EXPECT_EQ(pointer, nullptr);
    EXPECT_EQ(refusedFrees, 2);
    Zeb_MemUninitialize();
}

TEST(Mem, ReallocatingToLessCopiesWhatFits)
{
    MapiMemory memory;
    auto* old = static_cast<char*>(Zeb_MemAllocate(16, nullptr));
    std::memcpy(old, "0123456789abcdef", 16);
    auto* block = static_cast<char*>(Zeb_MemReallocate(old, 8, 16));
    EXPECT_EQ(memory.SizeOf(block), 8u);
    EXPECT_EQ(std::string(block, 8), "01234567");
    EXPECT_EQ(memory.LiveRoots(), 1u) << "the old block is freed";
    Zeb_MemFree(block);
}

TEST(Mem, ReallocatingToMoreFillsWithZeros)
{
    MapiMemory memory;
    auto* old = static_cast<char*>(Zeb_MemAllocate(8, nullptr));
    std::memcpy(old, "01234567", 8);
    auto* block = static_cast<char*>(Zeb_MemReallocate(old, 16, 8));
    EXPECT_EQ(std::string(block, 8), "01234567");
    EXPECT_TRUE(IsZero(block + 8, 8));
    EXPECT_EQ(memory.LiveRoots(), 1u);
    Zeb_MemFree(block);
}

TEST(Mem, ReallocatingNothingAllocates)
{
    MapiMemory memory;
    void* block = Zeb_MemReallocate(nullptr, 8, 100);
    EXPECT_TRUE(IsZero(block, 8));
    EXPECT_EQ(memory.Frees(), 0u);
    Zeb_MemFree(block);
}

TEST(Mem, FailedReallocationKeepsTheOldBlock)
{
    MapiMemory memory;
    void* old = Zeb_MemAllocate(8, nullptr);
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([old] { Zeb_MemReallocate(old, 16, 8); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_TRUE(memory.IsRoot(old));
    Zeb_MemFree(old);
}

TEST(Mem, ExFreeClearsThePointer)
{
    MapiMemory memory;
    void* block = Zeb_MemAllocate(8, nullptr);
    Zeb_MemExFree(block);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(memory.Frees(), 1u);
    Zeb_MemExFree(block);
    EXPECT_EQ(memory.Frees(), 1u) << "a null pointer is not handed to the allocator";
}

TEST(Mem, UnboundThrowsAndFreesNothing)
{
    Zeb_MemUninitialize();
    EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(8, nullptr); }), MAPI_E_NOT_INITIALIZED);
    int parent = 0;
    EXPECT_EQ(ThrownBy([&parent] { Zeb_MemAllocate(8, &parent); }), MAPI_E_NOT_INITIALIZED);
    EXPECT_EQ(ThrownBy([&parent] { Zeb_MemReallocate(&parent, 8, 4); }), MAPI_E_NOT_INITIALIZED);
    Zeb_MemFree(&parent);
    void* pointer = &parent;
    Zeb_MemExFree(pointer);
    EXPECT_EQ(pointer, nullptr) << "a block kept beyond the provider is given up";
}

TEST(Mem, MapiIsPreferredPerEntryPoint)
{
    WabObject wab;
    {
        MapiMemory memory;
        Zeb_MemInitialize(&wab);
        void* fromMapi = Zeb_MemAllocate(4, nullptr);
        EXPECT_TRUE(memory.IsRoot(fromMapi));
        Zeb_MemFree(fromMapi);
        EXPECT_EQ(wab.allocations + wab.frees, 0);

        Zeb_MemInitialize(nullptr, &MapiMemory::AllocateMore, nullptr);
        void* fromWab = Zeb_MemAllocate(4, nullptr);
        EXPECT_EQ(wab.allocations, 1);
        Zeb_MemFree(fromWab);
        EXPECT_EQ(wab.frees, 1);
        void* root = memory.Allocate(4);
        EXPECT_NE(Zeb_MemAllocate(4, root), nullptr);
        EXPECT_EQ(wab.moreAllocations, 0);
        MapiMemory::FreeBuffer(root);
    }
    EXPECT_EQ(wab.references, 1) << "unbinding releases the WAB object";
}

TEST(Mem, TheWabObjectAllocatesAndFrees)
{
    WabObject wab;
    Zeb_MemInitialize(&wab);
    void* root = Zeb_MemAllocate(8, nullptr);
    void* child = Zeb_MemAllocate(8, root);
    EXPECT_TRUE(IsZero(root, 8));
    EXPECT_TRUE(IsZero(child, 8));
    EXPECT_EQ(wab.lastParent, root);
    EXPECT_EQ(wab.allocations, 1);
    EXPECT_EQ(wab.moreAllocations, 1);
    Zeb_MemFree(root);
    EXPECT_EQ(wab.frees, 1);
    Zeb_MemUninitialize();
    EXPECT_EQ(wab.references, 1);
}

TEST(Mem, ABoundWabObjectIsReferenced)
{
    WabObject wab;
    Zeb_MemInitialize(&wab);
    EXPECT_EQ(wab.queries, 1);
    EXPECT_EQ(wab.askedFor, IID_IUnknown);
    EXPECT_EQ(wab.references, 2);
    Zeb_MemInitialize(nullptr);
    EXPECT_EQ(wab.references, 1);
    EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(8, nullptr); }), MAPI_E_NOT_INITIALIZED);
}

TEST(Mem, TheQueriedInterfaceAllocates)
{
    WabObject inner;
    WabObject outer;
    outer.answerWith = &inner;
    Zeb_MemInitialize(&outer);
    Zeb_MemFree(Zeb_MemAllocate(8, nullptr));
    EXPECT_EQ(inner.allocations, 1);
    EXPECT_EQ(outer.allocations, 0);
    EXPECT_EQ(outer.references, 1);
    Zeb_MemUninitialize();
    EXPECT_EQ(inner.references, 1);
}

TEST(Mem, BindingAnotherReleasesTheFirst)
{
    WabObject first;
    WabObject second;
    Zeb_MemInitialize(&first);
    Zeb_MemInitialize(&second);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(second.references, 2);
    Zeb_MemUninitialize();
    EXPECT_EQ(second.references, 1);
}

TEST(Mem, AMissingWabInterfaceBindsNothing)
{
    WabObject first;
    WabObject refusing;
    refusing.answer = E_NOINTERFACE;
    Zeb_MemInitialize(&first);
    Zeb_MemInitialize(&refusing);
    EXPECT_EQ(first.references, 1);
    EXPECT_EQ(refusing.references, 1);
    EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(8, nullptr); }), MAPI_E_NOT_INITIALIZED);
}

TEST(Mem, AFailingWabObjectRaises)
{
    WabObject first;
    WabObject failing;
    failing.answer = E_OUTOFMEMORY;
    Zeb_MemInitialize(&first);
    EXPECT_EQ(ComErrorThrownBy([&failing] { Zeb_MemInitialize(&failing); }), E_OUTOFMEMORY);
    EXPECT_EQ(first.references, 1) << "the old object is dropped before the new one is asked";
    EXPECT_EQ(ThrownBy([] { Zeb_MemAllocate(8, nullptr); }), MAPI_E_NOT_INITIALIZED);
}

TEST(Mem, PropCopyMorePassesBoundAllocators)
{
    MapiMemory memory;
    EntryPointScope scope(EntryPoint::PropCopyMore, reinterpret_cast<void*>(&RecordPropCopyMore));
    SPropValue dest = {};
    SPropValue src = {};
    int parent = 0;
    propCopyResult = S_OK;
    Zeb_PropCopyMore(&dest, &src, &parent);
    EXPECT_EQ(propCopyDest, &dest);
    EXPECT_EQ(propCopySource, &src);
    EXPECT_EQ(propCopyAllocate, &MapiMemory::AllocateMore);
    EXPECT_EQ(propCopyParent, &parent);
    propCopyResult = MAPI_E_NOT_ENOUGH_MEMORY;
    EXPECT_EQ(ThrownBy([&] { Zeb_PropCopyMore(&dest, &src, &parent); }), MAPI_E_NOT_ENOUGH_MEMORY);
}

TEST(Mem, PropCopyMoreIgnoresWabAllocators)
{
    WabObject wab;
    Zeb_MemInitialize(&wab);
    EntryPointScope scope(EntryPoint::PropCopyMore, reinterpret_cast<void*>(&RecordPropCopyMore));
    SPropValue value = {};
    propCopyAllocate = &MapiMemory::AllocateMore;
    propCopyResult = MAPI_E_INVALID_PARAMETER;
    EXPECT_EQ(ThrownBy([&] { Zeb_PropCopyMore(&value, &value, nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(propCopyAllocate, nullptr);
    Zeb_MemUninitialize();
}

TEST(Mem, PropCopyMoreNeedsAProvider)
{
    SPropValue value = {};
    EXPECT_EQ(ThrownBy([&] { Zeb_PropCopyMore(&value, &value, nullptr); }), MAPI_E_CALL_FAILED);
    SRowSet rows = {};
    Zeb_FreeProws(&rows);
}

TEST(Mem, FreeProwsGoesToMapi)
{
    EntryPointScope scope(EntryPoint::FreeProws, reinterpret_cast<void*>(&RecordFreeProws));
    SRowSet rows = {};
    Zeb_FreeProws(&rows);
    EXPECT_EQ(freedRows, &rows);
}

} // namespace zeb::test
