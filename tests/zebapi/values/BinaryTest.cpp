#include "zebapi/Binary.h"

#include "tests/support/MapiMemory.h"
#include "tests/support/Thrown.h"

#include <functional>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace zeb::test
{

namespace
{

SBinary BinaryOf(std::vector<BYTE>& bytes)
{
    return {static_cast<ULONG>(bytes.size()), bytes.data()};
}

class Binary : public ::testing::Test
{
protected:
    MapiMemory memory;
};

class EntryIDRequest : public Binary
{
protected:
    /// What a MAPI call does that returns an entry identifier.
    void Fill(CZebEntryIDRequest& request, const std::vector<BYTE>& bytes)
    {
        ULONG* count = request;
        ENTRYID** identifier = request;
        *count = static_cast<ULONG>(bytes.size());
        *identifier = static_cast<ENTRYID*>(memory.Allocate(static_cast<ULONG>(bytes.size())));
        std::memcpy(*identifier, bytes.data(), bytes.size());
    }
};

} // namespace

TEST_F(Binary, NewObjectThrowsOnEveryRead)
{
    CZebBinary binary;
    EXPECT_FALSE(binary.IsValid());
    EXPECT_EQ(ThrownBy([&] { binary.IsEmpty(); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { binary.String(); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<ULONG>(binary); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<unsigned char*>(binary); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<ENTRYID*>(binary); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<const SBinary&>(binary); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(memory.Allocations(), 0u);
}

TEST_F(Binary, NoBytesAreANullPointer)
{
    CZebBinary binary(0, static_cast<void*>(nullptr));
    EXPECT_TRUE(binary.IsValid());
    EXPECT_TRUE(binary.IsEmpty());
    EXPECT_EQ(static_cast<unsigned char*>(binary), nullptr);
    EXPECT_EQ(static_cast<ULONG>(binary), 0u);
}

TEST_F(Binary, EmptyTextGivesAValidHeader)
{
    CZebBinary binary("");
    EXPECT_TRUE(binary.IsValid());
    EXPECT_TRUE(binary.IsEmpty());
    EXPECT_EQ(static_cast<unsigned char*>(binary), nullptr);
    EXPECT_EQ(binary.String(), "");
}

TEST_F(Binary, NullTextGivesNoHeader)
{
    EXPECT_FALSE(CZebBinary(static_cast<const char*>(nullptr)).IsValid());
}

TEST_F(Binary, BytesAreChainedToTheHeader)
{
    BYTE bytes[] = {0x01, 0xAB, 0xFF};
    CZebBinary binary(sizeof bytes, static_cast<void*>(bytes));
    const SBinary& header = binary;
    EXPECT_TRUE(memory.IsRoot(std::addressof(header)));
    EXPECT_EQ(memory.SizeOf(std::addressof(header)), 16u);
    EXPECT_FALSE(memory.IsRoot(header.lpb));
    EXPECT_EQ(memory.SizeOf(header.lpb), 3u);
    EXPECT_EQ(header.cb, 3u);
    EXPECT_NE(header.lpb, bytes);
    EXPECT_EQ(std::memcmp(header.lpb, bytes, sizeof bytes), 0);
}

TEST_F(Binary, TextIsUpperCaseHexadecimal)
{
    CZebBinary binary("01abFF00");
    EXPECT_EQ(static_cast<ULONG>(binary), 4u);
    EXPECT_EQ(binary.String(), "01ABFF00");
    EXPECT_EQ(static_cast<unsigned char*>(binary)[1], 0xAB);
    CStringA text = binary.String();
    EXPECT_TRUE(CZebBinary(text) == binary);
    CStringA converted = binary;
    EXPECT_EQ(converted, "01ABFF00");
}

TEST_F(Binary, OddTextHoldsWholePairsOnly)
{
    for (const char* text : {"0", "01A", "01zz", "01 02", "xyz", "0g"})
    {
        CZebBinary binary(text);
        const SBinary& header = binary;
        EXPECT_EQ(header.cb, memory.SizeOf(header.lpb)) << text;
        EXPECT_EQ(binary.String().GetLength(), static_cast<int>(2 * header.cb)) << text;
    }
}

TEST_F(Binary, EntryIdentifiersAreHeldAlike)
{
    BYTE bytes[] = {1, 2, 3, 4, 5};
    auto* identifier = reinterpret_cast<ENTRYID*>(bytes);
    CZebBinary built(sizeof bytes, identifier);
    CZebBinary set;
    set.SetEntryId(sizeof bytes, identifier);
    EXPECT_EQ(set.String(), "0102030405");
    EXPECT_TRUE(built == set);
    EXPECT_EQ(reinterpret_cast<BYTE*>(static_cast<ENTRYID*>(set)), static_cast<unsigned char*>(set));
}

TEST_F(Binary, CopiesHaveBytesOfTheirOwn)
{
    CZebBinary source("0102");
    CZebBinary copy(source);
    CZebBinary assigned("FF");
    assigned = source;
    EXPECT_TRUE(copy == source);
    EXPECT_TRUE(assigned == source);
    EXPECT_NE(static_cast<unsigned char*>(copy), static_cast<unsigned char*>(source));
    source.Empty();
    EXPECT_EQ(copy.String(), "0102");
    EXPECT_EQ(assigned.String(), "0102");
}

TEST_F(Binary, AssigningNoHeaderEmpties)
{
    CZebBinary binary("0102");
    binary = CZebBinary();
    EXPECT_FALSE(binary.IsValid());
    EXPECT_EQ(memory.LiveRoots(), 0u);
}

TEST_F(Binary, AssigningToItselfKeepsTheBytes)
{
    CZebBinary binary("0A0B0C");
    const CZebBinary& same = binary;
    binary = same;
    EXPECT_EQ(binary.String(), "0A0B0C");
}

TEST_F(Binary, MayBeSetFromItsBytes)
{
    CZebBinary binary("0A0B0C0D");
    binary.SetBinary(2, static_cast<unsigned char*>(binary) + 1);
    EXPECT_EQ(binary.String(), "0B0C");
    binary = static_cast<const SBinary&>(binary);
    EXPECT_EQ(binary.String(), "0B0C");
}

TEST_F(Binary, AddressOperatorEmptiesAndFills)
{
    CZebBinary binary("0102");
    SBinary** slot = &binary;
    EXPECT_FALSE(binary.IsValid());
    EXPECT_EQ(memory.LiveRoots(), 0u);
    *slot = static_cast<SBinary*>(memory.Allocate(sizeof(SBinary)));
    (*slot)->cb = 1;
    (*slot)->lpb = static_cast<BYTE*>(memory.AllocateUnder(*slot, 1));
    (*slot)->lpb[0] = 0x7F;
    EXPECT_EQ(binary.String(), "7F");
}

TEST_F(Binary, PointerConversionGivesTheObject)
{
    CZebBinary binary;
    CZebBinary* self = binary;
    EXPECT_EQ(self, std::addressof(binary));
}

TEST_F(Binary, ObjectsWithoutHeadersAreUnequal)
{
    CZebBinary a;
    CZebBinary b;
    EXPECT_FALSE(a == b);
    EXPECT_TRUE(a != b);
    EXPECT_FALSE(a == CZebBinary("00"));
    EXPECT_FALSE(CZebBinary("00") == a);
}

TEST_F(Binary, ComparesCountsAndBytes)
{
    EXPECT_TRUE(CZebBinary("0102") == CZebBinary("0102"));
    EXPECT_FALSE(CZebBinary("0102") == CZebBinary("0103"));
    EXPECT_FALSE(CZebBinary("0102") == CZebBinary("010200"));
    EXPECT_TRUE(CZebBinary("") == CZebBinary(""));
    EXPECT_TRUE(CZebBinary("0102") != CZebBinary("0103"));
}

TEST_F(Binary, FailedAllocationLeavesItEmpty)
{
    BYTE bytes[] = {1, 2, 3};
    for (size_t failing = 1; failing <= 2; ++failing)
    {
        CZebBinary binary("FFFF");
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { binary.SetBinary(sizeof bytes, bytes); }), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_FALSE(binary.IsValid());

        binary.SetBinary(sizeof bytes, bytes);
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { binary.String("0102"); }), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_FALSE(binary.IsValid());

        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { CZebBinary built("0102"); }), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(memory.LiveRoots(), 0u);
    }
}

TEST_F(Binary, NullBytesNeedAZeroCount)
{
    CZebBinary binary("0102");
    EXPECT_EQ(ThrownBy([&] { binary.SetBinary(3, nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(binary.String(), "0102");
}

TEST_F(Binary, BytesWithoutATextAreRefused)
{
    CZebBinary binary("01");
    const_cast<SBinary&>(static_cast<const SBinary&>(binary)).cb = 0x40000000;
    EXPECT_EQ(ThrownBy([&] { binary.String(); }), MAPI_E_NOT_ENOUGH_MEMORY);
}

TEST_F(Binary, CopyToChainsToTheParent)
{
    std::vector<BYTE> bytes = {9, 8, 7};
    void* parent = memory.Allocate(16);
    SBinary target = {};
    CZebBinary::CopyTo(target, BinaryOf(bytes), parent);
    EXPECT_EQ(target.cb, 3u);
    EXPECT_FALSE(memory.IsRoot(target.lpb));
    EXPECT_EQ(std::vector<BYTE>(target.lpb, target.lpb + 3), bytes);
    Zeb_MemFree(parent);
}

TEST_F(Binary, CopyToMayMakeARoot)
{
    SBinary target = {7, nullptr};
    CZebBinary::CopyTo(target, SBinary{0, nullptr}, nullptr);
    EXPECT_EQ(target.cb, 0u);
    EXPECT_TRUE(memory.IsRoot(target.lpb));
    Zeb_MemFree(target.lpb);
}

TEST_F(Binary, FailedCopyToLeavesTheTarget)
{
    std::vector<BYTE> bytes = {1};
    BYTE old = 0;
    SBinary target = {5, &old};
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { CZebBinary::CopyTo(target, BinaryOf(bytes), nullptr); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(target.cb, 5u);
    EXPECT_EQ(target.lpb, &old);
}

TEST_F(EntryIDRequest, IsFilledThroughTwoOutParameters)
{
    CZebEntryIDRequest request;
    Fill(request, {0x0A, 0x0B});
    EXPECT_EQ(request.String(), "0A0B");
    EXPECT_EQ(static_cast<ULONG>(request), 2u);
}

TEST_F(EntryIDRequest, EitherConversionDropsTheIdentifierHeld)
{
    CZebEntryIDRequest request;
    Fill(request, {1, 2, 3});
    const SBinary* header = std::addressof(static_cast<const SBinary&>(request));
    ULONG* count = request;
    EXPECT_EQ(*count, 0u);
    EXPECT_EQ(header->lpb, nullptr);
    EXPECT_EQ(std::addressof(static_cast<const SBinary&>(request)), header);
    EXPECT_EQ(memory.LiveRoots(), 1u);
    Fill(request, {4});
    ENTRYID** identifier = request;
    EXPECT_EQ(*identifier, nullptr);
    EXPECT_TRUE(request.IsEmpty());
}

TEST_F(EntryIDRequest, OnlyMapiFillsIt)
{
    BYTE byte = 1;
    CZebEntryIDRequest request;
    Fill(request, {7});
    EXPECT_EQ(ThrownBy([&] { request.SetBinary(1, &byte); }), E_FAIL);
    EXPECT_EQ(ThrownBy([&] { request.SetEntryId(1, reinterpret_cast<ENTRYID*>(&byte)); }), E_FAIL);
    EXPECT_EQ(ThrownBy([&] { request.String("00"); }), E_FAIL);
    EXPECT_EQ(request.String(), "07");
}

TEST_F(EntryIDRequest, CopiesOwnATopLevelIdentifier)
{
    CZebEntryIDRequest request;
    Fill(request, {1, 2});
    CZebEntryIDRequest copy(request);
    CZebEntryIDRequest assigned;
    Fill(assigned, {9});
    assigned = request;
    const SBinary& copied = copy;
    EXPECT_TRUE(memory.IsRoot(copied.lpb));
    EXPECT_TRUE(memory.IsRoot(static_cast<const SBinary&>(assigned).lpb));
    EXPECT_TRUE(copy == request);
    EXPECT_TRUE(assigned == request);
    // Refilling frees the identifier by itself.
    Fill(copy, {3});
    EXPECT_EQ(copy.String(), "03");
}

TEST_F(EntryIDRequest, AssigningToItselfWorks)
{
    CZebEntryIDRequest request;
    Fill(request, {1, 2});
    const CZebEntryIDRequest& same = request;
    request = same;
    EXPECT_EQ(request.String(), "0102");
    request = CZebBinary("0304");
    EXPECT_EQ(request.String(), "0304");
    EXPECT_TRUE(memory.IsRoot(static_cast<const SBinary&>(request).lpb));
    request = CZebBinary();
    EXPECT_FALSE(request.IsValid());
}

TEST_F(EntryIDRequest, CopiesIntoAPlainBinary)
{
    CZebEntryIDRequest request;
    Fill(request, {1, 2});
    CZebBinary binary(request);
    EXPECT_EQ(binary.String(), "0102");
    EXPECT_FALSE(memory.IsRoot(static_cast<const SBinary&>(binary).lpb));
}

TEST_F(EntryIDRequest, FailedAllocationsLeakNothing)
{
    CZebEntryIDRequest source;
    Fill(source, {1, 2});
    for (size_t failing = 1; failing <= 2; ++failing)
    {
        CZebEntryIDRequest target;
        Fill(target, {3});
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { target = source; }), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_FALSE(target.IsValid());
    }
    CZebEntryIDRequest fresh;
    memory.FailAllocation(1);
    EXPECT_EQ(ThrownBy([&] { (void)static_cast<ULONG*>(fresh); }), MAPI_E_NOT_ENOUGH_MEMORY);
}

TEST_F(Binary, DumpOfEmptyTextIsEmpty)
{
    CStringA empty;
    EXPECT_EQ(Zeb_DumpEntryID(nullptr), "");
    EXPECT_EQ(Zeb_DumpEntryID(""), "");
    EXPECT_EQ(CZebBinary::DumpEntryID(empty), "");
}

TEST_F(EntryIDRequest, NullBytesNeedAZeroCount)
{
    BYTE bytes[] = {1, 2, 3};
    CZebEntryIDRequest request;
    CZebBinary& base = request;
    base = SBinary{3, bytes};
    EXPECT_EQ(ThrownBy([&] { request = SBinary{3, nullptr}; }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(request.CZebBinary::String(), "010203");
    EXPECT_EQ(ThrownBy([&] { base = SBinary{3, nullptr}; }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(request.CZebBinary::String(), "010203");
}

TEST_F(Binary, CopyToNeedsNoPointer)
{
    SBinary target = {9, nullptr};
    auto* parent = static_cast<BYTE*>(memory.Allocate(8));
    CZebBinary::CopyTo(target, SBinary{0, nullptr}, parent);
    EXPECT_EQ(target.cb, 0u);
    EXPECT_NE(target.lpb, nullptr);
    EXPECT_EQ(ThrownBy([&] { CZebBinary::CopyTo(target, SBinary{1, nullptr}, parent); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(target.cb, 0u) << "a failed check leaves the target alone";
    Zeb_MemFree(parent);
}

TEST_F(EntryIDRequest, AnIdentifierMayBeEmpty)
{
    CZebEntryIDRequest request;
    const auto give = [](ULONG* count, ENTRYID** entryID)
    {
        *count = 0;
        *entryID = nullptr;
    };
    give(request, request);
    EXPECT_TRUE(request.IsValid());
    EXPECT_TRUE(request.IsEmpty());
    const CZebBinary copy(request);
    EXPECT_TRUE(copy.IsEmpty());
    const CZebEntryIDRequest other(request);
    EXPECT_TRUE(other.IsEmpty());
}

TEST_F(Binary, AnImpossibleDumpThrows)
{
    CStringA hex("00000000");
    for (const auto& dump : {std::function<void()>([&] { CZebBinary::DumpEntryID(hex); }),
                             std::function<void()>([] { Zeb_DumpEntryID("00000000"); })})
    {
        memory.FailAllocation(1);
        EXPECT_EQ(ThrownBy(dump), MAPI_E_NOT_ENOUGH_MEMORY);
        memory.FailAllocation(2);
        EXPECT_EQ(ThrownBy(dump), MAPI_E_NOT_ENOUGH_MEMORY);
        Zeb_MemUninitialize();
        EXPECT_EQ(ThrownBy(dump), MAPI_E_NOT_INITIALIZED);
        memory.Bind();
        EXPECT_EQ(memory.LiveRoots(), 0u);
    }
}

} // namespace zeb::test
