// UTF-8 and narrow text: the ANSI code page on Windows; on Linux narrow text is UTF-8, and nothing changes.
#pragma once

#include <optional>
#include <string>

namespace zeb::platform
{

/// What the code page cannot say is replaced.
std::string NarrowFromUtf8(const std::string& text);
std::string Utf8FromNarrow(const std::string& text);

/// A path, in UTF-8, of the same file that narrow text can say whole: the path itself, or on Windows its short form;
/// nothing when there is none.
std::optional<std::string> NarrowablePath(const std::string& path);

} // namespace zeb::platform
