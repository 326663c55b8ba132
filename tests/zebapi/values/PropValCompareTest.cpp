#include "tests/zebapi/values/PropVal.h"

#include <cmath>
#include <functional>

namespace zeb::test
{

namespace
{

class PropValCompare : public PropValTest
{
protected:
    /// Two values of one type, under different property identifiers, filled by `fill`.
    bool Same(ULONG type, const std::function<void(SPropValue&)>& fillA, const std::function<void(SPropValue&)>& fillB)
    {
        SPropValue a = {};
        SPropValue b = {};
        a.ulPropTag = PROP_TAG(type, 0x1000);
        b.ulPropTag = PROP_TAG(type, 0x2000);
        fillA(a);
        fillB(b);
        const bool same = View(a) == View(b);
        EXPECT_NE(View(a) != View(b), same);
        EXPECT_EQ(View(b) == View(a), same);
        return same;
    }
};

template <class Member, class T>
auto Put(Member member, T value)
{
    return [=](SPropValue& target) { target.Value.*member = value; };
}

} // namespace

TEST_F(PropValCompare, AValueEqualsItself)
{
    SPropValue error = Tagged(PT_ERROR);
    EXPECT_TRUE(View(error) == View(error));
    SPropValue other = error;
    EXPECT_FALSE(View(error) == View(other)) << "errors in two places are unequal";
}

TEST_F(PropValCompare, OtherTypesAreUnequal)
{
    SPropValue a = Tagged(PT_LONG);
    SPropValue b = Tagged(PT_I2);
    EXPECT_FALSE(View(a) == View(b));
}

TEST_F(PropValCompare, NumbersCompareAsNumbers)
{
    using Value = decltype(SPropValue::Value);
    EXPECT_TRUE(Same(PT_I2, Put(&Value::i, SHORT(-1)), Put(&Value::i, SHORT(-1))));
    EXPECT_FALSE(Same(PT_I2, Put(&Value::i, SHORT(-1)), Put(&Value::i, SHORT(1))));
    EXPECT_TRUE(Same(PT_LONG, Put(&Value::l, 5), Put(&Value::l, 5)));
    EXPECT_FALSE(Same(PT_LONG, Put(&Value::l, 5), Put(&Value::l, 6)));
    EXPECT_TRUE(Same(PT_R4, Put(&Value::flt, 0.0F), Put(&Value::flt, -0.0F)));
    EXPECT_FALSE(Same(PT_R4, Put(&Value::flt, 0.5F), Put(&Value::flt, 0.25F)));
    EXPECT_TRUE(Same(PT_DOUBLE, Put(&Value::dbl, 0.0), Put(&Value::dbl, -0.0)));
    EXPECT_FALSE(Same(PT_DOUBLE, Put(&Value::dbl, std::nan("")), Put(&Value::dbl, std::nan(""))));
    EXPECT_TRUE(Same(PT_APPTIME, Put(&Value::at, 36526.5), Put(&Value::at, 36526.5)));
    EXPECT_TRUE(Same(PT_APPTIME, Put(&Value::at, 0.0), Put(&Value::at, -0.0)));
    EXPECT_FALSE(Same(PT_APPTIME, Put(&Value::at, 36526.5), Put(&Value::at, 36526.25)));
}

TEST_F(PropValCompare, WideNumbersCompareInBothHalves)
{
    const auto number = [](LONGLONG n) { return [n](SPropValue& value) { value.Value.li.QuadPart = n; }; };
    const auto money = [](LONGLONG n) { return [n](SPropValue& value) { value.Value.cur.int64 = n; }; };
    const auto time = [](DWORD low, DWORD high) { return [=](SPropValue& value) { value.Value.ft = {low, high}; }; };
    EXPECT_TRUE(Same(PT_I8, number(1LL << 40), number(1LL << 40)));
    EXPECT_FALSE(Same(PT_I8, number(1LL << 40), number(0)));
    EXPECT_FALSE(Same(PT_I8, number(1), number(0)));
    EXPECT_TRUE(Same(PT_CURRENCY, money(1LL << 40), money(1LL << 40)));
    EXPECT_FALSE(Same(PT_CURRENCY, money(1LL << 40), money(0)));
    EXPECT_TRUE(Same(PT_SYSTIME, time(1, 2), time(1, 2)));
    EXPECT_FALSE(Same(PT_SYSTIME, time(1, 2), time(1, 3)));
    EXPECT_FALSE(Same(PT_SYSTIME, time(1, 2), time(0, 2)));
}

TEST_F(PropValCompare, BooleansCompareByTruth)
{
    const auto truth = [](unsigned short b) { return [b](SPropValue& value) { value.Value.b = b; }; };
    EXPECT_TRUE(Same(PT_BOOLEAN, truth(1), truth(2)));
    EXPECT_TRUE(Same(PT_BOOLEAN, truth(0), truth(0)));
    EXPECT_FALSE(Same(PT_BOOLEAN, truth(0), truth(2)));
}

TEST_F(PropValCompare, TextComparesWithNullAsEmpty)
{
    const auto text = [this](const char* t)
    {
        return [this, t](SPropValue& value)
        {
            if (t != nullptr)
            {
                View(value) = t;
            }
        };
    };
    EXPECT_TRUE(Same(PT_STRING8, text("abc"), text("abc")));
    EXPECT_FALSE(Same(PT_STRING8, text("abc"), text("Abc")));
    EXPECT_TRUE(Same(PT_STRING8, text(nullptr), text("")));
    EXPECT_TRUE(Same(PT_STRING8, text(nullptr), text(nullptr)));
    const auto wide = [this](const WCHAR* t)
    {
        return [this, t](SPropValue& value)
        {
            if (t != nullptr)
            {
                View(value) = t;
            }
        };
    };
    EXPECT_TRUE(Same(PT_UNICODE, wide(ZEBW("\u4e2d")), wide(ZEBW("\u4e2d"))));
    EXPECT_FALSE(Same(PT_UNICODE, wide(ZEBW("\u4e2d")), wide(ZEBW("\u4e2e"))));
    EXPECT_TRUE(Same(PT_UNICODE, wide(nullptr), wide(ZEBW(""))));
}

TEST_F(PropValCompare, IdentifiersAndBinariesCompareByBytes)
{
    GUID one = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
    GUID same = one;
    GUID other = one;
    other.Data4[7] = 0;
    const auto guid = [](GUID* g) { return [g](SPropValue& value) { value.Value.lpguid = g; }; };
    EXPECT_TRUE(Same(PT_CLSID, guid(&one), guid(&same)));
    EXPECT_FALSE(Same(PT_CLSID, guid(&one), guid(&other)));
    EXPECT_FALSE(Same(PT_CLSID, guid(&one), guid(nullptr)));
    EXPECT_TRUE(Same(PT_CLSID, guid(&one), guid(&one)));
    EXPECT_TRUE(Same(PT_CLSID, guid(nullptr), guid(nullptr)));
    const auto bytes = [this](const char* hex)
    { return [this, hex](SPropValue& value) { View(value) = CZebBinary(hex); }; };
    EXPECT_TRUE(Same(PT_BINARY, bytes("0102"), bytes("0102")));
    EXPECT_FALSE(Same(PT_BINARY, bytes("0102"), bytes("0103")));
    EXPECT_FALSE(Same(PT_BINARY, bytes("0102"), bytes("010203")));
    EXPECT_TRUE(Same(PT_BINARY, bytes(""), bytes("")));
}

TEST_F(PropValCompare, ArraysCompareElementByElement)
{
    const auto longs = [this](std::vector<LONG> numbers)
    {
        return [=](SPropValue& value)
        {
            CArray<LONG> array;
            for (LONG number : numbers)
            {
                array.Add(number);
            }
            View(value) = array;
        };
    };
    EXPECT_TRUE(Same(PT_MV_LONG, longs({1, 2}), longs({1, 2})));
    EXPECT_FALSE(Same(PT_MV_LONG, longs({1, 2}), longs({2, 1})));
    EXPECT_FALSE(Same(PT_MV_LONG, longs({1, 2}), longs({1})));
    SHORT shortsA[] = {1, 2};
    SHORT shortsB[] = {1, 3};
    const auto shorts = [](SHORT* s) { return [s](SPropValue& value) { value.Value.MVi = {2, s}; }; };
    EXPECT_TRUE(Same(PT_MV_I2, shorts(shortsA), shorts(shortsA)));
    EXPECT_FALSE(Same(PT_MV_I2, shorts(shortsA), shorts(shortsB)));
    char a[] = "a";
    char empty[] = "";
    char* textsA[] = {a, nullptr};
    char* textsB[] = {a, empty};
    char* textsC[] = {empty, a};
    const auto texts = [](char** t) { return [t](SPropValue& value) { value.Value.MVszA = {2, t}; }; };
    EXPECT_TRUE(Same(PT_MV_STRING8, texts(textsA), texts(textsB)));
    EXPECT_FALSE(Same(PT_MV_STRING8, texts(textsA), texts(textsC)));
    WCHAR w[] = {'w', 0};
    WCHAR x[] = {'x', 0};
    WCHAR* widesA[] = {w};
    WCHAR* widesB[] = {x};
    const auto wides = [](WCHAR** t) { return [t](SPropValue& value) { value.Value.MVszW = {1, t}; }; };
    EXPECT_TRUE(Same(PT_MV_UNICODE, wides(widesA), wides(widesA)));
    EXPECT_FALSE(Same(PT_MV_UNICODE, wides(widesA), wides(widesB)));
}

TEST_F(PropValCompare, TypesWithoutAComparisonAreUnequal)
{
    const auto nothing = [](SPropValue&) {};
    for (ULONG type : {PT_ERROR, PT_MV_BINARY, PT_OBJECT, PT_NULL, PT_UNSPECIFIED, PT_MV_R4, PT_MV_I8, PT_MV_CLSID})
    {
        EXPECT_FALSE(Same(type, nothing, nothing)) << type;
    }
}

TEST_F(PropValCompare, NeedsAValueOnBothSides)
{
    SPropValue value = Tagged(PT_LONG);
    CZebOnePropVal none(nullptr, nullptr);
    EXPECT_EQ(ThrownBy([&] { (void)(View(value) == none); }), MAPI_E_BAD_VALUE);
    EXPECT_EQ(ThrownBy([&] { (void)(none == View(value)); }), MAPI_E_BAD_VALUE);
}

TEST_F(PropValCompare, CountsWithoutElementsCompareAsEmpty)
{
    for (const ULONG type : {PT_MV_I2, PT_MV_LONG, PT_MV_STRING8, PT_MV_UNICODE})
    {
        SPropValue claims = Tagged(type);
        claims.Value.MVl.cValues = 3;
        SPropValue other = claims;
        SPropValue empty = Tagged(type);
        EXPECT_TRUE(View(claims) == View(other)) << type;
        EXPECT_TRUE(View(claims) == View(empty)) << type;
        EXPECT_TRUE(View(empty) == View(claims)) << type;
        const char* texts[3] = {};
        other.Value.MVszA.lppszA = const_cast<char**>(texts);
        EXPECT_FALSE(View(claims) == View(other)) << type;
        EXPECT_FALSE(View(other) == View(claims)) << type;
    }
    SPropValue claims = Tagged(PT_BINARY);
    claims.Value.bin = {3, nullptr};
    SPropValue bytes = Tagged(PT_BINARY);
    bytes.Value.bin = {3, reinterpret_cast<BYTE*>(const_cast<char*>("abc"))};
    SPropValue empty = Tagged(PT_BINARY);
    EXPECT_FALSE(View(claims) == View(bytes));
    EXPECT_FALSE(View(bytes) == View(claims));
    EXPECT_TRUE(View(claims) == View(empty));
    EXPECT_EQ(View(claims).String(false), "");
}

TEST_F(PropValCompare, ArraysOfDifferentCountsAreUnequal)
{
    char first[] = "a";
    char second[] = "b";
    char* narrow[] = {first, second};
    WCHAR wideFirst[] = {'a', 0};
    WCHAR wideSecond[] = {'b', 0};
    WCHAR* wide[] = {wideFirst, wideSecond};
    for (const ULONG type : {PT_MV_STRING8, PT_MV_UNICODE})
    {
        SPropValue one = Tagged(type);
        one.Value.MVszA.lppszA = type == PT_MV_STRING8 ? narrow : reinterpret_cast<char**>(wide);
        one.Value.MVszA.cValues = 1;
        SPropValue two = one;
        two.Value.MVszA.cValues = 2;
        EXPECT_FALSE(View(one) == View(two)) << type;
        EXPECT_FALSE(View(two) == View(one)) << type;
        SPropValue same = two;
        EXPECT_TRUE(View(two) == View(same)) << type;
    }
}

} // namespace zeb::test
