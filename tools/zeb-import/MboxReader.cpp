#include "tools/zeb-import/MboxReader.h"

#include "tools/common/Failure.h"
#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/MessageText.h"

#include <filesystem>
#include <regex>

namespace zeb::tools
{
namespace
{

/// Longer lines are text.
constexpr size_t LongestSeparator = 1000;

bool IsFrom(const std::string& line)
{
    return line.compare(0, 5, "From ") == 0;
}

/// Removes one ">" from ">From ", ">>From " and so on.
void Unquote(std::string& line)
{
    const size_t from = line.find_first_not_of('>');
    if (from != std::string::npos && from > 0 && line.compare(from, 5, "From ") == 0)
    {
        line.erase(0, 1);
    }
}

/// The empty line before a separator belongs to the file format, not to the message.
void DropLastEmptyLine(std::string& bytes)
{
    for (const char* end : {"\r\n\r\n", "\n\n"})
    {
        const size_t size = std::char_traits<char>::length(end);
        if (bytes.size() >= size && bytes.compare(bytes.size() - size, size, end) == 0)
        {
            bytes.resize(bytes.size() - size / 2);
            return;
        }
    }
}

/// The number in the header of that name; empty when the header is missing or not a number.
std::optional<uint64_t> ContentLength(const std::string& headers)
{
    constexpr const char* Name = "\ncontent-length:";
    constexpr size_t MostDigits = 15;
    const std::string text = "\n" + LowerCase(headers);
    const size_t found = text.find(Name);
    if (found == std::string::npos)
    {
        return std::nullopt;
    }
    const size_t begin = found + std::char_traits<char>::length(Name);
    const std::string number = Trimmed(text.substr(begin, text.find('\n', begin) - begin));
    if (number.empty() || number.size() > MostDigits || number.find_first_not_of("0123456789") != std::string::npos)
    {
        return std::nullopt;
    }
    return std::stoull(number);
}

/// Whether a text line looks like a separator: a file with such unquoted lines has no quoting to remove.
bool HasUnquoted(const std::string& body)
{
    return IsFrom(body) || body.find("\nFrom ") != std::string::npos;
}

std::string Unquoted(const std::string& body)
{
    std::string result;
    for (size_t at = 0; at < body.size();)
    {
        const size_t end = body.find('\n', at);
        std::string line = body.substr(at, end == std::string::npos ? end : end + 1 - at);
        at += line.size();
        Unquote(line);
        result += line;
    }
    return result;
}

} // namespace

bool IsSeparator(const std::string& text)
{
    if (!IsFrom(text) || text.size() > LongestSeparator)
    {
        return false;
    }
    static const std::regex date(
        "(?:^|[ ,])"
        "(?:(?:Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec) +[0-9]{1,2} "
        "+[0-9]{1,2}:[0-9]{2}(?::[0-9]{2})?"
        "(?: +(?:[+-][0-9]{4}|[A-Za-z]{1,5}))* +(?:[0-9]{4}|[0-9]{2})"
        "|[0-9]{1,2}[ -](?:Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)[a-z]*[ -](?:[0-9]{4}|[0-9]{2}) +"
        "[0-9]{1,2}:[0-9]{2}(?::[0-9]{2})?)"
        "(?: +(?:[+-][0-9]{4}|[A-Za-z]{1,5}|\\([^)]*\\)))*(?: +remote from .*)?$");
    return std::regex_search(Trimmed(text), date);
}

MboxReader::MboxReader(const std::string& file)
    : m_file(file)
{
    const std::filesystem::path path = std::filesystem::u8path(file);
    std::error_code failure;
    if (!std::filesystem::is_regular_file(path, failure))
    {
        throw ToolError("'" + file + "' is not a file");
    }
    m_size = std::filesystem::file_size(path, failure);
    m_stream.open(path, std::ios::binary);
    if (failure || !m_stream)
    {
        throw ToolError("'" + file + "' cannot be read");
    }
    SkipToFirst();
}

void MboxReader::SkipToFirst()
{
    std::string line;
    bool first = true;
    while (ReadLine(line))
    {
        if (first && line.compare(0, 3, "\xEF\xBB\xBF") == 0)
        {
            line.erase(0, 3);
        }
        first = false;
        if (IsFrom(line))
        {
            m_separator = m_offset - line.size();
            return;
        }
        if (!IsBlank(line))
        {
            break;
        }
    }
    throw ToolError("'" + m_file + "' is not an mbox file: it does not begin with \"From \"");
}

bool MboxReader::ReadLine(std::string& line)
{
    if (!std::getline(m_stream, line))
    {
        if (m_stream.bad())
        {
            throw ToolError("'" + m_file + "' cannot be read");
        }
        return false;
    }
    if (!m_stream.eof())
    {
        line += '\n';
    }
    m_offset += line.size();
    return true;
}

bool MboxReader::Next(MboxMessage& message)
{
    if (!m_separator)
    {
        return false;
    }
    message.number = ++m_number;
    message.offset = *m_separator;
    message.bytes.clear();
    m_separator.reset();
    ReadHeaders(message);
    if (ReadCountedBody(message))
    {
        return true;
    }
    ReadBody(message);
    DropLastEmptyLine(message.bytes);
    return true;
}

void MboxReader::ReadHeaders(MboxMessage& message)
{
    m_firstOfBody.clear();
    std::string line;
    while (ReadLine(line))
    {
        const bool isHeader = IsHeaderLine(line) || line[0] == ' ' || line[0] == '\t';
        // Some programs write a second line of this kind after the separator.
        const bool isEnvelope = message.bytes.empty() && (IsFrom(line) || line.compare(0, 6, ">From ") == 0);
        if (!isHeader && !isEnvelope && !IsBlank(line))
        {
            m_firstOfBody = line;
            return;
        }
        message.bytes += line;
        if (IsBlank(line))
        {
            return;
        }
    }
}

bool MboxReader::ReadCountedBody(MboxMessage& message)
{
    const std::optional<uint64_t> length = ContentLength(message.bytes);
    const bool separated = m_firstOfBody.empty();
    if (!length || !separated || *length > m_size - m_offset || !EndsAt(m_offset + *length))
    {
        return false;
    }
    std::string body(static_cast<size_t>(*length), '\0');
    m_stream.clear();
    m_stream.seekg(static_cast<std::streamoff>(m_offset));
    m_stream.read(body.data(), static_cast<std::streamsize>(body.size()));
    m_offset += body.size();
    message.bytes += HasUnquoted(body) ? body : Unquoted(body);
    std::string line;
    bool emptyLine = false;
    while (ReadLine(line))
    {
        if (!IsBlank(line))
        {
            m_separator = m_offset - line.size();
            break;
        }
        emptyLine = true;
    }
    if (!emptyLine)
    {
        DropLastEmptyLine(message.bytes);
    }
    return true;
}

/// Whether after at most one empty line a separator or the end of the file follows.
bool MboxReader::EndsAt(uint64_t offset)
{
    const uint64_t here = m_offset;
    m_stream.clear();
    m_stream.seekg(static_cast<std::streamoff>(offset));
    std::string line;
    bool isEnd = !ReadLine(line) || IsSeparator(line);
    if (!isEnd && IsBlank(line))
    {
        isEnd = !ReadLine(line) || IsSeparator(line);
    }
    m_offset = here;
    m_stream.clear();
    m_stream.seekg(static_cast<std::streamoff>(here));
    return isEnd;
}

void MboxReader::ReadBody(MboxMessage& message)
{
    std::string line = m_firstOfBody;
    bool afterBlank = m_firstOfBody.empty();
    if (!line.empty())
    {
        message.bytes += line;
    }
    while (ReadLine(line))
    {
        if (afterBlank && IsSeparator(line))
        {
            m_separator = m_offset - line.size();
            return;
        }
        afterBlank = IsBlank(line);
        Unquote(line);
        message.bytes += line;
    }
}

} // namespace zeb::tools
