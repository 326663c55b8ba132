// Each code page of Windows that iconv knows by another name.
#include "platform/codepage.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace
{

struct Encoded
{
    unsigned codePage;
    const char* bytes;
    const char* text;
};

void PrintTo(const Encoded& encoded, std::ostream* out)
{
    *out << encoded.codePage;
}

class CharacterSet : public ::testing::TestWithParam<Encoded>
{
};

TEST_P(CharacterSet, IsDecoded)
{
    std::string text;
    EXPECT_TRUE(zeb::platform::Utf8FromCodePage(GetParam().bytes, GetParam().codePage, text));
    EXPECT_EQ(text, GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    All, CharacterSet,
    ::testing::Values(Encoded{21866, "\xA6\xA7", "ії"}, Encoded{50220, "\x1B$BF|K\\\x1B(B", "日本"},
                      Encoded{50221, "\x1B$BF|K\\\x1B(B", "日本"}, Encoded{50222, "\x1B$BF|K\\\x1B(B", "日本"},
                      Encoded{50225, "\x1B$)C\x0E\x30\x21\x0F", "가"}, Encoded{51932, "\xC6\xFC\xCB\xDC", "日本"},
                      Encoded{51936, "\xD6\xD0", "中"}, Encoded{51949, "\xB0\xA1", "가"},
                      Encoded{54936, "\xD6\xD0\x95\x32\x82\x36", "中𠀀"}, Encoded{65000, "a+ZeU-b", "a日b"}),
    [](const auto& info) { return std::to_string(info.param.codePage); });

TEST(CharacterSet, LongTextIsWhole)
{
    std::string euros;
    for (int i = 0; i < 5000; ++i)
    {
        euros += "€";
    }
    std::string text;
    EXPECT_TRUE(zeb::platform::Utf8FromCodePage(std::string(5000, '\x80'), 1252, text));
    EXPECT_EQ(text, euros);
}

} // namespace
