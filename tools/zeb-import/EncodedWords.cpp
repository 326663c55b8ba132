#include "tools/zeb-import/EncodedWords.h"

#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/Mime.h"

namespace zeb::tools
{
namespace
{

struct Word
{
    size_t end = 0;
    std::string charset; ///< lower case, without a language
    std::string bytes;
};

std::string Decoded(char encoding, std::string text)
{
    const bool isQuoted = encoding == 'q' || encoding == 'Q';
    if (isQuoted)
    {
        for (char& character : text)
        {
            if (character == '_')
            {
                character = ' ';
            }
        }
    }
    GMimeEncoding state;
    g_mime_encoding_init_decode(&state,
                                isQuoted ? GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE : GMIME_CONTENT_ENCODING_BASE64);
    std::string bytes(g_mime_encoding_outlen(&state, text.size()) + 4, '\0');
    bytes.resize(g_mime_encoding_flush(&state, text.data(), text.size(), bytes.data()));
    return bytes;
}

/// The encoded word that begins at `begin`, where "=?" is. @return false when there is no valid word
bool ReadWord(const std::string& header, size_t begin, Word& word)
{
    const size_t charsetEnd = header.find('?', begin + 2);
    if (charsetEnd == std::string::npos || charsetEnd + 2 >= header.size() || header[charsetEnd + 2] != '?')
    {
        return false;
    }
    const char encoding = header[charsetEnd + 1];
    if (std::string("bBqQ").find(encoding) == std::string::npos)
    {
        return false;
    }
    const size_t text = charsetEnd + 3, textEnd = header.find('?', text);
    if (textEnd == std::string::npos || header.compare(textEnd, 2, "?=") != 0)
    {
        return false;
    }
    if (header.find_first_of(" \t\r\n", begin) < textEnd)
    {
        return false;
    }
    const std::string charset = header.substr(begin + 2, charsetEnd - begin - 2);
    word.end = textEnd + 2;
    word.charset = LowerCase(charset.substr(0, charset.find('*')));
    word.bytes = Decoded(encoding, header.substr(text, textEnd - text));
    return true;
}

/// Encoded words separated only by white space, which is not part of their text.
struct Sequence
{
    size_t end = 0;
    size_t words = 0;
    DecodedText text;
};

/// Where the next word begins after the white space at `end`; npos when there is other text.
size_t NextWord(const std::string& header, size_t end)
{
    const size_t next = header.find_first_not_of(" \t\r\n", end);
    return next != std::string::npos && header.compare(next, 2, "=?") == 0 ? next : std::string::npos;
}

/// Words of the same character set are decoded together: a character may be split between two words.
Sequence ReadSequence(const std::string& header, size_t begin)
{
    Sequence sequence;
    std::string charset, bytes;
    const auto decode = [&]
    {
        const DecodedText text = DecodeText(bytes, charset);
        sequence.text.utf8 += text.utf8;
        sequence.text.guessed = sequence.text.guessed || text.guessed;
        bytes.clear();
    };
    Word word;
    for (size_t at = begin; at != std::string::npos && ReadWord(header, at, word); at = NextWord(header, word.end))
    {
        if (sequence.words++ > 0 && word.charset != charset)
        {
            decode();
        }
        charset = word.charset;
        bytes += word.bytes;
        sequence.end = word.end;
    }
    decode();
    return sequence;
}

std::string Utf8Word(const std::string& text)
{
    const GText base64(g_base64_encode(reinterpret_cast<const guchar*>(text.data()), text.size()));
    return "=?utf-8?B?" + std::string(base64.get()) + "?=";
}

} // namespace

bool MendEncodedWords(std::string& header)
{
    bool guessed = false;
    std::string result;
    size_t copied = 0;
    for (size_t at = 0; (at = header.find("=?", at)) != std::string::npos;)
    {
        const Sequence sequence = ReadSequence(header, at);
        if (sequence.words == 0)
        {
            at += 2;
            continue;
        }
        if (sequence.text.guessed || sequence.words > 1)
        {
            result += header.substr(copied, at - copied) + Utf8Word(sequence.text.utf8);
            copied = sequence.end;
            guessed = guessed || sequence.text.guessed;
        }
        at = sequence.end;
    }
    header = result + header.substr(copied);
    return guessed;
}

} // namespace zeb::tools
