#include "zebstore/storage/Text.h"

#include "platform/utf8.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace zebstore
{

namespace
{

using zeb::platform::LoneSurrogate;

// One code point decomposes, or folds, to less than these.
constexpr size_t MostDecomposed = 16;

// @return the code points, 0 for a code point that Unicode does not decompose or fold
utf8proc_ssize_t Decompose(char32_t code, utf8proc_option_t how, std::array<utf8proc_int32_t, MostDecomposed>& to)
{
    if (zeb::platform::IsSurrogate(code))
    {
        return 0;
    }
    int boundary = 0;
    const utf8proc_ssize_t count = utf8proc_decompose_char(static_cast<utf8proc_int32_t>(code), to.data(),
                                                           static_cast<utf8proc_ssize_t>(to.size()), how, &boundary);
    return count < 0 || count > static_cast<utf8proc_ssize_t>(to.size()) ? 0 : count;
}

// What Unicode's simple case folding gives: one code point for one.
char32_t FoldCase(char32_t code)
{
    constexpr char32_t CapitalIWithDot = 0x130; // folds to a sequence or, in Turkish only, to a letter
    std::array<utf8proc_int32_t, MostDecomposed> folded{};
    const utf8proc_ssize_t count = Decompose(code, UTF8PROC_CASEFOLD, folded);
    if (count == 1)
    {
        return static_cast<char32_t>(folded[0]);
    }
    // Where the full folding is a sequence, the simple one is the small letter.
    return count <= 0 || code == CapitalIWithDot
               ? code
               : static_cast<char32_t>(utf8proc_tolower(static_cast<utf8proc_int32_t>(code)));
}

bool IsNonSpacing(char32_t code)
{
    const utf8proc_category_t category = utf8proc_category(static_cast<utf8proc_int32_t>(code));
    return category == UTF8PROC_CATEGORY_MN || category == UTF8PROC_CATEGORY_ME;
}

// Strokes and bars are no combining marks in Unicode, and whoever searches without accents leaves them out too.
struct Stroked
{
    char32_t letter;
    char base;
};
constexpr Stroked StrokedLetters[] = {{0xD8, 'O'},  {0xF8, 'o'},  {0x110, 'D'}, {0x111, 'd'}, {0x126, 'H'},
                                      {0x127, 'h'}, {0x141, 'L'}, {0x142, 'l'}, {0x166, 'T'}, {0x167, 't'}};

// The letter that the canonical decomposition has besides marks; the code point itself where there is not just one.
char32_t WithoutMarks(char32_t code)
{
    for (const Stroked& each : StrokedLetters)
    {
        if (each.letter == code)
        {
            return static_cast<char32_t>(each.base);
        }
    }
    std::array<utf8proc_int32_t, MostDecomposed> parts{};
    const utf8proc_ssize_t count = Decompose(code, UTF8PROC_DECOMPOSE, parts);
    char32_t base = code;
    int letters = 0;
    for (utf8proc_ssize_t i = 0; i < count; ++i)
    {
        if (const auto part = static_cast<char32_t>(parts[static_cast<size_t>(i)]); !IsNonSpacing(part))
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

// The same byte in each of eight.
constexpr std::uint64_t Eight(unsigned char byte)
{
    return std::uint64_t{0x0101010101010101} * byte;
}

// The bytes from `at` on, at most `most`, that are ASCII.
size_t AsciiRun(std::string_view text, size_t at, size_t most)
{
    const size_t begin = at;
    const size_t end = at + std::min(most, text.size() - at);
    std::uint64_t bytes = 0;
    while (end - at >= sizeof(bytes))
    {
        std::memcpy(&bytes, text.data() + at, sizeof(bytes));
        if (bytes & Eight(0x80))
        {
            break;
        }
        at += sizeof(bytes);
    }
    while (at < end && static_cast<unsigned char>(text[at]) < 0x80)
    {
        ++at;
    }
    return at - begin;
}

// Eight bytes at a time: the high bit of a sum says whether a byte is at least 'A', and whether it is beyond 'Z'.
void FoldAsciiRun(char* at, size_t size)
{
    std::uint64_t bytes = 0;
    for (; size >= sizeof(bytes); at += sizeof(bytes), size -= sizeof(bytes))
    {
        std::memcpy(&bytes, at, sizeof(bytes));
        const std::uint64_t isCapital = (bytes + Eight(0x80 - 'A')) & ~(bytes + Eight(0x80 - 'Z' - 1)) & Eight(0x80);
        bytes += isCapital >> 2; // 'a' - 'A'
        std::memcpy(at, &bytes, sizeof(bytes));
    }
    std::transform(at, at + size, at, FoldAscii);
}

void AppendAscii(std::string& to, std::string_view run, bool foldCase)
{
    const size_t begin = to.size();
    to += run;
    if (foldCase)
    {
        FoldAsciiRun(&to[begin], run.size());
    }
}

// At most `characters` code points of `text`, folded. Most text is ASCII, and folded a run at a time.
std::string Fold(std::string_view text, bool foldCase, bool dropMarks, size_t characters)
{
    std::string folded;
    folded.reserve(std::min(text.size(), characters * 2));
    for (size_t at = 0; at < text.size() && characters > 0; --characters)
    {
        if (const size_t run = AsciiRun(text, at, characters); run != 0)
        {
            AppendAscii(folded, text.substr(at, run), foldCase);
            at += run;
            characters -= run - 1;
            continue;
        }
        char32_t code = zeb::platform::NextCodePoint(text, at, LoneSurrogate::Kept);
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
            code = code < 0x80 ? static_cast<char32_t>(FoldAscii(static_cast<char>(code))) : FoldCase(code);
        }
        zeb::platform::AppendUtf8(folded, code);
    }
    return folded;
}

// An iota below a letter is a mark, and its case folding is the letter iota: no folding that keeps one of them is wide
// enough for the other.
constexpr char32_t Iota = 0x3B9;

// One code point in the widest folding; 0 for one that is left out.
char32_t FoldWidest(char32_t code)
{
    if (IsNonSpacing(code))
    {
        return 0;
    }
    // The letter under an accent may have a stroke.
    const char32_t folded = FoldCase(WithoutMarks(WithoutMarks(FoldCase(code))));
    return folded == Iota ? 0 : folded;
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
    return zeb::platform::Utf8FromWide(text, length, LoneSurrogate::Kept);
}

size_t DecodeStored(std::string_view text, WCHAR* to)
{
    return zeb::platform::DecodeUtf8(text, LoneSurrogate::Kept, to);
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

std::string StoredFromNarrow(std::string_view narrow)
{
    if (IsAscii(narrow) || (NarrowIsUtf8() && zeb::platform::IsUtf8(narrow)))
    {
        return std::string(narrow);
    }
    const zeb::platform::WideString wide = zeb::platform::WideFromNarrow(narrow.data(), narrow.size());
    return StoredFromWide(wide.data(), wide.size());
}

std::string NarrowFromStored(std::string_view stored)
{
    if (IsAscii(stored) || (NarrowIsUtf8() && zeb::platform::IsUtf8(stored)))
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

std::u32string WidestFolded(std::string_view stored)
{
    constexpr char32_t Zero = 0xFFFD; // so that 0 can say that nothing is left
    std::u32string folded;
    folded.reserve(stored.size());
    for (size_t at = 0; at < stored.size();)
    {
        const auto byte = static_cast<unsigned char>(stored[at]);
        if (byte < 0x80)
        {
            folded += byte != 0 ? static_cast<char32_t>(FoldAscii(stored[at])) : Zero;
            ++at;
            continue;
        }
        if (const char32_t code = FoldWidest(zeb::platform::NextCodePoint(stored, at, LoneSurrogate::Kept)); code != 0)
        {
            folded += code;
        }
    }
    return folded;
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
