#include "tools/zeb-import/MimeParts.h"

#include "tools/common/Failure.h"
#include "tools/zeb-import/Charset.h"

#include <cstring>

namespace zeb::tools
{
namespace
{

bool IsType(GMimeObject* part, const char* type, const char* subtype)
{
    return g_mime_content_type_is_type(g_mime_object_get_content_type(part), type, subtype) != 0;
}

void FindIn(GMimeObject* part, bool isRoot, TextParts& text)
{
    if (GMIME_IS_MULTIPART(part))
    {
        const bool alternative = IsType(part, "multipart", "alternative");
        for (int i = 0, count = g_mime_multipart_get_count(GMIME_MULTIPART(part)); i < count; ++i)
        {
            FindIn(g_mime_multipart_get_part(GMIME_MULTIPART(part), i), false, text);
            if (!alternative && (text.plain != nullptr || text.html != nullptr))
            {
                return;
            }
        }
        return;
    }
    if (!GMIME_IS_PART(part) || (g_mime_part_is_attachment(GMIME_PART(part)) != 0) ||
        (!isRoot && !FileNameOf(part).empty()))
    {
        return;
    }
    if (text.plain == nullptr && IsType(part, "text", "plain"))
    {
        text.plain = GMIME_PART(part);
    }
    else if (text.html == nullptr && IsType(part, "text", "html"))
    {
        text.html = GMIME_PART(part);
    }
}

std::string BytesIn(GMimeStream* stream)
{
    const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream));
    return std::string(reinterpret_cast<const char*>(bytes->data), bytes->len);
}

/// The bytes as in the message, including the transfer encoding.
std::string EncodedBytes(GMimeDataWrapper* content)
{
    const GRef<GMimeStream> copy(g_mime_stream_mem_new());
    GMimeStream* stream = g_mime_data_wrapper_get_stream(content);
    g_mime_stream_reset(stream);
    g_mime_stream_write_to_stream(stream, copy.get());
    return BytesIn(copy.get());
}

bool IsBase64Character(char character)
{
    return g_ascii_isalnum(character) || (character != '\0' && (std::strchr("+/= \t\r\n", character) != nullptr));
}

/// The end of the base64 text: the first line with an invalid character, or with two words after the padding. npos when
/// all of it is base64.
size_t EndOfBase64(const std::string& text)
{
    bool padded = false;
    for (size_t line = 0; line < text.size();)
    {
        const size_t next = std::min(text.find('\n', line), text.size() - 1) + 1;
        const std::string words = Trimmed(text.substr(line, next - line));
        const bool isBase64 = std::all_of(words.begin(), words.end(), IsBase64Character);
        if (!isBase64 || (padded && words.find_first_of(" \t") != std::string::npos))
        {
            return line;
        }
        padded = padded || (!words.empty() && words.back() == '=');
        line = next;
    }
    return std::string::npos;
}

std::string FromBase64(const std::string& text)
{
    GMimeEncoding state;
    g_mime_encoding_init_decode(&state, GMIME_CONTENT_ENCODING_BASE64);
    std::string bytes(g_mime_encoding_outlen(&state, text.size()) + 4, '\0');
    bytes.resize(g_mime_encoding_flush(&state, text.data(), text.size(), bytes.data()));
    return bytes;
}

bool IsBase64(GMimePart* part)
{
    return g_mime_part_get_content_encoding(part) == GMIME_CONTENT_ENCODING_BASE64;
}

/// The character set that an HTML page declares at its beginning; empty when it declares none.
std::string CharsetInPage(const std::string& html)
{
    constexpr size_t Beginning = 2048;
    const std::string head = LowerCase(html.substr(0, Beginning));
    const size_t found = head.find("charset=");
    if (found == std::string::npos || head.rfind("<meta", found) == std::string::npos)
    {
        return {};
    }
    const size_t name = head.find_first_not_of("\"' ", found + 8);
    return name == std::string::npos ? std::string() : head.substr(name, head.find_first_of("\"' ;/>", name) - name);
}

} // namespace

TextParts TextPartsOf(GMimeObject* root)
{
    TextParts text;
    if (root != nullptr)
    {
        FindIn(root, true, text);
    }
    return text;
}

std::string DecodedBytes(GMimePart* part, Notes& notes)
{
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (content == nullptr)
    {
        return {};
    }
    if (IsBase64(part) && EndOfBase64(EncodedBytes(content)) != std::string::npos)
    {
        notes.Add("an attachment has characters that are not base64, which were removed");
    }
    const GRef<GMimeStream> stream(g_mime_stream_mem_new());
    if (g_mime_data_wrapper_write_to_stream(content, stream.get()) < 0)
    {
        throw ToolError("a part cannot be decoded");
    }
    return BytesIn(stream.get());
}

std::string TextOf(GMimePart* part, Notes& notes)
{
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (content == nullptr)
    {
        return {};
    }
    std::string bytes;
    const std::string encoded = IsBase64(part) ? EncodedBytes(content) : std::string();
    const size_t end = EndOfBase64(encoded);
    if (end == std::string::npos)
    {
        bytes = DecodedBytes(part, notes);
    }
    else
    {
        notes.Add("text that is not base64 is kept unchanged");
        bytes = FromBase64(encoded.substr(0, end));
        bytes += (bytes.empty() || bytes.back() == '\n' ? "" : "\n") + encoded.substr(end);
    }
    const char* named = g_mime_object_get_content_type_parameter(GMIME_OBJECT(part), "charset");
    std::string charset = named != nullptr ? named : "";
    if (charset.empty() && IsType(GMIME_OBJECT(part), "text", "html"))
    {
        charset = CharsetInPage(bytes);
    }
    DecodedText text = DecodeText(bytes, charset);
    if (text.guessed)
    {
        notes.Add(charset.empty() ? "the text has bytes of no known character set"
                                  : "the text has bytes that are not " + charset);
    }
    return std::move(text.utf8);
}

std::string FileNameOf(GMimeObject* part)
{
    if (GMIME_IS_PART(part))
    {
        const char* name = g_mime_part_get_filename(GMIME_PART(part));
        return name != nullptr ? name : "";
    }
    for (const char* name : {g_mime_object_get_content_disposition_parameter(part, "filename"),
                             g_mime_object_get_content_type_parameter(part, "name")})
    {
        if (name != nullptr && *name)
        {
            return name;
        }
    }
    return {};
}

} // namespace zeb::tools
