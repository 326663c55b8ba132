#include "tests/zebstore/storage/Storage.h"

#include "zebstore/storage/Text.h"

#include <random>

namespace zebstore::test
{
namespace
{

std::string Utf8(std::uint32_t code)
{
    WCHAR units[2] = {static_cast<WCHAR>(code), 0};
    if (code < 0x10000)
    {
        return StoredFromWide(units, 1);
    }
    units[0] = static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
    units[1] = static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
    return StoredFromWide(units, 2);
}

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

// Runs of ASCII are folded at once; a character alone is a run of its own.
TEST(TextFold, RunsFoldAsTheirCharacters)
{
    const std::uint32_t others[] = {0xC9, 0x301, 0xDF, 0x130, 0x3A3, 0x416, 0xFB01, 0x4E2D, 0x10400, 0xD800};
    std::mt19937 random(5);
    for (int round = 0; round < 2000; ++round)
    {
        std::vector<std::string> characters;
        for (size_t count = random() % 400; characters.size() < count;)
        {
            characters.push_back(random() % 12 == 0 ? Utf8(others[random() % 10])
                                                    : std::string(1, char(random() % 128)));
            // Bytes that are no text are read as one character each.
            characters.back() += random() % 50 == 0 ? "\xFF" : "";
        }
        std::string text;
        for (const std::string& each : characters)
        {
            text += each;
        }
        for (const TextFold fold : {TextFold::IgnoreCase, TextFold::IgnoreMarks, TextFold::IgnoreCaseAndMarks})
        {
            std::string expected;
            for (const std::string& each : characters)
            {
                expected += Folded(each, fold);
            }
            ASSERT_EQ(Folded(text, fold), expected) << round;
        }
    }
}

TEST(TextFold, SortKeysCountCharactersOfRuns)
{
    std::mt19937 random(6);
    for (int round = 0; round < 500; ++round)
    {
        std::string text, expected;
        for (size_t i = 0; i < 300; ++i)
        {
            const std::string character = random() % 20 == 0 ? Utf8(0xC9) : std::string(1, char('A' + random() % 40));
            text += character;
            expected += i < SortKeyCharacters ? Folded(character, TextFold::IgnoreCase) : "";
        }
        ASSERT_EQ(SortKey(text), expected) << round;
    }
}

TEST(TextFold, AccentsAreLeftOutWhenAsked)
{
    EXPECT_EQ(Folded("\xC3\x89t\xC3\xA9", TextFold::IgnoreMarks), "Ete");
    EXPECT_EQ(Folded("E\xCC\x81t\xC3\xA9", TextFold::IgnoreCaseAndMarks), "ete");
    EXPECT_EQ(Folded("\xC3\x98rsted", TextFold::IgnoreCaseAndMarks), "orsted");
}

// So a text that is found in another under any fold is found in it in the widest one, which is what the text index needs.
TEST(TextFold, WidestFoldingCoversEveryFold)
{
    int wrong = 0;
    for (std::uint32_t code = 0; code < 0x110000 && wrong < 20; ++code)
    {
        const std::string text = Utf8(code);
        const std::u32string widest = WidestFolded(text);
        EXPECT_LE(widest.size(), 1u) << code;
        for (const TextFold fold : {TextFold::IgnoreCase, TextFold::IgnoreMarks, TextFold::IgnoreCaseAndMarks})
        {
            if (WidestFolded(Folded(text, fold)) != widest)
            {
                ++wrong;
                ADD_FAILURE() << "U+" << std::hex << code << " under fold " << static_cast<int>(fold);
            }
        }
    }
    EXPECT_EQ(WidestFolded("a\xCD\x85\xCE\xB9z"), U"az"); // the mark and the letter iota
    EXPECT_EQ(WidestFolded(std::string("a\0b", 3)), U"a\uFFFDb");
}

// Sort keys in files are made by this folding: another result needs another schema version.
TEST(TextFold, FoldingMatchesTheFilesSortKeys)
{
    std::uint64_t hash = 14695981039346656037u; // FNV-1a over all folded code points
    std::uint64_t folding = 0;
    for (std::uint32_t code = 0; code < 0x110000; ++code)
    {
        if (code >= 0xD800 && code <= 0xDFFF)
        {
            continue;
        }
        const std::string text = Utf8(code);
        const std::string folded = Folded(text, TextFold::IgnoreCase);
        folding += folded != text;
        for (const char byte : folded)
        {
            hash = (hash ^ static_cast<unsigned char>(byte)) * 1099511628211u;
        }
    }
    EXPECT_STREQ(UnicodeVersion(), "15.0.0");
    EXPECT_EQ(folding, 1454u);
    EXPECT_EQ(hash, 4538059348495901805u);
}

TEST(TextFold, LettersWithSequencesFoldSimply)
{
    EXPECT_EQ(Folded(Utf8(0x1E9E), TextFold::IgnoreCase), Utf8(0xDF));
    EXPECT_EQ(Folded(Utf8(0x1F88), TextFold::IgnoreCase), Utf8(0x1F80));
    EXPECT_EQ(Folded(Utf8(0x130), TextFold::IgnoreCase), Utf8(0x130));
    EXPECT_EQ(Folded(Utf8(0x13A0), TextFold::IgnoreCase), Utf8(0x13A0)); // Cherokee folds to capitals
    EXPECT_EQ(Folded(Utf8(0xAB70), TextFold::IgnoreCase), Utf8(0x13A0));
    EXPECT_EQ(Folded(Utf8(0x17F), TextFold::IgnoreCase), "s");
}

TEST(TextFold, BaseLettersFollowCanonicalDecompositions)
{
    EXPECT_EQ(Folded(Utf8(0x1EA4), TextFold::IgnoreMarks), "A");                      // two marks
    EXPECT_EQ(Folded(Utf8(0x622), TextFold::IgnoreMarks), Utf8(0x627));               // Arabic
    EXPECT_EQ(Folded(Utf8(0x5D0) + Utf8(0x5B8), TextFold::IgnoreMarks), Utf8(0x5D0)); // Hebrew with a point
    EXPECT_EQ(Folded(Utf8(0x439), TextFold::IgnoreMarks), Utf8(0x438));               // Cyrillic
    EXPECT_EQ(Folded(Utf8(0xAC00), TextFold::IgnoreMarks),
              Utf8(0xAC00));                                     // a Hangul syllable is more than one letter
    EXPECT_EQ(Folded(Utf8(0x1112B), TextFold::IgnoreMarks), ""); // a mark beyond 16 bits
    EXPECT_EQ(Folded(Utf8(0xDF), TextFold::IgnoreMarks), Utf8(0xDF));
    EXPECT_EQ(Folded(Utf8(0x141) + Utf8(0x111) + Utf8(0x167), TextFold::IgnoreCaseAndMarks), "ldt");
    EXPECT_EQ(Folded("\xED\xA0\x80", TextFold::IgnoreCaseAndMarks), "\xED\xA0\x80"); // a lone surrogate
}

TEST(TextFold, SortKeysHoldTheFirstCharacters)
{
    EXPECT_EQ(SortKey(std::string(300, 'A')), std::string(SortKeyCharacters, 'a'));
    std::string accents;
    for (int i = 0; i < 300; ++i)
    {
        accents += "\xC3\x84";
    }
    EXPECT_EQ(SortKey(accents).size(), SortKeyCharacters * 2);
}

TEST(TextFold, EveryWideTextComesBack)
{
    zeb::platform::WideString text;
    for (unsigned code = 1; code < 0x10000; ++code)
    {
        text += static_cast<WCHAR>(code);
    }
    text += static_cast<WCHAR>(0xD83D);
    text += static_cast<WCHAR>(0xDE00);
    const std::string stored = StoredFromWide(text.data(), text.size());
    EXPECT_EQ(WideFromStored(stored), text);
    const WCHAR lone[] = {0xDC00, 'a', 0xD800};
    EXPECT_EQ(WideFromStored(StoredFromWide(lone, 3)), zeb::platform::WideString(lone, 3));
}

TEST(TextFold, DamagedTextIsReadWithinBounds)
{
    for (const std::string& damaged : {std::string("\xF0\x9F"), std::string("\xC3"), std::string("a\x80\xFFz"),
                                       std::string("\xF5\x80\x80\x80"), std::string("\xE0\x80\x80")})
    {
        const zeb::platform::WideString wide = WideFromStored(damaged);
        EXPECT_LE(wide.size(), damaged.size());
        EXPECT_NE(wide.find(static_cast<WCHAR>(0xFFFD)), zeb::platform::WideString::npos);
    }
}

TEST(TextFold, NarrowTextUsesTheCodePage)
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
