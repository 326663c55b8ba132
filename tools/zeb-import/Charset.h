// Text of mail in any character set.
#pragma once

#include <string>

namespace zeb::tools
{

struct DecodedText
{
    std::string utf8;     ///< without zero characters
    bool guessed = false; ///< whether bytes were not text of the named character set
};

/// Turns bytes into text and drops none of them: what `charset` does not have is read as UTF-8 when all of it
/// is UTF-8, otherwise byte by byte as windows-1252 or, when that has no character either, as U+FFFD. A zero
/// character becomes U+FFFD too, as MAPI's texts end at one.
/// @param charset its MIME name; empty or unknown: UTF-8
DecodedText DecodeText(const std::string& bytes, const std::string& charset);

/// The same text with "\r\n" at the end of each line.
std::string WithCrLf(const std::string& text);

/// An ASCII text in lower case.
std::string LowerCase(std::string text);

/// The text without the white space at both ends.
std::string Trimmed(const std::string& text);

} // namespace zeb::tools
