#include "qorth/Hex.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string>
#include <vector>

namespace
{

/// The output of String2Bin to a buffer of `cb` bytes, with guard bytes after it.
std::vector<unsigned char> Bytes(const char* hex, ULONG cb)
{
    std::vector<unsigned char> bytes(cb + 4, 0xEE);
    const ULONG count = String2Bin(hex, bytes.data(), cb);
    for (size_t i = count; i < bytes.size(); ++i)
    {
        EXPECT_EQ(bytes[i], 0xEE) << "written after the counted bytes, at " << i;
    }
    bytes.resize(count);
    return bytes;
}

using List = std::vector<unsigned char>;

TEST(Hex, BytesAreTwoUpperCaseDigits)
{
    const unsigned char bytes[] = {0x00, 0x09, 0x0A, 0xF0, 0xFF, 0x7F};
    CStringA text("old");
    Bin2String(text, bytes, sizeof bytes, 0);
    EXPECT_EQ(text, "00090AF0FF7F");
}

TEST(Hex, NoBytesAreEmptyText)
{
    CStringA text("old");
    Bin2String(text, "", 0, 0);
    EXPECT_EQ(text, "");
    text = "old";
    Bin2String(text, nullptr, 5, 0);
    EXPECT_EQ(text, "");
}

TEST(Hex, EveryByteRoundTrips)
{
    List bytes(256);
    for (size_t i = 0; i < bytes.size(); ++i)
    {
        bytes[i] = static_cast<unsigned char>(i);
    }
    CStringA text;
    Bin2String(text, bytes.data(), 256, 0);
    EXPECT_EQ(text.GetLength(), 512);
    EXPECT_EQ(String2BinBuffLen(text), 256u);
    EXPECT_EQ(Bytes(text, 256), bytes);
    text.MakeLower();
    EXPECT_EQ(Bytes(text, 256), bytes) << "lower case is read as well";
}

TEST(Hex, TheTextMayBeItsSource)
{
    CStringA text("AB");
    Bin2String(text, static_cast<const char*>(text), 2, 0);
    EXPECT_EQ(text, "4142");
}

TEST(Hex, OddTextHoldsCompletePairsOnly)
{
    EXPECT_EQ(String2BinBuffLen("A"), 0u);
    EXPECT_EQ(String2BinBuffLen("ABC"), 1u);
    EXPECT_EQ(Bytes("ABC", 4), List{0xAB});
    EXPECT_EQ(Bytes("A", 4), List{});
}

TEST(Hex, PairsEndAtAForeignCharacter)
{
    EXPECT_EQ(String2BinBuffLen("12G4"), 1u);
    EXPECT_EQ(Bytes("12G4", 4), List{0x12});
    EXPECT_EQ(String2BinBuffLen("123G"), 1u);
    EXPECT_EQ(Bytes("123G", 4), List{0x12});
    EXPECT_EQ(String2BinBuffLen("12 34"), 1u);
    EXPECT_EQ(String2BinBuffLen(" 12"), 0u);
    EXPECT_EQ(String2BinBuffLen("\xC4\xD6"), 0u);
    for (const char foreign : {'/', ':', '@', 'G', '`', 'g'})
    {
        const std::string text = std::string("1") + foreign;
        EXPECT_EQ(String2BinBuffLen(text.c_str()), 0u) << foreign;
    }
}

TEST(Hex, NothingIsWrittenAfterTheBuffer)
{
    EXPECT_EQ(Bytes("112233", 2), (List{0x11, 0x22}));
    EXPECT_EQ(Bytes("112233", 0), List{});
    EXPECT_EQ(Bytes("11", 8), List{0x11});
}

TEST(Hex, EmptyAndNullHoldNoBytes)
{
    EXPECT_EQ(String2BinBuffLen(nullptr), 0u);
    EXPECT_EQ(String2BinBuffLen(""), 0u);
    EXPECT_EQ(Bytes(nullptr, 4), List{});
    EXPECT_EQ(Bytes("", 4), List{});
}

/// The simplest form: one byte after the other.
List Plainly(const std::string& text)
{
    List bytes;
    for (size_t i = 0; i + 1 < text.size(); i += 2)
    {
        if (!std::isxdigit(static_cast<unsigned char>(text[i])) ||
            !std::isxdigit(static_cast<unsigned char>(text[i + 1])))
        {
            break;
        }
        bytes.push_back(static_cast<unsigned char>(std::stoi(text.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

/// Digits of both cases in an order without a period of two.
std::string Digits(size_t length)
{
    std::string text;
    for (size_t i = 0; i < length; ++i)
    {
        text += "0123456789abcdefABCDEF"[i * 7 % 22];
    }
    return text;
}

TEST(Hex, TextOfEveryLengthRoundTrips)
{
    for (size_t length = 0; length <= 200; ++length)
    {
        const std::string text = Digits(length);
        const List bytes = Bytes(text.c_str(), 200);
        EXPECT_EQ(bytes, Plainly(text)) << length;
        EXPECT_EQ(String2BinBuffLen(text.c_str()), length / 2);
        CStringA back;
        Bin2String(back, bytes.data(), static_cast<ULONG>(bytes.size()), 0);
        CStringA upper(text.c_str(), static_cast<int>(length / 2 * 2));
        EXPECT_EQ(back, upper.MakeUpper()) << length;
    }
}

TEST(Hex, AForeignCharacterEndsTheText)
{
    for (size_t at = 0; at < 100; ++at)
    {
        for (int foreign = 1; foreign < 256; ++foreign)
        {
            if (std::isxdigit(foreign))
            {
                continue;
            }
            std::string text = Digits(100);
            text[at] = static_cast<char>(foreign);
            EXPECT_EQ(String2BinBuffLen(text.c_str()), at / 2) << at << " " << foreign;
            EXPECT_EQ(Bytes(text.c_str(), 60), Plainly(text)) << at << " " << foreign;
        }
    }
}

TEST(Hex, NoBufferIsExceeded)
{
    const std::string text = Digits(120);
    const List all = Plainly(text);
    for (ULONG size = 0; size <= 60; ++size)
    {
        EXPECT_EQ(Bytes(text.c_str(), size), List(all.begin(), all.begin() + size)) << size;
    }
}

TEST(Hex, TheCountIsWhatIsWritten)
{
    for (const char* text : {"", "0", "00", "0g", "g0", "00g0", "0011", "001", "ff FF",
                             "\xFF"
                             "0",
                             "0123456789abcdefABCDEF"})
    {
        EXPECT_EQ(Bytes(text, 64).size(), String2BinBuffLen(text)) << text;
    }
}

} // namespace
