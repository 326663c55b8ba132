#include "zebapi/BinaryParser.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace zeb::test
{

namespace
{

/// Bytes in a heap block of exactly their size, so that a read beyond them shows under the sanitizers.
class Bytes
{
public:
    Bytes(std::initializer_list<int> bytes)
        : m_size(bytes.size())
        , m_block(new BYTE[bytes.size() + 1])
    {
        // At an odd address.
        std::copy(bytes.begin(), bytes.end(), m_block.get() + 1);
    }
    CBinaryParser Parser() const { return CBinaryParser(m_size, m_block.get() + 1); }
    const BYTE* Start() const { return m_block.get() + 1; }

private:
    size_t m_size;
    std::unique_ptr<BYTE[]> m_block;
};

} // namespace

TEST(BinaryParser, ReadsLittleEndianAtAnyAlignment)
{
    const Bytes bytes = {0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F};
    CBinaryParser parser = bytes.Parser();
    EXPECT_EQ(parser.Read8(), 0x01);
    EXPECT_EQ(parser.Read16(), 0x0302);
    EXPECT_EQ(parser.Read32(), 0x07060504u);
    std::uint64_t wide = 0;
    parser.Read64(wide);
    EXPECT_EQ(wide, 0x0F0E0D0C0B0A0908u);
    EXPECT_EQ(parser.Remaining(), 0u);
    EXPECT_EQ(parser.Offset(), 15u);
}

TEST(BinaryParser, AReadTooLongGivesZero)
{
    const Bytes bytes = {0xAA, 0xBB, 0xCC};
    CBinaryParser parser = bytes.Parser();
    EXPECT_EQ(parser.Read32(), 0u);
    EXPECT_EQ(parser.Remaining(), 3u);
    std::uint64_t wide = 7;
    parser.Read64(wide);
    EXPECT_EQ(wide, 0u);
    EXPECT_EQ(parser.Remaining(), 3u);
    EXPECT_EQ(parser.Read16(), 0xBBAA);
    EXPECT_EQ(parser.Read16(), 0u);
    EXPECT_EQ(parser.Read8(), 0xCC);
    EXPECT_EQ(parser.Read8(), 0u);
}

TEST(BinaryParser, PositionPassesTheEndWithoutWrapping)
{
    const Bytes bytes = {1, 2, 3, 4};
    CBinaryParser parser = bytes.Parser();
    EXPECT_EQ(parser.Current(), bytes.Start());
    parser.Advance(3);
    EXPECT_EQ(parser.Current(), bytes.Start() + 3);
    parser.Advance(10);
    EXPECT_EQ(parser.Offset(), 13u);
    EXPECT_EQ(parser.Current(), bytes.Start() + 4) << "the end";
    EXPECT_EQ(parser.Remaining(), 0u);
    parser.Advance(UINT64_MAX);
    EXPECT_EQ(parser.Offset(), UINT64_MAX);
    parser.Advance(2);
    EXPECT_EQ(parser.Offset(), UINT64_MAX);
    std::uint64_t wide = 1;
    BYTE byte = 9;
    parser.Read64(wide);
    parser.ReadBytes(1, &byte);
    EXPECT_EQ(wide, 0u);
    EXPECT_EQ(byte, 9);
    EXPECT_EQ(parser.Read8(), 0);
    EXPECT_EQ(parser.Read16(), 0);
    EXPECT_EQ(parser.Read32(), 0u);
    EXPECT_TRUE(parser.ReadStringA().IsEmpty());
    EXPECT_TRUE(parser.ReadStringA(1).IsEmpty());
    EXPECT_TRUE(parser.ReadStringW().IsEmpty());
    EXPECT_TRUE(parser.ReadStringW(1).IsEmpty());
}

TEST(BinaryParser, NullBufferIsEmpty)
{
    CBinaryParser parser(100, nullptr);
    EXPECT_EQ(parser.Remaining(), 0u);
    EXPECT_EQ(parser.Read32(), 0u);
    EXPECT_EQ(parser.Current(), nullptr);
}

TEST(BinaryParser, CopiesBytesOrNothing)
{
    const Bytes bytes = {1, 2, 3, 4};
    CBinaryParser parser = bytes.Parser();
    BYTE target[4] = {};
    parser.ReadBytes(5, target);
    parser.ReadBytes(0, target);
    parser.ReadBytes(2, nullptr);
    EXPECT_EQ(parser.Offset(), 0u);
    EXPECT_EQ(target[0], 0);
    parser.ReadBytes(3, target);
    EXPECT_EQ(target[2], 3);
    EXPECT_EQ(target[3], 0);
    EXPECT_EQ(parser.Remaining(), 1u);
    parser.ReadBytes(UINT64_MAX, target);
    EXPECT_EQ(parser.Remaining(), 1u);
}

TEST(BinaryParser, TerminatedTextConsumesItsTerminator)
{
    const Bytes bytes = {'a', 'b', 0, 'c', 0, 0, 'd'};
    CBinaryParser parser = bytes.Parser();
    EXPECT_EQ(parser.ReadStringA(), "ab");
    EXPECT_EQ(parser.Offset(), 3u);
    EXPECT_EQ(parser.ReadStringA(), "c");
    EXPECT_EQ(parser.ReadStringA(), "");
    EXPECT_EQ(parser.Offset(), 6u) << "an empty text is its terminator";
    EXPECT_EQ(parser.ReadStringA(), "");
    EXPECT_EQ(parser.Offset(), 6u) << "no terminator before the end: nothing is consumed";
    EXPECT_EQ(parser.Remaining(), 1u);
}

TEST(BinaryParser, WideTextMayBeUnaligned)
{
    const Bytes bytes = {'a', 0, 0xE9, 0, 0, 0, 'z', 0, 0};
    CBinaryParser parser = bytes.Parser();
    EXPECT_EQ(parser.ReadStringW(), ZEBW("a\u00e9"));
    EXPECT_EQ(parser.Offset(), 6u);
    EXPECT_EQ(parser.ReadStringW().GetLength(), 0) << "half a terminator is none";
    EXPECT_EQ(parser.Offset(), 6u);
}

TEST(BinaryParser, TextLongerThanIntegersIsEmpty)
{
    // What is said to follow is never looked at.
    const Bytes bytes = {'a', 'b', 0, 0, 0, 0};
    CBinaryParser most(0x7FFFFFFF, bytes.Start());
    EXPECT_EQ(most.ReadStringA(), "ab");
    CBinaryParser tooMany(0x80000000, bytes.Start());
    EXPECT_EQ(tooMany.ReadStringA(), "");
    EXPECT_EQ(tooMany.Offset(), 0u);
    CBinaryParser mostWide(0xFFFFFFFF, bytes.Start());
    EXPECT_EQ(mostWide.ReadStringW().GetLength(), 1);
    CBinaryParser tooManyWide(0x100000000, bytes.Start());
    EXPECT_EQ(tooManyWide.ReadStringW().GetLength(), 0);
    EXPECT_EQ(tooManyWide.Offset(), 0u);
}

TEST(BinaryParser, LongTextIsReadWhole)
{
    for (const size_t length : {62, 63, 64, 65, 1000})
    {
        const std::string text(length, 'x');
        CBinaryParser parser(length + 1, text.c_str());
        EXPECT_EQ(parser.ReadStringA(), text.c_str());
        const std::basic_string<WCHAR> wide(length, 'y');
        CBinaryParser wideParser((length + 1) * 2, wide.c_str());
        EXPECT_EQ(wideParser.ReadStringW(), wide.c_str());
    }
}

TEST(BinaryParser, CountedTextEndsAtItsTerminator)
{
    const Bytes bytes = {'a', 'b', 0, 'c', 'd'};
    CBinaryParser parser = bytes.Parser();
    EXPECT_EQ(parser.ReadStringA(4), "ab");
    EXPECT_EQ(parser.Offset(), 4u);
    EXPECT_EQ(parser.ReadStringA(2), "");
    EXPECT_EQ(parser.ReadStringA(0), "");
    EXPECT_EQ(parser.Offset(), 4u);
    EXPECT_EQ(parser.ReadStringA(1), "d");
}

TEST(BinaryParser, CountedWideTextNeverOverflows)
{
    const Bytes bytes = {'a', 0, 'b', 0};
    CBinaryParser parser = bytes.Parser();
    EXPECT_TRUE(parser.ReadStringW(3).IsEmpty());
    EXPECT_TRUE(parser.ReadStringW(0x8000000000000001u).IsEmpty());
    EXPECT_TRUE(parser.ReadStringW(UINT64_MAX).IsEmpty());
    EXPECT_EQ(parser.Offset(), 0u);
    EXPECT_EQ(parser.ReadStringW(2), ZEBW("ab"));
    EXPECT_EQ(parser.Remaining(), 0u);
}

} // namespace zeb::test
