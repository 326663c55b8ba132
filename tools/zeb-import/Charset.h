// Decodes mail text in any character set.
#pragma once

#include <string>

namespace zeb::tools
{

struct DecodedText
{
    std::string utf8;     ///< without zero characters
    bool guessed = false; ///< whether bytes were not text of the named character set
};

/// Decodes bytes to text and drops none: bytes that are invalid in `charset` are read as UTF-8 when all of them are
/// valid UTF-8, otherwise byte by byte as windows-1252 or, when undefined there, as U+FFFD. A zero character becomes
/// U+FFFD too, because it ends a MAPI text.
/// @param charset its MIME name; empty or unknown: UTF-8
DecodedText DecodeText(const std::string& bytes, const std::string& charset);

/// The same text with "\r\n" at the end of each line.
std::string WithCrLf(const std::string& text);

/// An ASCII text in lower case.
std::string LowerCase(std::string text);

/// The text without the white space at both ends.
std::string Trimmed(const std::string& text);

} // namespace zeb::tools
