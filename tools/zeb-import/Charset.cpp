#include "tools/zeb-import/Charset.h"

#include "tools/zeb-import/Mime.h"

namespace zeb::tools
{
namespace
{

constexpr const char* Replacement = "\xEF\xBF\xBD";

/// The characters of windows-1252 from 0x80 to 0x9F; 0 for undefined ones.
constexpr gunichar Windows1252[] = {0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0,      0x017D, 0,
                                    0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

void AppendByte(std::string& text, unsigned char byte)
{
    gunichar character = byte;
    if (byte >= 0x80 && byte <= 0x9F)
    {
        character = Windows1252[byte - 0x80];
    }
    if (character == 0)
    {
        text += Replacement;
        return;
    }
    char utf8[6];
    text.append(utf8, static_cast<size_t>(g_unichar_to_utf8(character, utf8)));
}

/// A conversion to UTF-8; empty when iconv does not support the character set.
class Converter
{
public:
    explicit Converter(const std::string& charset)
    {
        // A suffix such as "//IGNORE" would make iconv skip bytes.
        if (charset.find('/') == std::string::npos)
        {
            m_iconv = g_iconv_open("UTF-8", g_mime_charset_iconv_name(charset.c_str()));
        }
    }
    ~Converter()
    {
        if (IsKnown())
        {
            g_iconv_close(m_iconv);
        }
    }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    bool IsKnown() const { return m_iconv != Unknown(); }

    DecodedText Convert(const std::string& bytes) const
    {
        // The buffer is full when a character may not fit in what is left of it: errno belongs to the C runtime of the
        // library, which on Windows is not always the program's.
        constexpr gsize LargestCharacter = 32;
        DecodedText result;
        char* in = const_cast<char*>(bytes.data());
        gsize left = bytes.size();
        while (left > 0)
        {
            char buffer[4096];
            char* out = buffer;
            gsize room = sizeof buffer;
            const gsize code = g_iconv(m_iconv, &in, &left, &out, &room);
            const bool stopped = code == static_cast<gsize>(-1) && room >= LargestCharacter;
            result.utf8.append(buffer, static_cast<size_t>(out - buffer));
            if (!stopped)
            {
                continue;
            }
            AppendByte(result.utf8, static_cast<unsigned char>(*in));
            result.guessed = true;
            ++in;
            --left;
        }
        return result;
    }

private:
    static GIConv Unknown() { return reinterpret_cast<GIConv>(-1); }
    GIConv m_iconv = Unknown();
};

void ReplaceZeros(DecodedText& text)
{
    for (size_t at = 0; (at = text.utf8.find('\0', at)) != std::string::npos;)
    {
        text.utf8.replace(at, 1, Replacement);
        text.guessed = true;
    }
}

DecodedText Decode(const std::string& bytes, const std::string& charset)
{
    const Converter utf8("UTF-8");
    if (charset.empty())
    {
        return utf8.Convert(bytes);
    }
    const Converter named(charset);
    if (named.IsKnown())
    {
        DecodedText text = named.Convert(bytes);
        if (!text.guessed)
        {
            return text;
        }
        DecodedText other = utf8.Convert(bytes);
        if (!other.guessed)
        {
            text.utf8 = std::move(other.utf8);
        }
        return text;
    }
    DecodedText text = utf8.Convert(bytes);
    for (const char byte : bytes)
    {
        text.guessed = text.guessed || static_cast<unsigned char>(byte) >= 0x80;
    }
    return text;
}

} // namespace

DecodedText DecodeText(const std::string& bytes, const std::string& charset)
{
    DecodedText text = Decode(bytes, charset);
    ReplaceZeros(text);
    return text;
}

std::string WithCrLf(const std::string& text)
{
    std::string result;
    result.reserve(text.size() + text.size() / 32);
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (text[i] != '\r' && text[i] != '\n')
        {
            result += text[i];
            continue;
        }
        result += "\r\n";
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n')
        {
            ++i;
        }
    }
    return result;
}

std::string LowerCase(std::string text)
{
    for (char& character : text)
    {
        character = g_ascii_tolower(character);
    }
    return text;
}

std::string Trimmed(const std::string& text)
{
    constexpr const char* Space = " \t\r\n";
    const size_t first = text.find_first_not_of(Space);
    return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(Space) + 1 - first);
}

} // namespace zeb::tools
