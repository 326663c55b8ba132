#include "tools/zeb/MimeEncoding.h"

#include "platform/text.h"

#include <algorithm>
#include <cstring>

namespace zeb::tools
{
namespace
{

constexpr size_t LineColumns = 76;
constexpr size_t LineBytes = LineColumns / 4 * 3;
/// Of an encoded word: with "=?utf-8?B?" and "?=" it fits a line after the name of a header.
constexpr size_t WordBytes = 39;
/// Of a parameter's piece before its encoding; each byte may become three characters.
constexpr size_t PieceColumns = 50;

void AppendGroup(std::string& out, const unsigned char* bytes, size_t count)
{
    constexpr char Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const uint32_t group = static_cast<uint32_t>(bytes[0]) << 16 |
                           static_cast<uint32_t>(count > 1 ? bytes[1] : 0) << 8 |
                           static_cast<uint32_t>(count > 2 ? bytes[2] : 0);
    for (size_t i = 0; i < 4; ++i)
    {
        out += i <= count ? Digits[group >> (18 - 6 * i) & 63] : '=';
    }
}

void AppendHex(std::string& out, char lead, unsigned char byte)
{
    constexpr char Digits[] = "0123456789ABCDEF";
    out += lead;
    out += Digits[byte >> 4];
    out += Digits[byte & 15];
}

bool IsPrintable(unsigned char byte)
{
    return byte >= 0x20 && byte < 0x7F;
}

bool IsAscii(const std::string& text)
{
    return std::all_of(text.begin(), text.end(),
                       [](char each) { return IsPrintable(static_cast<unsigned char>(each)); });
}

/// Whether a mail program would take the line for the beginning of a message in an mbox file, or for such a line that
/// another one has marked.
bool IsFromLine(const std::string& line)
{
    const size_t from = line.find_first_not_of('>');
    return from != std::string::npos && line.compare(from, 5, "From ") == 0;
}

/// Quoted-printable of one line without its end.
std::string QuotedLine(const std::string& line)
{
    std::string out;
    size_t used = 0;
    const auto append = [&](const std::string& piece)
    {
        if (used + piece.size() > LineColumns - 1)
        {
            out += std::string("=") + LineEnd;
            used = 0;
        }
        out += piece;
        used += piece.size();
    };
    const bool isFrom = IsFromLine(line);
    for (size_t i = 0; i < line.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(line[i]);
        const bool isBlank = byte == ' ' || byte == '\t';
        const bool isLastBlank = isBlank && i + 1 == line.size();
        const bool isPlain = ((IsPrintable(byte) && byte != '=') || isBlank) && !isLastBlank;
        // "From " is hidden in a broken line too, so its letter is encoded wherever it may come to stand first.
        const bool isHidden = (isFrom && i == 0) || (byte == 'F' && used + 1 > LineColumns - 1);
        std::string piece;
        if (isPlain && !isHidden)
        {
            piece = static_cast<char>(byte);
        }
        else
        {
            AppendHex(piece, '=', byte);
        }
        append(piece);
    }
    return out;
}

/// Calls `take(line, hasEnd)` for each line; only "\r\n" ends one.
template <class Take>
void ForEachLine(const std::string& text, Take take)
{
    for (size_t begin = 0; begin < text.size();)
    {
        const size_t end = text.find(LineEnd, begin);
        if (end == std::string::npos)
        {
            take(text.substr(begin), false);
            return;
        }
        take(text.substr(begin, end - begin), true);
        begin = end + 2;
    }
}

} // namespace

void Base64Lines::Add(const std::string& bytes)
{
    m_rest += bytes;
    std::string lines;
    size_t at = 0;
    for (; m_rest.size() - at >= LineBytes; at += LineBytes)
    {
        lines += Base64(m_rest.substr(at, LineBytes)) + LineEnd;
    }
    m_rest.erase(0, at);
    if (!lines.empty())
    {
        m_take(lines);
    }
}

void Base64Lines::End()
{
    if (!m_rest.empty())
    {
        m_take(Base64(m_rest) + LineEnd);
        m_rest.clear();
    }
}

std::string Base64(const std::string& bytes)
{
    std::string out;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data());
    for (size_t at = 0; at < bytes.size(); at += 3)
    {
        AppendGroup(out, data + at, std::min<size_t>(3, bytes.size() - at));
    }
    return out;
}

