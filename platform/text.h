// Narrow and 16-bit text. "Narrow" is the ANSI code page on Windows and UTF-8 on Linux.
#pragma once

#include "platform/mapi.h"

#include <string>

namespace zeb::platform
{

using WideString = std::basic_string<WCHAR>;

/// Characters that the other form cannot represent are replaced (by U+FFFD, or '?' where U+FFFD does not exist); the
/// text after them is kept. `length` is in characters; characters of value 0 are converted like others.
/// @throws std::length_error on Windows beyond 2^31 - 1 characters
std::string NarrowFromWide(const WCHAR* text, size_t length);
WideString WideFromNarrow(const char* text, size_t length);

std::string Utf8FromWide(const WCHAR* text, size_t length);
WideString WideFromUtf8(const char* text, size_t length);

/// The number of bytes of a narrow text that fit in `limit` without splitting a character.
size_t NarrowPrefix(const char* text, size_t length, size_t limit);
size_t Utf8Prefix(const char* text, size_t length, size_t limit);

/// The upper case of one 16-bit unit, independent of language; characters without one, and surrogates, are returned
/// unchanged.
WCHAR UpperWide(WCHAR unit);

/// The length of a terminated 16-bit text in characters.
size_t WideLength(const WCHAR* text);

} // namespace zeb::platform
