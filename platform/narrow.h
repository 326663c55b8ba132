// UTF-8 and narrow text: the ANSI code page on Windows; on Linux narrow text is UTF-8, and nothing changes.
#pragma once

#include <optional>
#include <string>

namespace zeb::platform
{

/// Characters outside the code page are replaced.
std::string NarrowFromUtf8(const std::string& text);
std::string Utf8FromNarrow(const std::string& text);

/// A path (UTF-8) of the same file that narrow text can represent completely: the path itself, or on Windows its short
/// form; empty when there is none.
std::optional<std::string> NarrowablePath(const std::string& path);

} // namespace zeb::platform
