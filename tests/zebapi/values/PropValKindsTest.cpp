// UTF-8 in and out, floating numbers, currencies, identifiers, and arrays of them.
#include "PropVal.h"
#include "zebapi/PROPVALArray.h"
#include "zebapi/ZebAPI.h"

#include <gmock/gmock.h>
#include <regex>

namespace zeb::test
{

namespace
{

class PropValKinds : public PropValTest
{
protected:
    /// Writes an array of two elements, and what is read back.
    template <class T>
    std::vector<T> Through(ULONG type, const T& first, const T& second)
    {
        CArray<T> given;
        given.Add(first);
        given.Add(second);
        SPropValue value = Tagged(type);
        CZebOnePropVal view = View(value);
        view = given;
        EXPECT_EQ(value.Value.MVl.cValues, 2u);
        CArray<T> read;
        read.Add(first);
        view.GetMV(read);
        return std::vector<T>(read.begin(), read.end());
    }
};

// A Greek word, a music sign beyond the 16-bit plane.
const char* const Utf8 = "\xCE\xB1\xCE\xB2 \xF0\x9D\x84\x9E";
const WCHAR* const Wide = ZEBW("\u03B1\u03B2 \xD834\xDD1E");

} // namespace

TEST_F(PropValKinds, TextRoundTripsAsUtf8)
{
    SPropValue value = Tagged(PT_UNICODE);
    CZebOnePropVal view = View(value);
    view.SetUtf8(Utf8);
    EXPECT_EQ(std::basic_string<WCHAR>(value.Value.lpszW), Wide);
    EXPECT_STREQ(view.StringUtf8(), Utf8);
    view.SetUtf8("");
    EXPECT_STREQ(view.StringUtf8(), "");
}

TEST_F(PropValKinds, NarrowTextTakesUtf8)
{
    SPropValue value = Tagged(PT_STRING8);
    CZebOnePropVal view = View(value);
    view.SetUtf8("caf\xC3\xA9");
    EXPECT_STREQ(view.StringUtf8(), "caf\xC3\xA9");
    EXPECT_EQ(static_cast<CStringW>(view), CStringW(ZEBW("caf\u00E9")));
}

TEST_F(PropValKinds, InvalidUtf8IsReplaced)
{
    SPropValue value = Tagged(PT_UNICODE);
    View(value).SetUtf8("a\xFFz");
    EXPECT_STREQ(View(value).StringUtf8(), "a\xEF\xBF\xBDz");
}

TEST_F(PropValKinds, OtherValuesAreUtf8Text)
{
    SPropValue value = Tagged(PT_LONG);
    value.Value.l = -7;
    EXPECT_STREQ(View(value).StringUtf8(), "-7");
    value = Tagged(PT_ERROR);
    EXPECT_STREQ(View(value).StringUtf8(), "<error>");
    EXPECT_EQ(ThrownBy([&] { View(value).StringUtf8(false); }), MAPI_E_NO_SUPPORT);
}

TEST_F(PropValKinds, OtherTypesRefuseUtf8)
{
    SPropValue value = Tagged(PT_LONG);
    EXPECT_EQ(ThrownBy([&] { View(value).SetUtf8("a"); }), MAPI_E_INVALID_TYPE);
    value = Tagged(PT_UNICODE);
    EXPECT_EQ(ThrownBy([&] { View(value).SetUtf8(nullptr); }), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(&value, nullptr).SetUtf8("a"); }), MAPI_E_INVALID_OBJECT);
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(nullptr, nullptr).SetUtf8("a"); }), MAPI_E_BAD_VALUE);
}

TEST(LibraryVersion, HasThreeNumbers)
{
    EXPECT_TRUE(std::regex_match(Zeb_GetVersion(), std::regex("[0-9]+\\.[0-9]+\\.[0-9]+"))) << Zeb_GetVersion();
}

TEST_F(PropValKinds, WideTextConvertsUtf8)
{
    EXPECT_EQ(Zeb_Wide(Utf8), CStringW(Wide));
    EXPECT_STREQ(Zeb_Utf8(Zeb_Wide(Utf8)), Utf8);
    EXPECT_TRUE(Zeb_Wide(nullptr).IsEmpty());
    EXPECT_EQ(Zeb_Wide("a\xFF"), CStringW(ZEBW("a\uFFFD")));
}

TEST_F(PropValKinds, FloatingNumbersFollowTheTag)
{
    for (const ULONG type : {PT_DOUBLE, PT_APPTIME})
    {
        SPropValue value = Tagged(type);
        View(value) = 1.1;
        EXPECT_EQ(value.Value.dbl, 1.1);
        EXPECT_EQ(View(value).GetDouble(), 1.1);
    }
    SPropValue value = Tagged(PT_R4);
    View(value) = 1.1;
    EXPECT_EQ(value.Value.flt, 1.1F);
    EXPECT_EQ(View(value).GetDouble(), static_cast<double>(1.1F));
    value = Tagged(PT_LONG);
    EXPECT_EQ(ThrownBy([&] { View(value) = 1.1; }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { View(value).GetDouble(); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(nullptr, nullptr).GetDouble(); }), MAPI_E_BAD_VALUE);
}

