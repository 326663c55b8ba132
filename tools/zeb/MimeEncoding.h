// The encodings of mail: RFC 2045, 2047 and 2231. Lines end with "\r\n".
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace zeb::tools
{

constexpr const char* LineEnd = "\r\n";

/// Base64 in lines of 76 characters, from pieces of any size.
class Base64Lines
{
public:
    explicit Base64Lines(std::function<void(const std::string& lines)> take)
        : m_take(std::move(take))
    {
    }
    void Add(const std::string& bytes);
    /// Writes the rest and the last line end.
    void End();

private:
    std::function<void(const std::string&)> m_take;
    std::string m_rest; ///< less than a line
};

/// Base64 in one line.
std::string Base64(const std::string& bytes);

/// Quoted-printable text in lines of at most 76 characters. Line ends "\r\n" stay such; other controls are encoded.
std::string QuotedPrintable(const std::string& text);

/// How a text is best written: unchanged, as quoted-printable or as base64.
enum class TextEncoding
{
    Unchanged, ///< ASCII in lines of at most 78 characters, none of which a mail program would change
    Quoted,
    Base64,
};
TextEncoding EncodingOf(const std::string& text);

/// A header of encoded text with its line end, folded at blanks where lines would be longer than 78 characters.
std::string HeaderLine(const std::string& name, const std::string& text);

/// A text of an address, a comment or a subject: unchanged when it is ASCII, else encoded words with blanks between them.
std::string EncodedWords(const std::string& text);

/// A text between quotation marks, with a backslash before those that it has.
std::string QuotedString(const std::string& text);

/// A parameter of a structured header with the line break before it: ";\r\n name=\"value\"", or with percent signs in
/// several pieces for a value that is long or not ASCII.
std::string Parameter(const std::string& name, const std::string& value);

} // namespace zeb::tools
