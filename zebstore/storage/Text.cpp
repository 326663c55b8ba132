#include "zebstore/storage/Text.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace zebstore
{

namespace
{

constexpr std::uint32_t Replacement = 0xFFFD;

void AppendCodePoint(std::string& to, std::uint32_t code)
{
    if (code < 0x80)
    {
        to += static_cast<char>(code);
    }
    else if (code < 0x800)
    {
        to += static_cast<char>(0xC0 | (code >> 6));
        to += static_cast<char>(0x80 | (code & 0x3F));
    }
    else if (code < 0x10000)
    {
        to += static_cast<char>(0xE0 | (code >> 12));
        to += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        to += static_cast<char>(0x80 | (code & 0x3F));
    }
    else
    {
        to += static_cast<char>(0xF0 | (code >> 18));
        to += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        to += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        to += static_cast<char>(0x80 | (code & 0x3F));
    }
}

// The length that a lead byte announces, 0 for none, with its payload bits and the smallest code point that
// needs it.
size_t LeadByte(unsigned char byte, std::uint32_t& bits, std::uint32_t& least)
{
    if (byte >= 0xC2 && byte <= 0xDF)
    {
        bits = byte & 0x1Fu;
        least = 0x80;
        return 2;
    }
    if (byte >= 0xE0 && byte <= 0xEF)
    {
        bits = byte & 0x0Fu;
        least = 0x800;
        return 3;
    }
    if (byte >= 0xF0 && byte <= 0xF4)
    {
        bits = byte & 0x07u;
        least = 0x10000;
        return 4;
    }
    return 0;
}

// Takes one code point (surrogates included) off `text` at `at`; `valid` turns false for a byte that is none.
std::uint32_t NextCodePoint(std::string_view text, size_t& at, bool& valid)
{
    const unsigned char first = static_cast<unsigned char>(text[at]);
    if (first < 0x80)
    {
        ++at;
        return first;
    }
    std::uint32_t code = 0;
    std::uint32_t least = 0;
    const size_t length = LeadByte(first, code, least);
    if (length == 0 || text.size() - at < length)
    {
        ++at;
        valid = false;
        return Replacement;
    }
    for (size_t i = 1; i < length; ++i)
    {
        const unsigned char next = static_cast<unsigned char>(text[at + i]);
        if ((next & 0xC0) != 0x80)
        {
            ++at;
            valid = false;
            return Replacement;
        }
        code = (code << 6) | (next & 0x3Fu);
    }
    if (code < least || code > 0x10FFFF)
    {
        ++at;
        valid = false;
        return Replacement;
    }
    at += length;
    return code;
}

bool IsSurrogate(std::uint32_t code)
{
    return code >= 0xD800 && code <= 0xDFFF;
}

// One code point decomposes, or folds, to less than these.
constexpr size_t MostDecomposed = 16;

// @return the code points, 0 for a code point that Unicode does not decompose or fold
utf8proc_ssize_t Decompose(std::uint32_t code, utf8proc_option_t how, std::array<utf8proc_int32_t, MostDecomposed>& to)
{
    if (IsSurrogate(code))
    {
        return 0;
    }
    int boundary = 0;
    const utf8proc_ssize_t count = utf8proc_decompose_char(static_cast<utf8proc_int32_t>(code), to.data(),
                                                           static_cast<utf8proc_ssize_t>(to.size()), how, &boundary);
    return count < 0 || count > static_cast<utf8proc_ssize_t>(to.size()) ? 0 : count;
}

// What Unicode's simple case folding gives: one code point for one.
std::uint32_t FoldCase(std::uint32_t code)
{
    constexpr std::uint32_t CapitalIWithDot = 0x130; // folds to a sequence or, in Turkish only, to a letter
    std::array<utf8proc_int32_t, MostDecomposed> folded{};
    const utf8proc_ssize_t count = Decompose(code, UTF8PROC_CASEFOLD, folded);
    if (count == 1)
    {
        return static_cast<std::uint32_t>(folded[0]);
    }
    // Where the full folding is a sequence, the simple one is the small letter.
    return count <= 0 || code == CapitalIWithDot
               ? code
               : static_cast<std::uint32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(code)));
}

bool IsNonSpacing(std::uint32_t code)
{
    const utf8proc_category_t category = utf8proc_category(static_cast<utf8proc_int32_t>(code));
    return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_ME;
}

// Strokes and bars are no combining marks in Unicode, and whoever searches without accents leaves them out too.
struct Stroked
{
    std::uint32_t letter;
    char base;
};
constexpr Stroked StrokedLetters[] = {{0xD8, 'O'},  {0xF8, 'o'},  {0x110, 'D'}, {0x111, 'd'}, {0x126, 'H'},
                                      {0x127, 'h'}, {0x141, 'L'}, {0x142, 'l'}, {0x166, 'T'}, {0x167, 't'}};

