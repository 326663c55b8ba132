// Text in the code pages of Windows.
#include "platform/codepage.h"

#include <gtest/gtest.h>

namespace
{

using zeb::platform::Utf8FromCodePage;

std::string Decoded(const std::string& bytes, unsigned codePage)
{
    std::string utf8 = "before";
    return Utf8FromCodePage(bytes, codePage, utf8) ? utf8 : "unknown";
}

TEST(CodePageTextTest, EachIsDecoded)
{
    EXPECT_EQ(Decoded("Gr\xFC\xDF\x65 \x80", 1252), "Grüße €");
    EXPECT_EQ(Decoded("\xCF\xF0\xE8", 1251), "При");
    EXPECT_EQ(Decoded("\x93\xFA\x96\x7B\xCC", 932), "日本ﾌ");
    EXPECT_EQ(Decoded("\xD6\xD0", 936), "中");
    EXPECT_EQ(Decoded("\xA4\xA4", 950), "中");
    EXPECT_EQ(Decoded("\xB0\xA1", 949), "가");
    EXPECT_EQ(Decoded("\xF0\xF2", 20866), "ПР");
    EXPECT_EQ(Decoded("\xE4\xA4", 28605), "ä€");
    EXPECT_EQ(Decoded("ma\xC3\xB1"
                      "ana \xF0\x9F\x98\x80",
                      65001),
              "mañana 😀");
    EXPECT_EQ(Decoded("plain", 20127), "plain");
}

TEST(CodePageTextTest, SixteenBitsInBothOrders)
{
    EXPECT_EQ(Decoded(std::string("\x3D\xD8\x00\xDE"
                                  "a\0",
                                  6),
                      1200),
              "😀a");
    EXPECT_EQ(Decoded(std::string("\xD8\x3D\xDE\x00\0a", 6), 1201), "😀a");
    EXPECT_EQ(Decoded(std::string("a\0b", 3), 1200), "a\xEF\xBF\xBD");
}

TEST(CodePageTextTest, InvalidBytesAreReplaced)
{
    const std::string decoded = Decoded("a\xFF"
                                        "b",
                                        65001);
    EXPECT_EQ(decoded, "a\xEF\xBF\xBD"
                       "b");
}

TEST(CodePageTextTest, NothingIsDecodedToNothing)
{
    EXPECT_EQ(Decoded("", 1252), "");
    EXPECT_EQ(Decoded("", 1200), "");
}

TEST(CodePageTextTest, AnUnknownOneIsReported)
{
    EXPECT_EQ(Decoded("a", 47110), "unknown");
    EXPECT_EQ(Decoded("", 47110), "unknown");
    EXPECT_EQ(Decoded("a", 4294967295U), "unknown");
}

} // namespace