TEST_F(PropValKinds, CurrenciesAreTenThousandths)
{
    SPropValue value = Tagged(PT_CURRENCY);
    View(value).SetCurrency(-12'345'678'901'234);
    EXPECT_EQ(value.Value.cur.int64, -12'345'678'901'234);
    EXPECT_EQ(View(value).GetCurrency(), -12'345'678'901'234);
    value = Tagged(PT_I8);
    EXPECT_EQ(ThrownBy([&] { View(value).SetCurrency(1); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { View(value).GetCurrency(); }), MAPI_E_INVALID_TYPE);
}

TEST_F(PropValKinds, IdentifiersAreCopied)
{
    SPropValue value = Tagged(PT_CLSID);
    EXPECT_EQ(View(value).GetGuid(), GUID{});
    GUID given = IID_IMessage;
    View(value) = given;
    given = GUID{};
    EXPECT_EQ(View(value).GetGuid(), IID_IMessage);
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(&value, nullptr) = given; }), MAPI_E_INVALID_OBJECT);
    value = Tagged(PT_BINARY);
    EXPECT_EQ(ThrownBy([&] { View(value) = given; }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { View(value).GetGuid(); }), MAPI_E_INVALID_TYPE);
}

TEST_F(PropValKinds, ArraysOfEveryKindAreCopied)
{
    const FILETIME early = {1, 2};
    const FILETIME late = {3, 4};
    EXPECT_EQ(Through<std::int64_t>(PT_MV_I8, -1, 1LL << 40), (std::vector<std::int64_t>{-1, 1LL << 40}));
    EXPECT_EQ(Through<std::int64_t>(PT_MV_CURRENCY, 3, -4), (std::vector<std::int64_t>{3, -4}));
    EXPECT_EQ(Through<double>(PT_MV_DOUBLE, 1.5, -2.25), (std::vector<double>{1.5, -2.25}));
    EXPECT_EQ(Through<double>(PT_MV_APPTIME, 1.5, -2.25), (std::vector<double>{1.5, -2.25}));
    EXPECT_EQ(Through<float>(PT_MV_R4, 1.5F, -2.25F), (std::vector<float>{1.5F, -2.25F}));
    EXPECT_EQ(Through<GUID>(PT_MV_CLSID, IID_IMessage, IID_IUnknown), (std::vector<GUID>{IID_IMessage, IID_IUnknown}));
    const std::vector<FILETIME> times = Through<FILETIME>(PT_MV_SYSTIME, early, late);
    ASSERT_EQ(times.size(), 2u);
    EXPECT_EQ(times[1].dwLowDateTime, 3u);
    EXPECT_EQ(times[1].dwHighDateTime, 4u);
}

TEST_F(PropValKinds, ArraysOfAnotherTypeAreRefused)
{
    CArray<double> numbers;
    numbers.Add(1);
    SPropValue value = Tagged(PT_MV_I8);
    EXPECT_EQ(ThrownBy([&] { View(value) = numbers; }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(ThrownBy([&] { View(value).GetMV(numbers); }), MAPI_E_INVALID_TYPE);
    EXPECT_EQ(numbers.GetSize(), 1);
    value = Tagged(PT_MV_DOUBLE);
    EXPECT_EQ(ThrownBy([&] { CZebOnePropVal(&value, nullptr) = numbers; }), MAPI_E_INVALID_OBJECT);
}

TEST_F(PropValKinds, ACountWithoutElementsIsEmpty)
{
    SPropValue value = Tagged(PT_MV_DOUBLE);
    value.Value.MVdbl.cValues = 5;
    CArray<double> numbers;
    numbers.Add(1);
    View(value).GetMV(numbers);
    EXPECT_EQ(numbers.GetSize(), 0);
    View(value) = CArray<double>();
    EXPECT_EQ(value.Value.MVdbl.cValues, 0u);
}

TEST_F(PropValKinds, ValueArraysTakeEveryKind)
{
    CZebPropValArray values(3);
    values[PROP_TAG(PT_DOUBLE, 0x6701)] = 2.5;
    values[PROP_TAG(PT_CLSID, 0x6702)] = IID_IMessage;
    values[PROP_TAG(PT_UNICODE, 0x6703)].SetUtf8(Utf8);
    EXPECT_EQ(values[PROP_TAG(PT_DOUBLE, 0x6701)].GetDouble(), 2.5);
    EXPECT_EQ(values[PROP_TAG(PT_CLSID, 0x6702)].GetGuid(), IID_IMessage);
    EXPECT_STREQ(values[PROP_TAG(PT_UNICODE, 0x6703)].StringUtf8(), Utf8);
}

} // namespace zeb::test
