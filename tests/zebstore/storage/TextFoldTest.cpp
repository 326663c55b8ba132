#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/Text.h"

namespace zebstore::test
{
namespace
{

TEST(TextFold, CaseIsFoldedBeyondAscii)
{
    EXPECT_EQ(Folded("Stra\xC3\x9F"
                     "e \xC3\x84\xC3\x96",
                     TextFold::IgnoreCase),
              "stra\xC3\x9F"
              "e \xC3\xA4\xC3\xB6");
    EXPECT_EQ(Folded("\xCE\xA3\xCF\x82", TextFold::IgnoreCase), "\xCF\x83\xCF\x83"); // both sigmas
    EXPECT_EQ(Folded("\xD0\x96\xD0\xB6", TextFold::IgnoreCase), "\xD0\xB6\xD0\xB6"); // Cyrillic
    EXPECT_EQ(Folded("\xC4\x90\xC4\x91", TextFold::IgnoreCase), "\xC4\x91\xC4\x91"); // pairs side by side
    EXPECT_EQ(Folded("\xF0\x90\x90\x80", TextFold::IgnoreCase), "\xF0\x90\x90\xA8"); // beyond 16 bits
    EXPECT_EQ(Folded("AbC", TextFold::Exact), "AbC");
}

TEST(TextFold, AccentsAreLeftOutWhenAsked)
{
    EXPECT_EQ(Folded("\xC3\x89t\xC3\xA9", TextFold::IgnoreMarks), "Ete");
    EXPECT_EQ(Folded("E\xCC\x81t\xC3\xA9", TextFold::IgnoreCaseAndMarks), "ete");
    EXPECT_EQ(Folded("\xC3\x98rsted", TextFold::IgnoreCaseAndMarks), "orsted");
}

TEST(TextFold, ASortKeyStandsForTheFirstCharacters)
{
    EXPECT_EQ(SortKey(std::string(300, 'A')), std::string(SortKeyCharacters, 'a'));
    std::string accents;
    for (int i = 0; i < 300; ++i)
        accents += "\xC3\x84";
    EXPECT_EQ(SortKey(accents).size(), SortKeyCharacters * 2);
}

TEST(TextFold, EveryWideTextComesBackAsItWas)
{
    zeb::platform::WideString text;
    for (unsigned code = 1; code < 0x10000; ++code)
        text += static_cast<WCHAR>(code);
    text += static_cast<WCHAR>(0xD83D);
    text += static_cast<WCHAR>(0xDE00);
    const std::string stored = StoredFromWide(text.data(), text.size());
    EXPECT_EQ(WideFromStored(stored), text);
    const WCHAR lone[] = {0xDC00, 'a', 0xD800};
    EXPECT_EQ(WideFromStored(StoredFromWide(lone, 3)), zeb::platform::WideString(lone, 3));
}

TEST(TextFold, DamagedTextNeverReadsBeyondItsEnd)
{
    for (const std::string& damaged :
         {std::string("\xF0\x9F"), std::string("\xC3"), std::string("a\x80\xFFz"),
          std::string("\xF5\x80\x80\x80"), std::string("\xE0\x80\x80")})
    {
        const zeb::platform::WideString wide = WideFromStored(damaged);
        EXPECT_LE(wide.size(), damaged.size());
        EXPECT_NE(wide.find(static_cast<WCHAR>(0xFFFD)), zeb::platform::WideString::npos);
        EXPECT_FALSE(IsUtf8(damaged));
    }
    EXPECT_FALSE(IsUtf8("\xED\xA0\x80"));
    EXPECT_TRUE(IsUtf8("\xF0\x9F\x98\x80"));
}

TEST(TextFold, NarrowTextGoesThroughTheSystemsCodePage)
{
    const WCHAR wide[] = {0xE4, 'b'};
    const std::string narrow = zeb::platform::NarrowFromWide(wide, 2);
    EXPECT_EQ(StoredFromNarrow(narrow), "\xC3\xA4"
                                        "b");
    EXPECT_EQ(NarrowFromStored("\xC3\xA4"
                               "b"),
              narrow);
}

} // namespace
} // namespace zebstore::test
