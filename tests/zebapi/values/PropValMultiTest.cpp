#include "tests/zebapi/values/PropVal.h"

#include <memory>

namespace zeb::test
{

namespace
{

using PropValMulti = PropValTest;

template <class T>
CArray<T> ArrayOf(std::initializer_list<T> items)
{
    CArray<T> array;
    for (const T& item : items)
    {
        array.Add(item);
    }
    return array;
}

} // namespace

TEST_F(PropValMulti, NumbersRoundTripInOrder)
{
    SPropValue longs = Tagged(PT_MV_LONG);
    View(longs) = ArrayOf<LONG>({3, -1, 2});
    EXPECT_EQ(longs.Value.MVl.cValues, 3u);
    EXPECT_EQ(memory.SizeOf(longs.Value.MVl.lpl), 12u);
    EXPECT_FALSE(memory.IsRoot(longs.Value.MVl.lpl));
    CArray<LONG> readLongs = ArrayOf<LONG>({99});
    View(longs).GetMV(readLongs);
    ASSERT_EQ(readLongs.GetSize(), 3) << "what was there is gone";
    EXPECT_EQ(readLongs[0], 3);
    EXPECT_EQ(readLongs[1], -1);
    EXPECT_EQ(readLongs[2], 2);

    SPropValue shorts = Tagged(PT_MV_I2);
    View(shorts) = ArrayOf<SHORT>({-7, 8});
    EXPECT_EQ(memory.SizeOf(shorts.Value.MVi.lpi), 4u);
    CArray<SHORT> readShorts;
    View(shorts).GetMV(readShorts);
    ASSERT_EQ(readShorts.GetSize(), 2);
    EXPECT_EQ(readShorts[0], -7);
    EXPECT_EQ(readShorts[1], 8);
}

TEST_F(PropValMulti, TextsHaveABlockEach)
{
    SPropValue value = Tagged(PT_MV_STRING8);
    View(value) = ArrayOf<CStringA>({"one", "", "three"});
    ASSERT_EQ(value.Value.MVszA.cValues, 3u);
    EXPECT_EQ(memory.SizeOf(value.Value.MVszA.lppszA), 3 * sizeof(char*));
    EXPECT_EQ(memory.SizeOf(value.Value.MVszA.lppszA[0]), 4u);
    EXPECT_EQ(memory.SizeOf(value.Value.MVszA.lppszA[1]), 1u);
    EXPECT_STREQ(value.Value.MVszA.lppszA[2], "three");
    CArray<CStringA> read;
    View(value).GetMV(read);
    ASSERT_EQ(read.GetSize(), 3);
    EXPECT_EQ(read[0], "one");
    EXPECT_EQ(read[1], "");
    EXPECT_EQ(read[2], "three");
}

TEST_F(PropValMulti, WideTextsHaveABlockEach)
{
    SPropValue value = Tagged(PT_MV_UNICODE);
    View(value) = ArrayOf<CStringW>({ZEBW("one"), ZEBW("")});
    ASSERT_EQ(value.Value.MVszW.cValues, 2u);
    EXPECT_EQ(memory.SizeOf(value.Value.MVszW.lppszW[0]), 8u);
    EXPECT_EQ(memory.SizeOf(value.Value.MVszW.lppszW[1]), 2u);
    CArray<CStringW> read;
    View(value).GetMV(read);
    ASSERT_EQ(read.GetSize(), 2);
    EXPECT_EQ(read[0], ZEBW("one"));
    EXPECT_EQ(read[1], ZEBW(""));
}

TEST_F(PropValMulti, BinariesPointIntoTheirObjects)
{
    CArray<CZebBinary> binaries;
    binaries.Add(CZebBinary("01"));
    binaries.Add(CZebBinary("0203"));
    SPropValue value = Tagged(PT_MV_BINARY);
    View(value) = binaries;
    ASSERT_EQ(value.Value.MVbin.cValues, 2u);
    EXPECT_EQ(memory.SizeOf(value.Value.MVbin.lpbin), 32u);
    EXPECT_EQ(value.Value.MVbin.lpbin[1].lpb, static_cast<unsigned char*>(binaries[1]));
    CArray<CZebBinary> read;
    View(value).GetMV(read);
    ASSERT_EQ(read.GetSize(), 2);
    EXPECT_EQ(read[0].String(), "01");
    EXPECT_EQ(read[1].String(), "0203");
    EXPECT_NE(static_cast<unsigned char*>(read[1]), static_cast<unsigned char*>(binaries[1]));
}

TEST_F(PropValMulti, EmptyArraysHaveNoElements)
{
    SPropValue value = Tagged(PT_MV_LONG);
    View(value) = CArray<LONG>();
    EXPECT_EQ(value.Value.MVl.cValues, 0u);
    CArray<LONG> read = ArrayOf<LONG>({1});
    View(value).GetMV(read);
    EXPECT_EQ(read.GetSize(), 0);
}

TEST_F(PropValMulti, NullTextsReadAsEmpty)
{
    char* texts[] = {nullptr};
    SPropValue value = Tagged(PT_MV_STRING8);
    value.Value.MVszA = {1, texts};
    CArray<CStringA> read;
    View(value).GetMV(read);
    ASSERT_EQ(read.GetSize(), 1);
    EXPECT_TRUE(read[0].IsEmpty());
}

TEST_F(PropValMulti, BinariesReadIntoTheirOwnArray)
{
    CArray<CZebBinary> binaries;
    binaries.Add(CZebBinary("01"));
    binaries.Add(CZebBinary("0203"));
    SPropValue value = Tagged(PT_MV_BINARY);
    View(value) = binaries;
    View(value).GetMV(binaries);
    ASSERT_EQ(binaries.GetSize(), 2);
    EXPECT_EQ(binaries[0].String(), "01");
    EXPECT_EQ(binaries[1].String(), "0203");
}

TEST_F(PropValMulti, FailedReadLeavesTheArray)
{
    BYTE byte = 1;
    SBinary entries[] = {{1, &byte}, {1, &byte}};
    SPropValue value = Tagged(PT_MV_BINARY);
    value.Value.MVbin = {2, entries};
    CArray<CZebBinary> read;
    read.Add(CZebBinary("FF"));
    // Every element takes a header and bytes, twice.
    for (size_t failing = 1; failing <= 4; ++failing)
    {
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { View(value).GetMV(read); }), MAPI_E_NOT_ENOUGH_MEMORY) << failing;
        ASSERT_EQ(read.GetSize(), 1) << failing;
        EXPECT_EQ(read[0].String(), "FF") << failing;
    }
}

