#include "platform/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace zeb::platform;

namespace
{

WideString Decoded(const std::string& text, LoneSurrogate rule)
{
    WideString wide(text.size(), WCHAR(0));
    wide.resize(DecodeUtf8(text, rule, wide.data()));
    return wide;
}

/// Every code point of a text with the number of its bytes.
std::vector<std::pair<char32_t, size_t>> CodePoints(const std::string& text, LoneSurrogate rule)
{
    std::vector<std::pair<char32_t, size_t>> found;
    for (size_t at = 0; at < text.size();)
    {
        const size_t begin = at;
        const char32_t code = NextCodePoint(text, at, rule);
        found.emplace_back(code, at - begin);
    }
    return found;
}

using Found = std::vector<std::pair<char32_t, size_t>>;

TEST(Utf8, AKeptSurrogateHasThreeBytes)
{
    const WCHAR lone[] = {0xDC00, 'a', 0xD800, 0xD83D, 0xDCE7, 0xD83D};
    const std::string text = Utf8FromWide(lone, 6, LoneSurrogate::Kept);
    EXPECT_EQ(text, "\xED\xB0\x80"
                    "a\xED\xA0\x80\xF0\x9F\x93\xA7\xED\xA0\xBD");
    EXPECT_EQ(Decoded(text, LoneSurrogate::Kept), WideString(lone, 6));
}

TEST(Utf8, KeptSurrogatesKeepEveryUnit)
{
    for (unsigned unit = 0; unit < 0x10000; ++unit)
    {
        const WCHAR one = static_cast<WCHAR>(unit);
        ASSERT_EQ(Decoded(Utf8FromWide(&one, 1, LoneSurrogate::Kept), LoneSurrogate::Kept), WideString(1, one)) << unit;
    }
}

TEST(Utf8, SurrogatesBecomeReplacementCharacters)
{
    const WCHAR lone[] = {0xDC00, 'a', 0xD800};
    EXPECT_EQ(Utf8FromWide(lone, 3, LoneSurrogate::Replaced), "\xEF\xBF\xBD"
                                                              "a\xEF\xBF\xBD");
    EXPECT_EQ(Decoded("\xED\xA0\x80z", LoneSurrogate::Replaced), WideString(ZEBW("\uFFFD\uFFFD\uFFFDz")));
}

TEST(Utf8, ReadsCodePointsOfEveryLength)
{
    const Found expected = {{'a', 1}, {0xE4, 2}, {0x20AC, 3}, {0x1F4E7, 4}, {0x10FFFF, 4}};
    const std::string text = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xA7\xF4\x8F\xBF\xBF";
    EXPECT_EQ(CodePoints(text, LoneSurrogate::Replaced), expected);
    EXPECT_EQ(CodePoints(text, LoneSurrogate::Kept), expected);
    std::string again;
    for (const auto& each : expected)
    {
        AppendUtf8(again, each.first);
    }
    EXPECT_EQ(again, text);
}

TEST(Utf8, InvalidSequencesEndBeforeForeignBytes)
{
    EXPECT_EQ(CodePoints("\xF0\x9F\x93z", LoneSurrogate::Kept), (Found{{0xFFFD, 3}, {'z', 1}}));
    EXPECT_EQ(CodePoints("\xE2\x82", LoneSurrogate::Kept), (Found{{0xFFFD, 2}}));
    EXPECT_EQ(CodePoints("\xC3\xC3\xA4", LoneSurrogate::Kept), (Found{{0xFFFD, 1}, {0xE4, 2}}));
    EXPECT_EQ(CodePoints("\x80\xFF", LoneSurrogate::Kept), (Found{{0xFFFD, 1}, {0xFFFD, 1}}));
    EXPECT_EQ(CodePoints("\xF4\x90", LoneSurrogate::Kept), (Found{{0xFFFD, 1}, {0xFFFD, 1}})) << "above U+10FFFF";
    EXPECT_EQ(CodePoints("\xE0\x80", LoneSurrogate::Kept), (Found{{0xFFFD, 1}, {0xFFFD, 1}})) << "overlong";
    EXPECT_EQ(CodePoints("\xF0\x80", LoneSurrogate::Kept), (Found{{0xFFFD, 1}, {0xFFFD, 1}})) << "overlong";
    EXPECT_EQ(CodePoints("\xED\xA0\x80", LoneSurrogate::Kept), (Found{{0xD800, 3}}));
    EXPECT_EQ(CodePoints("\xED\xA0\x80", LoneSurrogate::Replaced), (Found{{0xFFFD, 1}, {0xFFFD, 1}, {0xFFFD, 1}}));
}

TEST(Utf8, SequencesAndSurrogatesDecideOnValidity)
{
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_TRUE(IsUtf8("a\xC3\xA4\xF0\x9F\x98\x80"));
    EXPECT_TRUE(IsUtf8("\xEF\xBF\xBD")) << "a replacement character is a character";
    for (const char* invalid :
         {"\xF0\x9F", "\xC3", "a\x80z", "\xF5\x80\x80\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF0\x80\x80\x80"})
    {
        EXPECT_FALSE(IsUtf8(invalid)) << invalid;
    }
}

} // namespace
