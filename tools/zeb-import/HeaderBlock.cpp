#include "tools/zeb-import/HeaderBlock.h"

#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/EncodedWords.h"

namespace zeb::tools
{
namespace
{

std::string NameOf(const std::string& header)
{
    return LowerCase(Trimmed(header.substr(0, header.find(':'))));
}

std::string ValueOf(const std::string& header)
{
    return Trimmed(header.substr(header.find(':') + 1));
}

/// Zero characters and bytes that are not valid UTF-8.
void MendBytes(std::string& header, Notes& notes)
{
    bool plain = true;
    for (const char character : header)
    {
        plain = plain && character > 0;
    }
    if (plain)
    {
        return;
    }
    DecodedText text = DecodeText(header, "");
    if (text.guessed)
    {
        notes.Add("bytes of no known character set in the headers");
    }
    header = std::move(text.utf8);
}

/// "text/plain" out of "Text/Plain; charset=...", without white space.
std::string TypeIn(const std::string& value)
{
    return LowerCase(Trimmed(value.substr(0, value.find(';'))));
}

bool IsUsableType(const std::string& type)
{
    const size_t slash = type.find('/');
    return slash != std::string::npos && slash > 0 && slash + 1 < type.size() &&
           type.find_first_of(" \t\r\n\"<>@,") == std::string::npos;
}

std::string BoundaryIn(const std::string& value)
{
    const GRef<GMimeContentType> type(g_mime_content_type_parse(nullptr, value.c_str()));
    const char* boundary = type ? g_mime_content_type_get_parameter(type.get(), "boundary") : nullptr;
    return boundary != nullptr ? boundary : "";
}

/// Replaces the type before the parameters.
void MakePlainText(std::string& header)
{
    const size_t colon = header.find(':'), parameters = header.find(';', colon);
    header =
        header.substr(0, colon) + ": text/plain" + (parameters == std::string::npos ? "\n" : header.substr(parameters));
}

} // namespace

void HeaderBlock::Add(const std::string& line, bool begins)
{
    if (begins)
    {
        m_headers.push_back(line);
    }
    else
    {
        m_headers.back() += line;
    }
}

HeaderBlock::Kind HeaderBlock::MendType(std::string& header, const std::function<bool(const std::string&)>& occurs,
                                        Notes& notes)
{
    const std::string value = ValueOf(header), type = TypeIn(value);
    if (!IsUsableType(type))
    {
        MakePlainText(header);
        if (type != "text")
        {
            notes.Add("a part without a usable type is read as plain text");
        }
        return Kind::Other;
    }
    if (type == "message/rfc822" || type == "message/global" || type == "message/news")
    {
        return IsEncodedMessage() ? Kind::Other : Kind::Message;
    }
    if (type.compare(0, 10, "multipart/") != 0)
    {
        return Kind::Other;
    }
    m_boundary = BoundaryIn(value);
    if (!m_boundary.empty() && occurs(m_boundary))
    {
        return Kind::Other;
    }
    m_boundary.clear();
    MakePlainText(header);
    notes.Add("a multipart without a usable boundary is read as plain text");
    return Kind::Other;
}

bool HeaderBlock::IsEncodedMessage() const
{
    for (const std::string& header : m_headers)
    {
        if (NameOf(header) == "content-transfer-encoding")
        {
            const std::string encoding = LowerCase(ValueOf(header));
            return encoding == "base64" || encoding == "quoted-printable";
        }
    }
    return false;
}

HeaderBlock::Kind HeaderBlock::Mend(const std::function<bool(const std::string& boundary)>& occurs, Notes& notes)
{
    Kind kind = Kind::Other;
    bool typed = false;
    for (std::string& header : m_headers)
    {
        MendBytes(header, notes);
        if (header.find("=?") != std::string::npos && MendEncodedWords(header))
        {
            notes.Add("a header has bytes that its character set does not have");
        }
        if (NameOf(header) != "content-type")
        {
            continue;
        }
        if (typed)
        {
            // The parser uses the last one.
            header.insert(0, "X-Second-");
        }
        else
        {
            kind = MendType(header, occurs, notes);
        }
        typed = true;
    }
    return kind;
}

std::string HeaderBlock::Text() const
{
    std::string text;
    for (const std::string& header : m_headers)
    {
        text += header;
    }
    return text;
}

} // namespace zeb::tools
