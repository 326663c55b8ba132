// Narrow and 16-bit text. "Narrow" is the ANSI code page on Windows and UTF-8 on Linux.
#pragma once

#include "platform/mapi.h"

#include <string>

namespace zeb::platform
{

using WideString = std::basic_string<WCHAR>;

/// Never fails: what the other form can not say is replaced, and nothing behind it is lost.
std::string NarrowFromWide(const WCHAR* text, size_t length);
WideString WideFromNarrow(const char* text, size_t length);

std::string Utf8FromWide(const WCHAR* text, size_t length);
WideString WideFromUtf8(const char* text, size_t length);

/// The length of a terminated 16-bit text in characters.
size_t WideLength(const WCHAR* text);

} // namespace zeb::platform
