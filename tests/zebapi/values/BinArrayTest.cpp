#include "zebapi/BinArray.h"

#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"

#include <gtest/gtest.h>

#include <memory>

namespace zeb::test
{

namespace
{

class BinArray : public ::testing::Test
{
protected:
    /// Emptying leaves the block of entries allocated: frees it when the array is gone.
    class EntryBlock
    {
    public:
        explicit EntryBlock(const CZebBinArray& array)
            : m_entries(static_cast<SBinaryArray*>(array)->lpbin)
        {
        }
        ~EntryBlock() { Zeb_MemFree(m_entries); }

    private:
        SBinary* m_entries;
    };

    MapiMemory memory;
};

} // namespace

TEST_F(BinArray, OfNoEntriesIsRefused)
{
    EXPECT_EQ(ThrownBy([] { CZebBinArray array(0); }), E_INVALIDARG);
    EXPECT_EQ(ThrownBy([] { CZebBinArray array(ULONG{0}); }), E_INVALIDARG);
    EXPECT_EQ(memory.Allocations(), 0u);
}

TEST_F(BinArray, RefusesMoreThanMemoryCanHold)
{
    EXPECT_EQ(ThrownBy([] { CZebBinArray array(ULONG{0x10000000}); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ThrownBy([] { CZebBinArray array(-1); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(BinArray, HeaderAndEntriesAreTopLevel)
{
    auto array = std::make_unique<CZebBinArray>(2);
    EntryBlock entries(*array);
    SBinaryArray* header = *array;
    EXPECT_EQ(header->cValues, 2u);
    EXPECT_TRUE(memory.IsRoot(header));
    EXPECT_TRUE(memory.IsRoot(header->lpbin));
    EXPECT_EQ(memory.SizeOf(header->lpbin), 32u);
    array->SetAt(1, "0102");
    EXPECT_EQ(header->lpbin[0].cb, 0u);
    EXPECT_EQ(header->lpbin[1].cb, 2u);
    EXPECT_FALSE(memory.IsRoot(header->lpbin[1].lpb));
    BYTE* bytes = header->lpbin[1].lpb;
    array.reset();
    EXPECT_EQ(memory.SizeOf(bytes), 0u) << "the bytes go with the header";
    EXPECT_EQ(memory.LiveRoots(), 1u) << "the block of entries stays allocated";
}

TEST_F(BinArray, ChecksIndexes)
{
    BYTE byte = 5;
    const SBinary one = {1, &byte};
    auto array = std::make_unique<CZebBinArray>(2);
    EntryBlock entries(*array);
    EXPECT_EQ(ThrownBy([&] { array->SetAt(2, "00"); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(ThrownBy([&] { array->SetAt(2, one); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(ThrownBy([&] { array->GetAt(2); }), MAPI_E_NOT_FOUND);
    EXPECT_EQ(ThrownBy([&] { array->SetAt(0, "00"); }), S_OK);
    EXPECT_EQ(ThrownBy([&] { array->SetAt(1, one); }), S_OK);
    EXPECT_EQ(array->GetAt(1).String(), "05");
    static_cast<SBinaryArray*>(*array)->cValues = 0;
    EXPECT_EQ(ThrownBy([&] { array->GetAt(0); }), MAPI_E_BAD_VALUE);
    array->Empty();
    EXPECT_FALSE(array->IsValid());
    EXPECT_EQ(ThrownBy([&] { array->GetAt(0); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<SBinaryArray*>(*array); }), MAPI_E_INVALID_OBJECT);
}

TEST_F(BinArray, GivesDeepCopies)
{
    CZebBinArray array("0A0B");
    EntryBlock entries(array);
    CZebBinary copy = array.GetAt(0);
    array.SetAt(0, "FF");
    EXPECT_EQ(copy.String(), "0A0B");
    EXPECT_EQ(array.GetAt(0).String(), "FF");
}

TEST_F(BinArray, MakesOneEntryOfABinary)
{
    CZebBinary binary("0102");
    CZebBinArray array(static_cast<const SBinary&>(binary));
    EntryBlock entries(array);
    EXPECT_EQ(static_cast<SBinaryArray*>(array)->cValues, 1u);
    EXPECT_TRUE(array.GetAt(0) == binary);
}

TEST_F(BinArray, AllocatingAgainEmptiesFirst)
{
    CZebBinArray array("0102");
    EntryBlock first(array);
    EXPECT_EQ(ThrownBy([&] { array.Allocate(0); }), E_INVALIDARG);
    EXPECT_TRUE(array.IsValid()) << "the count is checked before anything is dropped";
    array.Allocate(3);
    EntryBlock second(array);
    EXPECT_EQ(static_cast<SBinaryArray*>(array)->cValues, 3u);
    EXPECT_EQ(array.GetAt(0).String(), "");
}

TEST_F(BinArray, FailedAllocationLeavesItEmpty)
{
    for (size_t failing = 1; failing <= 2; ++failing)
    {
        CZebBinArray array(1);
        EntryBlock entries(array);
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { array.Allocate(4); }), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_FALSE(array.IsValid());
    }
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(BinArray, ConstructorsThatThrowLeakNothing)
{
    BYTE byte = 1;
    const SBinary one = {1, &byte};
    for (size_t failing = 1; failing <= 3; ++failing)
    {
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { CZebBinArray array(one); }), MAPI_E_NOT_ENOUGH_MEMORY);
    }
    for (size_t failing = 1; failing <= 5; ++failing)
    {
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { CZebBinArray array("0102"); }), MAPI_E_NOT_ENOUGH_MEMORY);
    }
    EXPECT_EQ(ThrownBy([] { CZebBinArray array(static_cast<const char*>(nullptr)); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

} // namespace zeb::test
