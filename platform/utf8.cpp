// UTF-8 and UTF-16, the same on both targets.
#include "platform/text.h"

namespace zeb::platform
{
namespace
{

constexpr char32_t Replacement = 0xFFFD;

bool IsHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(std::string& out, char32_t code)
{
    if (code < 0x80)
    {
        out += static_cast<char>(code);
    }
    else if (code < 0x800)
    {
        out += static_cast<char>(0xC0 | code >> 6);
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else if (code < 0x10000)
    {
        out += static_cast<char>(0xE0 | code >> 12);
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
    else
    {
        out += static_cast<char>(0xF0 | code >> 18);
        out += static_cast<char>(0x80 | (code >> 12 & 0x3F));
        out += static_cast<char>(0x80 | (code >> 6 & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

/// The properties of a sequence by its first byte. The range of the second byte excludes overlong forms, surrogates and
/// values above U+10FFFF.
struct Sequence
{
    int following;
    char32_t bits;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
};

Sequence SequenceOf(unsigned char first)
{
    if (first >= 0xC2 && first <= 0xDF)
    {
        return {1, first & 0x1Fu};
    }
    if (first >= 0xE0 && first <= 0xEF)
    {
        return {2, first & 0x0Fu, static_cast<unsigned char>(first == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(first == 0xED ? 0x9F : 0xBF)};
    }
    if (first >= 0xF0 && first <= 0xF4)
    {
        return {3, first & 0x07u, static_cast<unsigned char>(first == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(first == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, Replacement};
}

/// Reads one character at `at` and advances past it. An invalid sequence is one replacement character for all its
/// bytes.
char32_t ReadUtf8(const char* text, size_t length, size_t& at)
{
    const auto first = static_cast<unsigned char>(text[at++]);
    if (first < 0x80)
    {
        return first;
    }
    const Sequence sequence = SequenceOf(first);
    char32_t code = sequence.bits;
    for (int i = 0; i < sequence.following; ++i)
    {
        const auto next = static_cast<unsigned char>(at < length ? text[at] : '\0');
        if (next < (i == 0 ? sequence.low : 0x80) || next > (i == 0 ? sequence.high : 0xBF))
        {
            return Replacement;
        }
        code = code << 6 | (next & 0x3Fu);
        ++at;
    }
    return code;
}

} // namespace

size_t Utf8Prefix(const char* text, size_t length, size_t limit)
{
    constexpr size_t LongestCharacter = 4;
    if (length <= limit)
    {
        return length;
    }
    const auto isInside = [text](size_t at) { return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80; };
    size_t end = limit;
    while (end > 0 && limit - end < LongestCharacter && isInside(end))
    {
        --end;
    }
    // Without a first byte the text is not UTF-8: any position is acceptable.
    return isInside(end) ? limit : end;
}

std::string Utf8FromWide(const WCHAR* text, size_t length)
{
    std::string out;
    out.reserve(length);
    for (size_t i = 0; i < length; ++i)
    {
        char32_t code = static_cast<char16_t>(text[i]);
        if (IsHighSurrogate(code) && i + 1 < length && IsLowSurrogate(static_cast<char16_t>(text[i + 1])))
        {
            code = 0x10000 + ((code - 0xD800) << 10) + (static_cast<char16_t>(text[++i]) - 0xDC00u);
        }
        else if (IsHighSurrogate(code) || IsLowSurrogate(code))
        {
            code = Replacement;
        }
        AppendUtf8(out, code);
    }
    return out;
}

WideString WideFromUtf8(const char* text, size_t length)
{
    WideString out;
    out.reserve(length);
    for (size_t at = 0; at < length;)
    {
        const char32_t code = ReadUtf8(text, length, at);
        if (code < 0x10000)
        {
            out += static_cast<WCHAR>(code);
        }
        else
        {
            out += static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
            out += static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
        }
    }
    return out;
}

size_t WideLength(const WCHAR* text)
{
    return std::char_traits<WCHAR>::length(text);
}

} // namespace zeb::platform
