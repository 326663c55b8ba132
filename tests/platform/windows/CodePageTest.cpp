// Truncates text of code pages with characters of one or two bytes.
#include "platform/windows/text.h"

#include <gtest/gtest.h>

#include <string>

using zeb::platform::PrefixInCodePage;

namespace
{

TEST(CodePage, TwoByteCharactersStayWhole)
{
    constexpr UINT ShiftJis = 932;
    const std::string text = "a\x93\xFA\x96\x7B"; // "a", then two characters of two bytes each
    const size_t expected[] = {0, 1, 1, 3, 3, 5, 5};
    for (size_t limit = 0; limit < 7; ++limit)
    {
        EXPECT_EQ(PrefixInCodePage(ShiftJis, text.data(), text.size(), limit), expected[limit]) << limit;
    }
}

TEST(CodePage, SingleByteTextIsCutAnywhere)
{
    EXPECT_EQ(PrefixInCodePage(1252, "\xFC\xFC\xFC", 3, 2), 2u);
    EXPECT_EQ(PrefixInCodePage(1252, "\xFC", 1, 2), 1u);
}

TEST(CodePage, Utf8IsCutBetweenCharacters)
{
    EXPECT_EQ(PrefixInCodePage(CP_UTF8, "a\xC3\xBC", 3, 2), 1u);
}

} // namespace
