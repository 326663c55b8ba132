#include "framework/CString.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>

namespace
{

static_assert(std::is_same_v<CString, CStringA>, "without a suffix it is the 8-bit form");

TEST(CString, NullTextIsEmptyText)
{
    EXPECT_TRUE(CStringA(nullptr).IsEmpty());
    EXPECT_TRUE(CStringW(nullptr).IsEmpty());
    EXPECT_TRUE(CStringA(nullptr, 5).IsEmpty());
    CStringA text("x");
    text = static_cast<const char*>(nullptr);
    EXPECT_TRUE(text.IsEmpty());
    text += static_cast<const char*>(nullptr);
    EXPECT_TRUE(text == nullptr);
    EXPECT_EQ(text.Compare(nullptr), 0);
    EXPECT_EQ(text.Find(static_cast<const char*>(nullptr)), 0);
}

TEST(CString, ConvertsToItsTerminatedPointer)
{
    const CStringA narrow("abc");
    const char* pointer = narrow;
    EXPECT_STREQ(pointer, "abc");
    const CStringW wide(ZEBW("abc"));
    const WCHAR* widePointer = wide;
    EXPECT_EQ(widePointer[2], WCHAR('c'));
    EXPECT_EQ(widePointer[3], WCHAR(0));
    EXPECT_EQ(wide.GetLength(), 3);
}

TEST(CString, AssigningItsOwnTailWorks)
{
    CStringA text("a long text that is surely on the heap");
    text = static_cast<const char*>(text) + 2;
    EXPECT_EQ(text, "long text that is surely on the heap");
}

TEST(CString, JoinsAndCompares)
{
    CStringA text = CStringA("a") + "b" + CStringA("c") + 'd';
    text += "e";
    text += 'f';
    text += CStringA("g");
    EXPECT_EQ("abcdefg", text);
    EXPECT_EQ("x" + CStringA("y"), CStringA("xy"));
    EXPECT_TRUE(CStringA("a") < CStringA("b"));
    EXPECT_TRUE(CStringA("a") < "b");
    EXPECT_NE(text, "abc");
    EXPECT_NE("abc", text);
    EXPECT_TRUE(CStringW(ZEBW("a")) == ZEBW("a"));
    EXPECT_LT(CStringA("a").Compare("b"), 0);
    EXPECT_GT(CStringA("b").Compare("a"), 0);
}

TEST(CString, CompareNoCaseFoldsOnlyAscii)
{
    EXPECT_EQ(CStringA("MAPI32.dll").CompareNoCase("mapi32.DLL"), 0);
    EXPECT_NE(CStringA("\xC4").CompareNoCase("\xE4"), 0);
    EXPECT_LT(CStringA("A").CompareNoCase("b"), 0);
    EXPECT_EQ(CStringW(ZEBW("Ab")).CompareNoCase(ZEBW("aB")), 0);
    EXPECT_GT(CStringA("a").CompareNoCase(nullptr), 0);
}

TEST(CString, PartsStayInsideTheText)
{
    const CStringA text("abcdef");
    EXPECT_EQ(text.Left(2), "ab");
    EXPECT_EQ(text.Left(9), "abcdef");
    EXPECT_EQ(text.Left(-1), "");
    EXPECT_EQ(text.Right(2), "ef");
    EXPECT_EQ(text.Right(9), "abcdef");
    EXPECT_EQ(text.Right(-1), "");
    EXPECT_EQ(text.Mid(2), "cdef");
    EXPECT_EQ(text.Mid(2, 3), "cde");
    EXPECT_EQ(text.Mid(2, 99), "cdef");
    EXPECT_EQ(text.Mid(99), "");
    EXPECT_EQ(text.Mid(-1, 2), "ab");
}

TEST(CString, FindGivesPositionOrMinusOne)
{
    const CStringA text("abcabc");
    EXPECT_EQ(text.Find('c'), 2);
    EXPECT_EQ(text.Find('c', 3), 5);
    EXPECT_EQ(text.Find("ca"), 2);
    EXPECT_EQ(text.Find("x"), -1);
    EXPECT_EQ(text.Find("a", 99), -1);
    EXPECT_EQ(text.ReverseFind('b'), 4);
}

TEST(CString, CaseChangesAsciiLettersOnly)
{
    EXPECT_EQ(CStringA("aZ1\xE4").MakeUpper(), "AZ1\xE4");
    EXPECT_EQ(CStringA("aZ1\xC4").MakeLower(), "az1\xC4");
}

TEST(CString, ReplaceCountsWhatItReplaced)
{
    CStringA text("a\\b\\c");
    EXPECT_EQ(text.Replace('\\', '/'), 2);
    EXPECT_EQ(text, "a/b/c");
}

TEST(CString, ABufferIsWrittenAndReleased)
{
    CStringA text("xy");
    char* buffer = text.GetBuffer(10);
    EXPECT_STREQ(buffer, "xy") << "the buffer begins with the previous text";
    std::strcpy(buffer, "hello");
    text.ReleaseBuffer();
    EXPECT_EQ(text.GetLength(), 5);
    std::memcpy(text.GetBuffer(8), "12345678", 8);
    text.ReleaseBuffer(8);
    EXPECT_EQ(text, "12345678");
    text.GetBuffer();
    text.ReleaseBuffer(2);
    EXPECT_EQ(text, "12");
}

TEST(CString, CharactersAreCheckedAgainstTheLength)
{
    CStringA text("abc");
    EXPECT_EQ(text[1], 'b');
    text.SetAt(1, 'x');
    EXPECT_EQ(text, "axc");
    EXPECT_THROW(text.GetAt(3), std::out_of_range);
    EXPECT_THROW(text.GetAt(-1), std::out_of_range);
}

TEST(CString, TextWithZerosKeepsItsLength)
{
    const CStringA text("a\0b", 3);
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_NE(text, "a");
    EXPECT_EQ(text, CStringA("a\0b", 3));
}

TEST(CString, IsAKeyOfHashedSets)
{
    const std::unordered_set<CStringA> set = {"a", "b", "a"};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_EQ(set.count("b"), 1u);
}

TEST(CString, TakesTheStringsOfOtherLibraries)
{
    EXPECT_EQ(CStringA(std::string("a\0b", 3)), CStringA("a\0b", 3));
    EXPECT_EQ(CStringA(std::string_view("view")), "view");
    EXPECT_EQ(CStringW(std::basic_string<WCHAR>(ZEBW("wide"))), ZEBW("wide"));
    static_assert(!std::is_convertible_v<std::string, CStringA>, "only when asked for");
    static_assert(!std::is_constructible_v<CStringA, std::basic_string<WCHAR>>, "not of another width");
}

/// Lengths around the limit between inline and allocated text.
template <class Text>
void GrowsCopiesAndMovesAtEveryLength()
{
    using Char = typename Text::XCHAR;
    Text grown;
    for (int length = 0; length < 70; ++length)
    {
        const Text filled(Char('x'), length);
        ASSERT_EQ(filled, grown);
        Text copy(grown);
        const Text& itself = copy;
        copy = itself;
        Text moved(std::move(copy));
        EXPECT_TRUE(copy.IsEmpty()) << length; // NOLINT: a string is empty after it was moved from
        copy = moved;
        Text other(Char('z'), 69 - length);
        other = std::move(moved);
        ASSERT_EQ(other, filled);
        ASSERT_EQ(copy, filled);
        ASSERT_EQ(other.GetString()[length], Char(0));
        other += other;
        ASSERT_EQ(other.GetLength(), 2 * length);
        ASSERT_EQ(other, filled + filled);
        other = other.GetString() + length;
        ASSERT_EQ(other, filled);
        grown += Char('x');
    }
}

TEST(CString, IsTheSameInsideAndOutside)
{
    GrowsCopiesAndMovesAtEveryLength<CStringA>();
    GrowsCopiesAndMovesAtEveryLength<CStringW>();
}

TEST(CString, ReleasesTheBufferAtAnyLength)
{
    CStringA text;
    std::memset(text.GetBuffer(100), 'x', 100);
    text.ReleaseBuffer(3);
    EXPECT_EQ(text, "xxx");
    EXPECT_STREQ(text, "xxx");
    text.Empty();
    EXPECT_STREQ(text, "");
    EXPECT_EQ(text.GetBuffer(40)[39], 0) << "what is new is zero";
}

} // namespace
