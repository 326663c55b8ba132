#include "platform/utf8.h"

namespace zeb::platform
{
namespace
{

constexpr char32_t Replacement = 0xFFFD;
/// No code point: what an invalid sequence is decoded to.
constexpr char32_t Invalid = 0x110000;

/// The properties of a sequence by its first byte. The range of the second byte excludes overlong forms, values above
/// U+10FFFF and, unless they are kept, surrogates.
struct Sequence
{
    int following;
    char32_t bits;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
};

Sequence SequenceOf(unsigned char first, LoneSurrogate rule)
{
    if (first >= 0xC2 && first <= 0xDF)
    {
        return {1, first & 0x1Fu};
    }
    if (first >= 0xE0 && first <= 0xEF)
    {
        const bool noSurrogates = first == 0xED && rule == LoneSurrogate::Replaced;
        return {2, first & 0x0Fu, static_cast<unsigned char>(first == 0xE0 ? 0xA0 : 0x80),
                static_cast<unsigned char>(noSurrogates ? 0x9F : 0xBF)};
    }
    if (first >= 0xF0 && first <= 0xF4)
    {
        return {3, first & 0x07u, static_cast<unsigned char>(first == 0xF0 ? 0x90 : 0x80),
                static_cast<unsigned char>(first == 0xF4 ? 0x8F : 0xBF)};
    }
    return {0, Invalid};
}

/// NextCodePoint, with Invalid for an invalid sequence.
inline char32_t Decode(std::string_view text, size_t& at, LoneSurrogate rule)
{
    const auto first = static_cast<unsigned char>(text[at++]);
    if (first < 0x80)
    {
        return first;
    }
    const Sequence sequence = SequenceOf(first, rule);
    char32_t code = sequence.bits;
    for (int i = 0; i < sequence.following; ++i)
    {
        const auto next = static_cast<unsigned char>(at < text.size() ? text[at] : '\0');
        if (next < (i == 0 ? sequence.low : 0x80) || next > (i == 0 ? sequence.high : 0xBF))
        {
            return Invalid;
        }
        code = code << 6 | (next & 0x3Fu);
        ++at;
    }
    return code;
}

/// The code point of the unit at `at` and, if they are a pair, the next one; advances `at` past them.
inline char32_t NextOfWide(const WCHAR* text, size_t length, size_t& at, LoneSurrogate rule)
{
    const char32_t code = static_cast<char16_t>(text[at++]);
    if (!IsSurrogate(code))
    {
        return code;
    }
    const char32_t next = at < length ? static_cast<char16_t>(text[at]) : 0;
    if (code < 0xDC00 && next >= 0xDC00 && next < 0xE000)
    {
        ++at;
        return 0x10000 + ((code - 0xD800) << 10) + (next - 0xDC00);
    }
    return rule == LoneSurrogate::Kept ? code : Replacement;
}

} // namespace

char32_t NextCodePoint(std::string_view text, size_t& at, LoneSurrogate rule)
{
    const char32_t code = Decode(text, at, rule);
    return code == Invalid ? Replacement : code;
}

void AppendUtf8(std::string& out, char32_t code)
{
    const auto following = [&out, code](unsigned shift) { out += static_cast<char>(0x80 | (code >> shift & 0x3F)); };
    if (code < 0x80)
    {
        out += static_cast<char>(code);
    }
    else if (code < 0x800)
    {
        out += static_cast<char>(0xC0 | code >> 6);
        following(0);
    }
    else if (code < 0x10000)
    {
        out += static_cast<char>(0xE0 | code >> 12);
        following(6);
        following(0);
    }
    else
    {
        out += static_cast<char>(0xF0 | code >> 18);
        following(12);
        following(6);
        following(0);
    }
}

bool IsUtf8(std::string_view text)
{
    for (size_t at = 0; at < text.size();)
    {
        if (Decode(text, at, LoneSurrogate::Replaced) == Invalid)
        {
            return false;
        }
    }
    return true;
}

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

std::string Utf8FromWide(const WCHAR* text, size_t length, LoneSurrogate rule)
{
    std::string out;
    out.reserve(length + length / 8);
    for (size_t at = 0; at < length;)
    {
        if (static_cast<char16_t>(text[at]) < 0x80)
        {
            out += static_cast<char>(text[at++]);
        }
        else
        {
            AppendUtf8(out, NextOfWide(text, length, at, rule));
        }
    }
    return out;
}

std::string Utf8FromWide(const WCHAR* text, size_t length)
{
    return Utf8FromWide(text, length, LoneSurrogate::Replaced);
}

size_t DecodeUtf8(std::string_view text, LoneSurrogate rule, WCHAR* to)
{
    WCHAR* const begin = to;
    for (size_t at = 0; at < text.size();)
    {
        if (static_cast<unsigned char>(text[at]) < 0x80)
        {
            *to++ = static_cast<WCHAR>(text[at++]);
            continue;
        }
        const char32_t code = NextCodePoint(text, at, rule);
        if (code < 0x10000)
        {
            *to++ = static_cast<WCHAR>(code);
        }
        else
        {
            *to++ = static_cast<WCHAR>(0xD800 + ((code - 0x10000) >> 10));
            *to++ = static_cast<WCHAR>(0xDC00 + ((code - 0x10000) & 0x3FF));
        }
    }
    return static_cast<size_t>(to - begin);
}

WideString WideFromUtf8(const char* text, size_t length)
{
    WideString out(length, WCHAR(0));
    out.resize(DecodeUtf8(std::string_view(text, length), LoneSurrogate::Replaced, out.data()));
    return out;
}

size_t WideLength(const WCHAR* text)
{
    return std::char_traits<WCHAR>::length(text);
}

} // namespace zeb::platform
