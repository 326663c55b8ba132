#include "framework/CString.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace
{

CStringA Narrow(const char* format, ...)
{
    CStringA text;
    va_list args;
    va_start(args, format);
    text.FormatV(format, args);
    va_end(args);
    return text;
}

/// The wide form's text, as narrow text; it is ASCII.
std::string Wide(const WCHAR* format, ...)
{
    CStringW text;
    va_list args;
    va_start(args, format);
    text.FormatV(format, args);
    va_end(args);
    std::string narrow;
    for (int i = 0; i < text.GetLength(); ++i)
    {
        narrow += static_cast<char>(text[i]);
    }
    return narrow;
}

TEST(Format, WindowsLengthModifiersWorkEverywhere)
{
    const int64_t big = -9'000'000'000'000'000'007;
    EXPECT_EQ(Narrow("%I64d", big), "-9000000000000000007");
    EXPECT_EQ(Narrow("%I64u|%I64x", uint64_t{18'446'744'073'709'551'615u}, uint64_t{255}), "18446744073709551615|ff");
    EXPECT_EQ(Narrow("[%-22I64d]", big), "[-9000000000000000007  ]");
    EXPECT_EQ(Narrow("%I32d", 5), "5");
    EXPECT_EQ(Narrow("%lld", static_cast<long long>(big)), "-9000000000000000007");
    EXPECT_EQ(Narrow("%%I64d %d I64", 3), "%I64d 3 I64") << "after a doubled '%' it is text";
}

TEST(Format, LongTextIsWhole)
{
    const std::string word(1000, 'x');
    EXPECT_EQ(Narrow("<%s>", word.c_str()).GetLength(), 1002);
    EXPECT_EQ(Narrow("%255s", "a").GetLength(), 255);
    EXPECT_EQ(Narrow("%256s", "a").GetLength(), 256);
    EXPECT_EQ(Narrow("%s", ""), "");
}

TEST(Format, AcceptsItsOwnTextAsArgument)
{
    CStringA text("abc");
    text.Format("<%s>", static_cast<const char*>(text));
    EXPECT_EQ(text, "<abc>");
    text.AppendFormat("%d%s", 1, static_cast<const char*>(text));
    EXPECT_EQ(text, "<abc>1<abc>");
}

TEST(Format, HexadecimalsOfResultCodes)
{
    EXPECT_EQ(Narrow("0x%08X 0x%08x", 0x8004010F, 0x8004010F), "0x8004010F 0x8004010f");
}

TEST(FormatWide, NumbersAreAsInNarrowText)
{
    EXPECT_EQ(Wide(ZEBW("%d|%i|%u|%x|%X|%o"), -1, 2, 3u, 255, 255, 8), "-1|2|3|ff|FF|10");
    EXPECT_EQ(Wide(ZEBW("%I64d|%lld|%I64X"), int64_t{-5'000'000'000}, int64_t{5'000'000'000}, uint64_t{1} << 40),
              "-5000000000|5000000000|10000000000");
    EXPECT_EQ(Wide(ZEBW("[%5d][%-5d][%05d][%+d][%.3d]"), 1, 2, 3, 4, 5), "[    1][2    ][00003][+4][005]");
    EXPECT_EQ(Wide(ZEBW("[%*d][%-*d]"), 4, 1, 4, 2), "[   1][2   ]");
    EXPECT_EQ(Wide(ZEBW("[%*d]"), -4, 1), "[1   ]");
    EXPECT_EQ(Wide(ZEBW("%hd %hhu"), 65537, 257), "1 1");
    EXPECT_EQ(Wide(ZEBW("%.2f %g %e"), 1.5, 0.25, 1.0).substr(0, 9), "1.50 0.25");
    EXPECT_EQ(Wide(ZEBW("%zu"), sizeof(int)), "4");
    EXPECT_EQ(Wide(ZEBW("%ld|%lu|%I32d"), -5L, 5UL, 6), "-5|5|6");
}

TEST(FormatWide, TextIsWideUnlessMarkedNarrow)
{
    EXPECT_EQ(Wide(ZEBW("%s|%ls|%S|%hs"), ZEBW("a"), ZEBW("b"), "c", "d"), "a|b|c|d");
    EXPECT_EQ(Wide(ZEBW("[%4s][%-4s][%.2s][%.0s]"), ZEBW("ab"), ZEBW("cd"), ZEBW("efg"), ZEBW("x")),
              "[  ab][cd  ][ef][]");
    EXPECT_EQ(Wide(ZEBW("%S"), "a\xC3\xA4"), "a??") << "only ASCII of narrow text is kept";
    EXPECT_EQ(Wide(ZEBW("%s %S"), static_cast<const WCHAR*>(nullptr), static_cast<const char*>(nullptr)),
              "(null) (null)");
    EXPECT_EQ(Wide(ZEBW("%c%c %%"), 'x', 'y'), "xy %");
}

TEST(FormatWide, WidthAndPrecisionCountCharacters)
{
    CStringW text;
    text.Format(ZEBW("[%4s][%-4.2s][%3c]"), ZEBW("\u00E4\u20AC"), ZEBW("x\u00E4x"), 0x20AC);
    EXPECT_EQ(text, ZEBW("[  \u00E4\u20AC][x\u00E4  ][  \u20AC]"));
    const WCHAR unterminated[] = {'a', 'b'};
    const char unterminatedNarrow[] = {'c', 'd'};
    EXPECT_EQ(Wide(ZEBW("%.2s %.*S"), unterminated, 2, unterminatedNarrow), "ab cd");
    EXPECT_EQ(Wide(ZEBW("[%.*d][%.*s]"), -1, 7, -1, ZEBW("whole")), "[7][whole]") << "a negative precision is none";
}

TEST(FormatWide, AnUnfinishedConversionEndsTheText)
{
    EXPECT_EQ(Wide(ZEBW("a%")), "a");
    EXPECT_EQ(Wide(ZEBW("a%-5")), "a");
    EXPECT_EQ(Wide(ZEBW("a%I64")), "a");
}

} // namespace