std::string QuotedPrintable(const std::string& text)
{
    std::string out;
    ForEachLine(text, [&](const std::string& line, bool hasEnd) { out += QuotedLine(line) + (hasEnd ? LineEnd : ""); });
    return out;
}

TextEncoding EncodingOf(const std::string& text)
{
    constexpr size_t LongestLine = 78;
    bool isUnchanged = true;
    ForEachLine(text, [&](const std::string& line, bool)
    {
        const bool endsBlank = !line.empty() && (line.back() == ' ' || line.back() == '\t');
        const bool isPlain = std::all_of(line.begin(), line.end(), [](char each)
        { return each == '\t' || IsPrintable(static_cast<unsigned char>(each)); });
        isUnchanged = isUnchanged && isPlain && !endsBlank && line.size() <= LongestLine && !IsFromLine(line) &&
                      line.compare(0, 2, "--") != 0;
    });
    if (isUnchanged)
    {
        return TextEncoding::Unchanged;
    }
    const auto others = static_cast<size_t>(
        std::count_if(text.begin(), text.end(), [](char each) { return static_cast<unsigned char>(each) >= 0x80; }));
    return others > text.size() / 6 ? TextEncoding::Base64 : TextEncoding::Quoted;
}

std::string EncodedWords(const std::string& text)
{
    // What looks like an encoded word is encoded too, or it would be decoded.
    if (IsAscii(text) && text.find("=?") == std::string::npos)
    {
        return text;
    }
    std::string words;
    for (size_t at = 0; at < text.size();)
    {
        const size_t size = platform::Utf8Prefix(text.data() + at, text.size() - at, WordBytes);
        words += (words.empty() ? "" : " ") + ("=?utf-8?B?" + Base64(text.substr(at, size)) + "?=");
        at += size;
    }
    return words;
}

std::string HeaderLine(const std::string& name, const std::string& text)
{
    constexpr size_t Longest = 78;
    std::string out = name + ":";
    size_t used = out.size();
    for (size_t begin = 0; begin <= text.size();)
    {
        const size_t end = std::min(text.find(' ', begin), text.size());
        const std::string word = text.substr(begin, end - begin);
        // A line of blanks alone would end the headers for some readers.
        const bool breaks = used + 1 + word.size() > Longest && !word.empty() && begin != 0;
        out += (breaks ? "\r\n " : " ") + word;
        used = breaks ? 1 + word.size() : used + 1 + word.size();
        begin = end + 1;
    }
    return out + LineEnd;
}

std::string QuotedString(const std::string& text)
{
    std::string quoted = "\"";
    for (const char each : text)
    {
        quoted += each == '"' || each == '\\' ? "\\" + std::string(1, each) : std::string(1, each);
    }
    return quoted + "\"";
}

std::string Parameter(const std::string& name, const std::string& value)
{
    if (IsAscii(value) && value.size() <= PieceColumns)
    {
        return ";\r\n " + name + "=" + QuotedString(value);
    }
    std::string out, piece;
    size_t number = 0;
    const auto flush = [&]
    {
        out += ";\r\n " + name + "*" + std::to_string(number) + "*=" + (number == 0 ? "utf-8''" : "") + piece;
        piece.clear();
        ++number;
    };
    for (const char each : value)
    {
        const auto byte = static_cast<unsigned char>(each);
        const bool isPlain =
            byte < 0x80 && (std::isalnum(byte) != 0 || std::strchr("-._~", each) != nullptr) && each != '\0';
        if (isPlain)
        {
            piece += each;
        }
        else
        {
            AppendHex(piece, '%', byte);
        }
        if (piece.size() >= PieceColumns)
        {
            flush();
        }
    }
    if (!piece.empty() || number == 0)
    {
        flush();
    }
    return out;
}

} // namespace zeb::tools
