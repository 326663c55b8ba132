#include "tests/zebapi/values/PropVal.h"

#include "platform/datetime.h"
#include "platform/text.h"

#include <cstdlib>
#include <string>

namespace zeb::test
{

namespace
{

using PropValText = PropValTest;

using platform::WideString;

const ULONG printableTypes[] = {PT_I2, PT_LONG, PT_BOOLEAN, PT_I8, PT_STRING8, PT_UNICODE, PT_SYSTIME, PT_BINARY};
const ULONG otherTypes[] = {PT_R4,    PT_DOUBLE,  PT_CURRENCY,   PT_APPTIME, PT_ERROR,      PT_OBJECT,
                            PT_CLSID, PT_MV_LONG, PT_MV_STRING8, PT_NULL,    PT_UNSPECIFIED};

} // namespace

TEST_F(PropValText, NumbersAreDecimalWithTheirSign)
{
    SPropValue value = Tagged(PT_I2);
    value.Value.i = -5;
    EXPECT_EQ(View(value).String(false), "-5");
    value = Tagged(PT_LONG);
    value.Value.l = static_cast<LONG>(0x80000000);
    EXPECT_EQ(View(value).String(false), "-2147483648");
    value = Tagged(PT_I8);
    value.Value.li.QuadPart = INT64_MIN;
    EXPECT_EQ(View(value).String(false), "-9223372036854775808");
}

TEST_F(PropValText, AnyNonzeroBooleanIsTrue)
{
    SPropValue value = Tagged(PT_BOOLEAN);
    value.Value.b = 2;
    EXPECT_EQ(View(value).String(false), "true");
    value.Value.b = 0;
    EXPECT_EQ(View(value).String(false), "false");
}

TEST_F(PropValText, ErrorsPrintOnlyWhenAskedFor)
{
    SPropValue value = Tagged(PT_ERROR);
    EXPECT_EQ(ThrownBy([&] { View(value).String(false); }), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(View(value).String(true), "<error>");
    EXPECT_EQ(View(value).StringW(true), ZEBW("<error>"));
    EXPECT_FALSE(View(value).StringConversionPossible());
}

TEST_F(PropValText, OnlyEightTypesHaveAText)
{
    for (ULONG type : printableTypes)
    {
        SPropValue value = Tagged(type);
        EXPECT_TRUE(View(value).StringConversionPossible()) << type;
        EXPECT_EQ(ThrownBy([&] { View(value).String(false); }), S_OK) << type;
    }
    for (ULONG type : otherTypes)
    {
        SPropValue value = Tagged(type);
        EXPECT_FALSE(View(value).StringConversionPossible()) << type;
        EXPECT_EQ(ThrownBy([&] { View(value).String(false); }), MAPI_E_NO_SUPPORT) << type;
    }
}

TEST_F(PropValText, BinariesAreHexadecimal)
{
    SPropValue value = Tagged(PT_BINARY);
    View(value) = CZebBinary("00abFF");
    EXPECT_EQ(View(value).String(false), "00ABFF");
    EXPECT_EQ(View(value).StringW(false), ZEBW("00ABFF"));
}

TEST_F(PropValText, BinariesWithoutATextAreRefused)
{
    BYTE byte = 1;
    SPropValue value = Tagged(PT_BINARY);
    value.Value.bin = {0x40000000, &byte};
    EXPECT_EQ(ThrownBy([&] { View(value).String(false); }), MAPI_E_NOT_ENOUGH_MEMORY);
    EXPECT_EQ(ThrownBy([&] { View(value).StringW(false); }), MAPI_E_NOT_ENOUGH_MEMORY);
}

TEST_F(PropValText, WideTextIsNarrowed)
{
    const WideString wide = ZEBW("gr\u00fcn");
    const std::string narrow = platform::NarrowFromWide(wide.data(), wide.size());
    SPropValue value = Tagged(PT_STRING8);
    View(value) = narrow.c_str();
    EXPECT_EQ(View(value).String(false), narrow.c_str());
    EXPECT_EQ(View(value).StringW(false), wide.c_str());
    CStringW widened = View(value);
    EXPECT_EQ(widened, wide.c_str());
    CStringA same = View(value);
    EXPECT_EQ(same, narrow.c_str());

    SPropValue unicode = Tagged(PT_UNICODE);
    View(unicode) = wide.c_str();
    EXPECT_EQ(View(unicode).String(false), narrow.c_str());
    EXPECT_EQ(View(unicode).StringW(false), wide.c_str());
    CStringA narrowed = View(unicode);
    EXPECT_EQ(narrowed, narrow.c_str());
}

TEST_F(PropValText, UnconvertibleTextLosesNothingAfterIt)
{
    const WCHAR lone[] = {'a', 0xD800, 'b', 0};
    SPropValue value = Tagged(PT_UNICODE);
    View(value) = lone;
    const CStringA text = View(value).String(false);
    EXPECT_EQ(text.Left(1), "a");
    EXPECT_EQ(text.Right(1), "b");
    EXPECT_GT(text.GetLength(), 2);
    EXPECT_EQ(View(value).StringW(false), lone) << "the text itself, by no other form";
}

TEST_F(PropValText, NullTextReadsAsEmpty)
{
    SPropValue value = Tagged(PT_STRING8);
    EXPECT_EQ(View(value).String(false), "");
    CStringA text = View(value);
    CStringW wide = View(value);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(wide.IsEmpty());
    EXPECT_EQ(static_cast<const char*>(View(value)), nullptr);

    value = Tagged(PT_UNICODE);
    EXPECT_EQ(View(value).String(false), "");
    EXPECT_EQ(View(value).StringW(false).GetLength(), 0);
    CStringA narrowed = View(value);
    EXPECT_TRUE(narrowed.IsEmpty());
    EXPECT_EQ(static_cast<const WCHAR*>(View(value)), nullptr);
}

TEST_F(PropValText, DatesAreLocalDateAndTime)
{
    SPropValue value = Tagged(PT_SYSTIME);
    // 2001-02-03 04:05:06 UTC and seven tenths of a second.
    const std::uint64_t ticks = 126256683067000000;
    value.Value.ft = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    const std::optional<std::string> expected = platform::LocalDateText(value.Value.ft);
    ASSERT_TRUE(expected.has_value());
    EXPECT_EQ(View(value).String(false), expected->c_str());
    // The second is not rounded up. (The minute depends on where this runs.)
    EXPECT_NE(expected->find(":06"), std::string::npos) << *expected;
}

TEST_F(PropValText, DatesOutsideTheCalendarSaySo)
{
    SPropValue value = Tagged(PT_SYSTIME);
    value.Value.ft = {0xFFFFFFFF, 0xFFFFFFFF};
    EXPECT_EQ(View(value).String(false), "Invalid DateTime");
    EXPECT_EQ(View(value).StringW(false), ZEBW("Invalid DateTime"));
}

} // namespace zeb::test
