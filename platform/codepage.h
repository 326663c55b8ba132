// Text in the code pages of Windows.
#pragma once

#include <string>

namespace zeb::platform
{

/// Decodes text in a code page of Windows (1252, 932, 1200, 65001...) to UTF-8. Bytes that are not text in it are
/// replaced, by U+FFFD or as the system does.
/// @return false when the system does not know the code page; `utf8` is unchanged then
/// @throws std::length_error on Windows beyond 2^31 - 1 bytes
bool Utf8FromCodePage(const std::string& bytes, unsigned codePage, std::string& utf8);

} // namespace zeb::platform
