// The codec between UTF-8 and 16-bit text, the same on both targets.
#pragma once

#include "platform/text.h"

#include <string>
#include <string_view>

namespace zeb::platform
{

/// What becomes of a lone surrogate: a 16-bit unit from 0xD800 to 0xDFFF without its partner. UTF-8 has no form for it.
enum class LoneSurrogate
{
    /// U+FFFD, so that the result is valid; its three bytes count as invalid. For text that others read.
    Replaced,
    /// Its three bytes, so that every 16-bit text is restored unchanged. For text that only this codec reads.
    Kept,
};

constexpr bool IsSurrogate(char32_t code)
{
    return code >= 0xD800 && code < 0xE000;
}

/// Reads the code point at `at` and advances past it. An invalid sequence is one U+FFFD: all bytes up to the first that
/// cannot continue it, and at least one. REQUIRES: `at` < text.size()
char32_t NextCodePoint(std::string_view text, size_t& at, LoneSurrogate rule);

/// Appends a code point; a surrogate is appended as its three bytes.
void AppendUtf8(std::string& out, char32_t code);

std::string Utf8FromWide(const WCHAR* text, size_t length, LoneSurrogate rule);

/// Decodes into `to`, which has room for text.size() characters. @return the number of characters written
size_t DecodeUtf8(std::string_view text, LoneSurrogate rule, WCHAR* to);

/// True for valid UTF-8; the bytes of a lone surrogate are not.
bool IsUtf8(std::string_view text);

} // namespace zeb::platform