// The letter that the canonical decomposition has besides marks; the code point itself where there is not just one.
std::uint32_t WithoutMarks(std::uint32_t code)
{
    for (const Stroked& each : StrokedLetters)
    {
        if (each.letter == code)
        {
            return static_cast<std::uint32_t>(each.base);
        }
    }
    std::array<utf8proc_int32_t, MostDecomposed> parts{};
    const utf8proc_ssize_t count = Decompose(code, UTF8PROC_DECOMPOSE, parts);
    std::uint32_t base = code;
    int letters = 0;
    for (utf8proc_ssize_t i = 0; i < count; ++i)
    {
        if (const auto part = static_cast<std::uint32_t>(parts[static_cast<size_t>(i)]); !IsNonSpacing(part))
        {
            base = part;
            ++letters;
        }
    }
    return letters == 1 ? base : code;
}

char FoldAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

// At most `characters` code points of `text`, folded.
std::string Fold(std::string_view text, bool foldCase, bool dropMarks, size_t characters)
{
    std::string folded;
    folded.reserve(std::min(text.size(), characters * 2));
    bool valid = true;
    for (size_t at = 0; at < text.size() && characters > 0; --characters)
    {
        if (static_cast<unsigned char>(text[at]) < 0x80)
        {
            folded += foldCase ? FoldAscii(text[at]) : text[at];
            ++at;
            continue;
        }
        std::uint32_t code = NextCodePoint(text, at, valid);
        if (dropMarks)
        {
            if (IsNonSpacing(code))
            {
                continue;
            }
            code = WithoutMarks(code);
        }
        if (foldCase)
        {
            code = code < 0x80 ? static_cast<std::uint32_t>(FoldAscii(static_cast<char>(code))) : FoldCase(code);
        }
        AppendCodePoint(folded, code);
    }
    return folded;
}

// Asked of the system, not of the compiler: a Windows with UTF-8 as its ANSI code page counts as well.
bool NarrowIsUtf8()
{
    static const bool isUtf8 = []
    {
        const zeb::platform::WideString wide = zeb::platform::WideFromNarrow("\xC3\xA9", 2);
        return wide.size() == 1 && wide[0] == 0xE9;
    }();
    return isUtf8;
}

} // namespace

std::string StoredFromWide(const WCHAR* text, size_t length)
{
    std::string stored;
    stored.reserve(length + length / 8);
    for (size_t i = 0; i < length; ++i)
    {
        std::uint32_t code = static_cast<std::uint16_t>(text[i]);
        if (code < 0x80)
        {
            stored += static_cast<char>(code);
            continue;
        }
        if (code >= 0xD800 && code <= 0xDBFF && i + 1 < length)
        {
            const std::uint32_t low = static_cast<std::uint16_t>(text[i + 1]);
            if (low >= 0xDC00 && low <= 0xDFFF)
            {
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                ++i;
            }
        }
        AppendCodePoint(stored, code);
    }
    return stored;
}

size_t DecodeStored(std::string_view text, WCHAR* to)
{
    WCHAR* const begin = to;
    bool valid = true;
    for (size_t at = 0; at < text.size();)
    {
        if (static_cast<unsigned char>(text[at]) < 0x80)
        {
            *to++ = static_cast<WCHAR>(text[at++]);
            continue;
        }
        const std::uint32_t code = NextCodePoint(text, at, valid);
        if (code >= 0x10000)
        {
            *to++ = static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
            *to++ = static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
        }
        else
        {
            *to++ = static_cast<WCHAR>(code);
        }
    }
    return static_cast<size_t>(to - begin);
}

zeb::platform::WideString WideFromStored(std::string_view text)
{
    zeb::platform::WideString wide(WideBound(text.size()), WCHAR(0));
    wide.resize(DecodeStored(text, &wide[0]));
    return wide;
}

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsUtf8(std::string_view text)
{
    bool valid = true;
    for (size_t at = 0; at < text.size() && valid;)
    {
        if (IsSurrogate(NextCodePoint(text, at, valid)))
        {
            return false;
        }
    }
    return valid;
}

std::string StoredFromNarrow(std::string_view narrow)
{
    if (IsAscii(narrow) || (NarrowIsUtf8() && IsUtf8(narrow)))
    {
        return std::string(narrow);
    }
    const zeb::platform::WideString wide = zeb::platform::WideFromNarrow(narrow.data(), narrow.size());
    return StoredFromWide(wide.data(), wide.size());
}

std::string NarrowFromStored(std::string_view stored)
{
    if (IsAscii(stored) || (NarrowIsUtf8() && IsUtf8(stored)))
    {
        return std::string(stored);
    }
    const zeb::platform::WideString wide = WideFromStored(stored);
    return zeb::platform::NarrowFromWide(wide.data(), wide.size());
}

std::string Folded(std::string_view stored, TextFold fold)
{
    if (fold == TextFold::Exact)
    {
        return std::string(stored);
    }
    return Fold(stored, fold != TextFold::IgnoreMarks, fold != TextFold::IgnoreCase, stored.size());
}

const char* UnicodeVersion()
{
    return utf8proc_unicode_version();
}

std::string SortKey(std::string_view stored)
{
    return Fold(stored, true, false, SortKeyCharacters);
}

} // namespace zebstore