TEST_F(PropValMulti, ChecksTypeThenParent)
{
    SPropValue other = Tagged(PT_LONG);
    const CArray<LONG> longs;
    const CArray<SHORT> shorts;
    const CArray<CStringA> texts;
    const CArray<CStringW> wides;
    const CArray<CZebBinary> binaries;
    const auto expect = [](HRESULT result, auto&& body) { EXPECT_EQ(ThrownBy(body), result); };
    const auto refuses = [&](const auto& array, ULONG type)
    {
        SPropValue value = Tagged(type);
        expect(MAPI_E_BAD_VALUE, [&] { CZebOnePropVal(nullptr, nullptr) = array; });
        expect(MAPI_E_INVALID_TYPE, [&] { CZebOnePropVal(&other, nullptr) = array; });
        expect(MAPI_E_INVALID_OBJECT, [&] { CZebOnePropVal(&value, nullptr) = array; });
        auto into = array;
        expect(MAPI_E_INVALID_TYPE, [&] { View(other).GetMV(into); });
        expect(MAPI_E_BAD_VALUE, [&] { CZebOnePropVal(nullptr, nullptr).GetMV(into); });
    };
    refuses(longs, PT_MV_LONG);
    refuses(shorts, PT_MV_I2);
    refuses(texts, PT_MV_STRING8);
    refuses(wides, PT_MV_UNICODE);
    refuses(binaries, PT_MV_BINARY);
}

TEST_F(PropValMulti, FailedAllocationLeavesTheValueAlone)
{
    SPropValue value = Tagged(PT_MV_STRING8);
    View(value) = ArrayOf<CStringA>({"old"});
    char** const old = value.Value.MVszA.lppszA;
    for (size_t failing = 1; failing <= 3; ++failing)
    {
        memory.FailAllocation(failing);
        EXPECT_EQ(ThrownBy([&] { View(value) = ArrayOf<CStringA>({"a", "b"}); }), MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(value.Value.MVszA.cValues, 1u);
        EXPECT_EQ(value.Value.MVszA.lppszA, old);
    }
    CArray<CZebBinary> binaries;
    binaries.Add(CZebBinary());
    SPropValue binary = Tagged(PT_MV_BINARY);
    EXPECT_EQ(ThrownBy([&] { View(binary) = binaries; }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(binary.Value.MVbin.cValues, 0u);
}

namespace
{

template <class T>
void ExpectNone(CZebOnePropVal view)
{
    CArray<T> values;
    values.SetSize(2);
    view.GetMV(values);
    EXPECT_EQ(values.GetSize(), 0);
}

} // namespace

TEST_F(PropValMulti, CountsWithoutElementsReadAsEmpty)
{
    const auto claims = [](ULONG type)
    {
        SPropValue value = Tagged(type);
        value.Value.MVl.cValues = 3;
        return value;
    };
    SPropValue binaries = claims(PT_MV_BINARY);
    ExpectNone<CZebBinary>(View(binaries));
    SPropValue wide = claims(PT_MV_UNICODE);
    ExpectNone<CStringW>(View(wide));
    SPropValue narrow = claims(PT_MV_STRING8);
    ExpectNone<CStringA>(View(narrow));
    SPropValue shorts = claims(PT_MV_I2);
    ExpectNone<SHORT>(View(shorts));
    SPropValue longs = claims(PT_MV_LONG);
    ExpectNone<LONG>(View(longs));
}

TEST_F(PropValMulti, ABinaryWithoutBytesReadsEmpty)
{
    SBinary entries[] = {{3, nullptr}, {1, reinterpret_cast<BYTE*>(const_cast<char*>("a"))}};
    SPropValue value = Tagged(PT_MV_BINARY);
    value.Value.MVbin.cValues = 2;
    value.Value.MVbin.lpbin = entries;
    CArray<CZebBinary> values;
    View(value).GetMV(values);
    ASSERT_EQ(values.GetSize(), 2);
    EXPECT_TRUE(values[0].IsEmpty());
    EXPECT_EQ(values[1].String(), "61");
}

} // namespace zeb::test
