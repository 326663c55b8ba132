// Output of the tools: UTF-8 on both targets, safe for a terminal, in columns.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>
#include <string_view>

namespace zeb::tools
{

/// Wide text as UTF-8.
std::string Utf8(const CStringW& text);

/// Narrow text (the ANSI code page on Windows) as UTF-8.
std::string Utf8FromNarrow(const std::string& text);

/// Text as valid UTF-8: invalid bytes become U+FFFD.
std::string ValidUtf8(const std::string& text);

/// UTF-8 as the library's wide text.
CStringW WideFromUtf8(const std::string& text);

/// UTF-8 as narrow text.
std::string NarrowFromUtf8(const std::string& text);

/// The text with every control character replaced by a blank, so that a subject cannot move the cursor or break a line.
std::string OneLine(std::string text);

/// The columns of the code point at `at`, which is advanced past it: none for combining marks and joiners, two for wide
/// characters. Each invalid sequence has the column of its U+FFFD.
size_t NextColumns(std::string_view text, size_t& at);

/// The columns that UTF-8 text takes on a terminal.
size_t DisplayWidth(std::string_view text);

/// The text padded with blanks to `width` columns, or truncated to it with an ellipsis.
std::string Fitted(const std::string& text, size_t width);

/// The text truncated to `width` columns with an ellipsis; unchanged when it fits or `width` is 0.
std::string Shortened(const std::string& text, size_t width);

/// The text with blanks before it, `width` columns wide or wider.
std::string RightAligned(const std::string& text, size_t width);

/// 1234567 as "1,234,567".
std::string Grouped(unsigned long long number);

/// "1 message", "1,234 messages".
std::string Counted(unsigned long long count, const char* one, const char* many);

/// Writes to standard output. @throws std::runtime_error when it cannot be written (full disk, closed pipe)
void Print(const std::string& text);

/// Flushes the buffer. @throws std::runtime_error as Print
void FlushOutput();

} // namespace zeb::tools
