#include "platform/posix/regfile.h"

#include "platform/text.h"

#include <gtest/gtest.h>

#include <string>

using namespace zeb::platform::regfile;

namespace
{

const std::string Header = "Windows Registry Editor Version 5.00\r\n\r\n";

std::string Utf16(const std::string& text, bool mark = true)
{
    std::string bytes = mark ? "\xFF\xFE" : "";
    for (const WCHAR unit : zeb::platform::WideFromUtf8(text.data(), text.size()))
    {
        bytes += static_cast<char>(unit & 0xFF);
        bytes += static_cast<char>(unit >> 8);
    }
    return bytes;
}

/// The text of a value in [HKEY_CURRENT_USER\K] after parsing `body` there.
std::optional<std::string> TextOf(const std::string& body, const char* name = "v")
{
    Key tree = Parse(Header + "[HKEY_CURRENT_USER\\K]\r\n" + body);
    const Value* value = tree.Find("HKEY_CURRENT_USER\\K")->FindValue(name);
    return value == nullptr ? std::nullopt : value->AsText();
}

struct Refusal
{
    const char* name;
    const char* text; ///< the text after the header's two lines
    size_t line;
    const char* words;
};

void PrintTo(const Refusal& refusal, std::ostream* out)
{
    *out << refusal.name;
}

class RegFileRefusal : public ::testing::TestWithParam<Refusal>
{
};

TEST_P(RegFileRefusal, NamesTheLineAndTheMistake)
{
    try
    {
        Parse(Header + GetParam().text);
        FAIL() << "was accepted";
    }
    catch (const SyntaxError& error)
    {
        EXPECT_EQ(error.Line(), GetParam().line);
        EXPECT_STREQ(error.what(), GetParam().words);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, RegFileRefusal,
    ::testing::Values(
        Refusal{"KeyWithoutEnd", "[HKEY_CURRENT_USER\\K\r\n", 3, "a key's line does not end with ']'"},
        Refusal{"UnknownRoot", "[HKLM\\K]\n", 3, "unknown registry root 'HKLM'"},
        Refusal{"NoRoot", "[]\n", 3, "unknown registry root ''"},
        Refusal{"EmptyName", "[HKEY_CURRENT_USER\\\\K]\n", 3, "a key has an empty name"},
        Refusal{"TrailingBackslash", "[HKEY_CURRENT_USER\\K\\]\n", 3, "a key has an empty name"},
        Refusal{"ValueBeforeKey", "\n\"a\"=\"b\"\n", 4, "a value precedes the first key"},
        Refusal{"ValueBelowDeletedKey", "[-HKEY_CURRENT_USER\\K]\n@=\"b\"\n", 4, "a value follows a deleted key"},
        Refusal{"NeitherKeyNorValue", "[HKEY_CURRENT_USER\\K]\nhello\n", 4,
                "a line is neither a key, a value nor a comment"},
        Refusal{"NoEquals", "[HKEY_CURRENT_USER\\K]\n\"a\" \"b\"\n", 4, "no '=' after the name of the value 'a'"},
        Refusal{"TextWithoutEnd", "[HKEY_CURRENT_USER\\K]\n\n\"a\"=\"b\n", 5, "a quoted text has no closing quote"},
        Refusal{"NameWithoutEnd", "[HKEY_CURRENT_USER\\K]\n\"a\n", 4, "a quoted text has no closing quote"},
        Refusal{"EscapeAtEnd", "[HKEY_CURRENT_USER\\K]\n\"a\"=\"b\\", 4, "a quoted text has no closing quote"},
        Refusal{"SingleBackslash", "[HKEY_CURRENT_USER\\K]\n\"a\"=\"C:\\mail\"\n", 4,
                "a backslash inside quotes must be written as \\\\"},
        Refusal{"TextAfterText", "[HKEY_CURRENT_USER\\K]\n\"a\"=\"b\" c\n", 4, "unexpected text after the value 'a'"},
        Refusal{"TextAfterDeletion", "[HKEY_CURRENT_USER\\K]\n\"a\"=-1\n", 4, "unexpected text after the value 'a'"},
        Refusal{"NoKind", "[HKEY_CURRENT_USER\\K]\n\"a\"=17\n", 4, "the value 'a' has no kind"},
        Refusal{"Nothing", "[HKEY_CURRENT_USER\\K]\n\"a\"=\n", 4, "the value 'a' has no kind"},
        Refusal{"ForeignKind", "[HKEY_CURRENT_USER\\K]\n\"a\"=h_x:17\n", 4, "the value 'a' has no kind"},
        Refusal{"ForeignDword", "[HKEY_CURRENT_USER\\K]\n\"a\"=dword:12g\n", 4,
                "the value 'a' is not a dword of up to eight hexadecimal digits"},
        Refusal{"ForeignCapital", "[HKEY_CURRENT_USER\\K]\n\"a\"=dword:1G\n", 4,
                "the value 'a' is not a dword of up to eight hexadecimal digits"},
        Refusal{"ForeignPunctuation", "[HKEY_CURRENT_USER\\K]\n\"a\"=dword:1/\n", 4,
                "the value 'a' is not a dword of up to eight hexadecimal digits"},
        Refusal{"LongDword", "[HKEY_CURRENT_USER\\K]\n\"a\"=dword:123456789\n", 4,
                "the value 'a' is not a dword of up to eight hexadecimal digits"},
        Refusal{"EmptyDword", "[HKEY_CURRENT_USER\\K]\n\"a\"=dword:\n", 4,
                "the value 'a' is not a dword of up to eight hexadecimal digits"},
        Refusal{"ForeignHex", "[HKEY_CURRENT_USER\\K]\n\"a\"=hex:0g\n", 4,
                "the value 'a' is not a list of hexadecimal bytes"},
        Refusal{"WideHex", "[HKEY_CURRENT_USER\\K]\n\"a\"=hex:012\n", 4,
                "the value 'a' is not a list of hexadecimal bytes"},
        Refusal{"HoleInHex", "[HKEY_CURRENT_USER\\K]\n\"a\"=hex:01,,02\n", 4,
                "the value 'a' is not a list of hexadecimal bytes"},
        Refusal{"HexGoesOnNowhere", "[HKEY_CURRENT_USER\\K]\n\"a\"=hex:01,\\\n", 4,
                "the value continues after the end of the file"},
        Refusal{"NoUtf8", "[HKEY_CURRENT_USER\\K]\n\"a\"=\"\xE4\"\n", 4, "the text is not UTF-8"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(RegFile, AnotherFirstLineIsRefused)
{
    try
    {
        Parse("[HKEY_CURRENT_USER\\K]\n");
        FAIL() << "was accepted";
    }
    catch (const SyntaxError& error)
    {
        EXPECT_EQ(error.Line(), 1u);
        EXPECT_STREQ(error.what(),
                     "the first line is neither \"Windows Registry Editor Version 5.00\" nor \"REGEDIT4\"");
    }
}

TEST(RegFile, TruncatedUtf16IsRefused)
{
    EXPECT_THROW(Parse(Utf16(Header) + "x"), SyntaxError);
    EXPECT_THROW(Parse(Utf16(Header) + std::string("\x00\xD8", 2)), SyntaxError);
}

TEST(RegFile, NoBytesAreAnEmptyRegistry)
{
    EXPECT_TRUE(Parse("").keys.empty());
}

TEST(RegFile, EscapesInsideQuotesAreRead)
{
    EXPECT_EQ(TextOf("\"v\"=\"C:\\\\a \\\"b\\\"\"\r\n"), "C:\\a \"b\"");
    EXPECT_EQ(TextOf("\"a\\\\\\\"b\"=\"x\"\r\n", "a\\\"b"), "x");
}

TEST(RegFile, AnAtNamesTheDefaultValue)
{
    EXPECT_EQ(TextOf("@=\"x\"\n", ""), "x");
}

TEST(RegFile, CommentsAndBlankLinesSayNothing)
{
    EXPECT_EQ(TextOf("; \"v\"=\"a\"\n\n \t\n\"v\"=\"b\" ; c\n"), "b");
    EXPECT_EQ(TextOf("\"v\"=\"a;b\"\n"), "a;b");
}

TEST(RegFile, ByteTextIsReadAsText)
{
    EXPECT_EQ(TextOf("\"v\"=hex(2):25,00,41,00,25,00,00,00\n"), "%A%");
    EXPECT_EQ(TextOf("\"v\"=hex(1):41,00,\\\r\n  42,00,\\\r\n  00,00\r\n"), "AB");
    EXPECT_EQ(TextOf("\"v\"=hex(7):41,00,00,00,00,00\n"), std::nullopt);
}

TEST(RegFile, OldFormatBytesAreNarrowText)
{
    Key tree = Parse("REGEDIT4\n\n[HKEY_CURRENT_USER\\K]\n\"v\"=hex(2):25,41,00\n\"b\"=hex:25,41\n");
    const Key* key = tree.Find("HKEY_CURRENT_USER\\K");
    EXPECT_EQ(key->FindValue("v")->AsText(), "%A");
    EXPECT_EQ(key->FindValue("b")->AsBinary(), (std::vector<unsigned char>{0x25, 0x41}));
}

TEST(RegFile, OldFormatListsOfTextsAreWide)
{
    Key tree =
        Parse("REGEDIT4\n\n[HKEY_CURRENT_USER\\K]\n\"s\"=hex(1):41,0\n\"m\"=hex(7):41,0,42,0,0\n\"q\"=hex(b):1,2\n");
    EXPECT_EQ(Write(tree), Utf16(Header + "[HKEY_CURRENT_USER\\K]\r\n\"s\"=hex(1):41,00,00,00\r\n"
                                          "\"m\"=hex(7):41,00,00,00,42,00,00,00,00,00\r\n\"q\"=hex(b):01,02\r\n\r\n"));
}

TEST(RegFile, KindsOfAnyLettersAndDigitsAreKept)
{
    const std::string text = Header + "[HKEY_CURRENT_USER\\K]\r\n\"a\"=Q9word:x\r\n\"b\"=z:Y\r\n\r\n";
    EXPECT_EQ(Write(Parse(text)), text);
}

TEST(RegFile, UnknownKindsAreWrittenBack)
{
    const std::string text = Header + "[HKEY_CURRENT_USER\\K]\r\n\"a\"=hex(b):01,02\r\n\"b\"=qword:0011\r\n"
                                      "\"c\"=dword:0000001f\r\n\"d\"=hex(7):41,00,00,00,00,00\r\n\r\n";
    EXPECT_EQ(Write(Parse(text)), Utf16(text));
}

TEST(RegFile, UnknownKindsAreNeverBroken)
{
    // The blank after the comma would be lost at the beginning of a line.
    const std::string text = Header + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=hexx:" + std::string(80, '1') + ", 2\r\n\r\n";
    EXPECT_EQ(Write(Parse(text)), text);
}

TEST(RegFile, TrailingBlanksOfUnknownKindsVanish)
{
    EXPECT_EQ(Write(Parse(Header + "[HKEY_CURRENT_USER\\K]\n\"v\"=x:1 \\\n  \n")),
              Header + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=x:1\r\n\r\n");
}

TEST(RegFile, DeletionsAffectWhatPrecedesThem)
{
    Key tree =
        Parse(Header + "[HKEY_CURRENT_USER\\A\\B]\n\"v\"=\"1\"\n\"w\"=\"2\"\n[HKEY_CURRENT_USER\\C]\n"
                       "[-hkey_current_user\\c]\n[HKEY_CURRENT_USER\\A\\B]\n\"V\"=-\n[-HKEY_CURRENT_USER\\No]\n");
    EXPECT_EQ(tree.Find("HKEY_CURRENT_USER\\C"), nullptr);
    EXPECT_EQ(tree.Find("HKEY_CURRENT_USER\\A\\B")->FindValue("v"), nullptr);
    EXPECT_EQ(tree.Find("HKEY_CURRENT_USER\\A\\B")->FindValue("w")->AsText(), "2");
}

TEST(RegFile, KeysDifferingInCaseAreOne)
{
    Key tree = Parse(Header + "[HKEY_CURRENT_USER\\B]\n\"x\"=\"1\"\n[HKEY_CURRENT_USER\\A]\n[HKEY_CURRENT_USER\\b]\n"
                              "\"X\"=\"2\"\n");
    const Key* user = tree.Find("HKEY_CURRENT_USER");
    ASSERT_EQ(user->keys.size(), 2u);
    EXPECT_EQ(user->keys[0]->name, "B");
    EXPECT_EQ(user->keys[0]->FindValue("x")->AsText(), "2");
    EXPECT_EQ(user->keys[1]->name, "A");
}

TEST(RegFile, NamesOutsideAsciiCompareWithoutCase)
{
    EXPECT_TRUE(SameName("B\xC3\xB6RSE", "b\xC3\x96rse"));
    EXPECT_TRUE(SameName("\xD0\xB6", "\xD0\x96"));
    EXPECT_FALSE(SameName("\xC3\xB6", "o"));
    EXPECT_FALSE(SameName("\xC3\xB6", "\xC3\xA4"));
}

TEST(RegFile, EveryEncodingReadsTheSame)
{
    const std::string text = Header + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=\"\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xA7\"\r\n";
    for (const std::string& bytes : {text, "\xEF\xBB\xBF" + text, Utf16(text)})
    {
        Key tree = Parse(bytes);
        EXPECT_EQ(tree.Find("HKEY_CURRENT_USER\\K")->FindValue("v")->AsText(), "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x93\xA7");
    }
}

TEST(RegFile, OnlyAsciiIsWrittenPlain)
{
    Key tree;
    tree.Make("HKEY_CURRENT_USER\\K").SetValue(TextValue("v", "a"));
    EXPECT_EQ(Write(tree), Header + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=\"a\"\r\n\r\n");
    tree.Make("HKEY_CURRENT_USER\\K").SetValue(TextValue("v", "\xC3\xA4"));
    EXPECT_EQ(Write(tree), Utf16(Header + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=\"\xC3\xA4\"\r\n\r\n"));
    for (const std::string value : {"\"\xC3\xA4\"=\"a\"", "\"a\"=x:\xC3\xA4"})
    {
        const std::string text = Header + "[HKEY_CURRENT_USER\\K]\r\n" + value + "\r\n\r\n";
        EXPECT_EQ(Write(Parse(text)), Utf16(text));
    }
}

TEST(RegFile, ByteTextIsWrittenWide)
{
    const std::string text = Header + "[HKEY_CURRENT_USER\\K]\r\n\"v\"=hex(2):25,00,00,00\r\n\r\n";
    EXPECT_EQ(Write(Parse(text)), Utf16(text));
}

TEST(RegFile, WhatIsWrittenReadsBack)
{
    std::vector<unsigned char> bytes(200, 0xAB);
    Key tree;
    tree.Make("HKEY_LOCAL_MACHINE\\A ]x[\\B").SetValue(TextValue("", "C:\\x\"y\r\nz"));
    tree.Make("HKEY_LOCAL_MACHINE\\A ]x[\\B").SetValue(BinaryValue("bytes", bytes));
    tree.Make("HKEY_CLASSES_ROOT\\Empty");
    const std::string text = Write(tree);
    EXPECT_EQ(text.substr(0, 2), "\xFF\xFE");
    Key again = Parse(text);
    EXPECT_EQ(Write(again), text);
    EXPECT_NE(again.Find("HKEY_CLASSES_ROOT\\Empty"), nullptr);
    const Key* key = again.Find("HKEY_LOCAL_MACHINE\\A ]x[\\B");
    EXPECT_EQ(key->FindValue("")->AsText(), "C:\\x\"y\r\nz");
    EXPECT_EQ(key->FindValue("bytes")->AsBinary(), bytes);
}

TEST(RegFile, LongListsAreBrokenIntoLines)
{
    Key tree;
    tree.Make("HKEY_CURRENT_USER\\K").SetValue(BinaryValue("a,b", std::vector<unsigned char>(100, 7)));
    const std::string text = Write(tree);
    size_t longest = 0;
    for (size_t at = 0; at < text.size();)
    {
        const size_t end = text.find("\r\n", at);
        longest = std::max(longest, end - at);
        at = end + 2;
    }
    EXPECT_LE(longest, 80u);
    EXPECT_EQ(Write(Parse(text)), text);
}

} // namespace
