#include "platform/text.h"

#include <gtest/gtest.h>

#include <string>

using namespace zeb::platform;

namespace
{

std::string ThereAndBack(const std::string& utf8)
{
    const WideString wide = WideFromUtf8(utf8.data(), utf8.size());
    return Utf8FromWide(wide.data(), wide.size());
}

TEST(Text, CharactersOfEveryLengthRoundTrip)
{
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xA7z";
    const WideString wide = WideFromUtf8(text.data(), text.size());
    EXPECT_EQ(wide, WideString(ZEBW("a\u00E4\u20AC\U0001F4E7z")));
    EXPECT_EQ(ThereAndBack(text), text);
}

TEST(Text, InvalidBytesLoseNothingAfterThem)
{
    const std::string mark = "\xEF\xBF\xBD";
    EXPECT_EQ(ThereAndBack("a\xFFz"), "a" + mark + "z");
    EXPECT_EQ(ThereAndBack("\xE2\x82z"), mark + "z");
    EXPECT_EQ(ThereAndBack("\xE2\x82"), mark);
    EXPECT_EQ(ThereAndBack("\xC0\x80z"), mark + mark + "z") << "overlong";
    EXPECT_EQ(ThereAndBack("\xED\xA0\x80z"), mark + mark + mark + "z") << "a surrogate";
    EXPECT_EQ(ThereAndBack("\xF4\x90\x80\x80z"), mark + mark + mark + mark + "z") << "beyond U+10FFFF";
}

TEST(Text, LoneSurrogatesLoseNothingAfterThem)
{
    const WCHAR text[] = {'a', 0xD83D, 'b', 0xDCE7, 0xD83D, 0xDCE7, 0xD83D};
    EXPECT_EQ(Utf8FromWide(text, 7), "a\xEF\xBF\xBD"
                                     "b\xEF\xBF\xBD\xF0\x9F\x93\xA7\xEF\xBF\xBD");
}

TEST(Text, CharactersOfValueZeroAreConverted)
{
    const std::string text("a\0b", 3);
    EXPECT_EQ(ThereAndBack(text), text);
    const WideString wide = WideFromNarrow(text.data(), text.size());
    EXPECT_EQ(NarrowFromWide(wide.data(), wide.size()), text);
}

TEST(Text, NarrowAsciiIsTheSameEverywhere)
{
    const std::string text = "Subject: 100% \\\"";
    const WideString wide = WideFromNarrow(text.data(), text.size());
    EXPECT_EQ(wide, WideString(ZEBW("Subject: 100% \\\"")));
    EXPECT_EQ(NarrowFromWide(wide.data(), wide.size()), text);
    EXPECT_EQ(NarrowFromWide(nullptr, 0), "");
    EXPECT_TRUE(WideFromNarrow(nullptr, 0).empty());
}

TEST(Text, UnconvertibleTextLosesNothingAfterIt)
{
    const WCHAR text[] = {'a', 0x0416, 0xD83D, 'z'};
    const std::string narrow = NarrowFromWide(text, 4);
    EXPECT_EQ(narrow.front(), 'a');
    EXPECT_EQ(narrow.back(), 'z');
    EXPECT_GE(narrow.size(), 4u);
}

TEST(Text, LengthStopsAtTheTerminator)
{
    EXPECT_EQ(WideLength(ZEBW("")), 0u);
    EXPECT_EQ(WideLength(ZEBW("ab\U0001F4E7")), 4u);
}

TEST(Text, UpperCaseIsUnitByUnit)
{
    EXPECT_EQ(UpperWide('a'), 'A');
    EXPECT_EQ(UpperWide('1'), '1');
    EXPECT_EQ(UpperWide(0x00E4), 0x00C4);
    EXPECT_EQ(UpperWide(0x0436), 0x0416);
    EXPECT_EQ(UpperWide(0xD83D), 0xD83D);
}

TEST(Text, APrefixNeverCutsACharacter)
{
    const std::string text = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x98\x80z"; // 1, 2, 3, 4 and 1 bytes
    const size_t expected[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
    for (size_t limit = 0; limit < std::size(expected); ++limit)
    {
        EXPECT_EQ(Utf8Prefix(text.data(), text.size(), limit), expected[limit]) << limit;
    }
    const std::string noBeginning(10, '\x80');
    EXPECT_EQ(Utf8Prefix(noBeginning.data(), noBeginning.size(), 7), 7u) << "no UTF-8 is cut as it comes";
    EXPECT_EQ(Utf8Prefix(noBeginning.data(), noBeginning.size(), 2), 2u);
}

} // namespace
