#include "tools/zeb/MimeWriter.h"

#include "platform/tags.h"
#include "tools/common/HtmlText.h"
#include "tools/common/MailProperties.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyReader.h"
#include "tools/common/Times.h"
#include "tools/zeb/MimeEncoding.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string_view>

namespace zeb::tools
{
namespace
{

constexpr LONG Utf8CodePage = 65001;

std::optional<FILETIME> TimeIn(const Properties& properties, ULONG tag)
{
    const Property* property = FindProperty(properties, tag);
    return property == nullptr ? std::nullopt : std::optional(NumberFromBytes<FILETIME>(property->values.front()));
}

/// When a message was sent, or received.
std::optional<FILETIME> DateOf(const Properties& properties)
{
    const std::optional<FILETIME> sent = TimeIn(properties, PR_CLIENT_SUBMIT_TIME);
    return sent ? sent : TimeIn(properties, PR_MESSAGE_DELIVERY_TIME);
}

/// What MIME calls a code page of Windows; empty for one that it does not know.
std::string CharacterSet(LONG codePage)
{
    switch (codePage)
    {
    case Utf8CodePage:
        return "utf-8";
    case 932:
        return "shift_jis";
    case 936:
        return "gb2312";
    case 949:
        return "ks_c_5601-1987";
    case 950:
        return "big5";
    case 20127:
        return "us-ascii";
    case 20866:
        return "koi8-r";
    case 21866:
        return "koi8-u";
    case 50220:
    case 50221:
    case 50222:
        return "iso-2022-jp";
    case 51932:
        return "euc-jp";
    case 54936:
        return "gb18030";
    default:
        break;
    }
    if (codePage >= 28591 && codePage <= 28606)
    {
        return "iso-8859-" + std::to_string(codePage - 28590);
    }
    return codePage >= 1250 && codePage <= 1258 ? "windows-" + std::to_string(codePage) : "";
}

/// An address between angle brackets, without what would end it, begin another one or another header.
std::string Bracketed(const std::string& address)
{
    constexpr std::string_view Others = "<>,; ";
    std::string safe = OneLine(address);
    safe.erase(std::remove_if(safe.begin(), safe.end(),
                              [&](char each) { return Others.find(each) != std::string_view::npos; }),
               safe.end());
    return "<" + safe + ">";
}

/// An address for a header; empty when there is none.
std::string Mailbox(const std::string& name, const std::string& address)
{
    constexpr const char* Specials = "()<>[]:;@\\,.\"";
    if (name.empty() || name == address)
    {
        return address.empty() ? "" : Bracketed(address);
    }
    std::string shown = EncodedWords(name);
    if (shown == name && name.find_first_of(Specials) != std::string::npos)
    {
        shown = QuotedString(name);
    }
    return shown + " " + Bracketed(address);
}

std::string InternetAddress(const Properties& properties, ULONG internetAddress, ULONG type, ULONG address)
{
    const std::string known = TextIn(properties, internetAddress);
    return known.empty() && TextIn(properties, type) != "EX" ? TextIn(properties, address) : known;
}

std::string Author(const Properties& properties)
{
    return Mailbox(TextIn(properties, PR_SENT_REPRESENTING_NAME_W),
                   InternetAddress(properties, PR_SENT_REPRESENTING_SMTP_ADDRESS_W, PR_SENT_REPRESENTING_ADDRTYPE_W,
                                   PR_SENT_REPRESENTING_EMAIL_ADDRESS_W));
}

std::string SenderAddress(const Properties& properties)
{
    return InternetAddress(properties, PR_SENDER_SMTP_ADDRESS_W, PR_SENDER_ADDRTYPE_W, PR_SENDER_EMAIL_ADDRESS_W);
}

std::string SenderMailbox(const Properties& properties)
{
    return Mailbox(TextIn(properties, PR_SENDER_NAME_W), SenderAddress(properties));
}

std::string RecipientMailboxes(const MessageContent& message, LONG type)
{
    std::string list;
    for (const Properties& recipient : message.recipients)
    {
        if (LongIn(recipient, PR_RECIPIENT_TYPE, MAPI_TO) != type)
        {
            continue;
        }
        const std::string each =
            Mailbox(TextIn(recipient, PR_DISPLAY_NAME_W),
                    InternetAddress(recipient, PR_SMTP_ADDRESS_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W));
        list += (list.empty() || each.empty() ? "" : ", ") + each;
    }
    return list;
}

std::string OptionalHeader(const std::string& name, const std::string& text)
{
    return text.empty() ? "" : HeaderLine(name, text);
}

/// The headers of a message that did not come over the internet.
std::string NewHeaders(const MessageContent& message)
{
    const Properties& properties = message.properties;
    const std::string author = Author(properties), sender = SenderMailbox(properties);
    const std::optional<FILETIME> date = DateOf(properties);
    const LONG importance = LongIn(properties, PR_IMPORTANCE, IMPORTANCE_NORMAL);
    return OptionalHeader("From", author.empty() ? sender : author) +
           OptionalHeader("Sender", author.empty() || sender == author ? "" : sender) +
           OptionalHeader("To", RecipientMailboxes(message, MAPI_TO)) +
           OptionalHeader("Cc", RecipientMailboxes(message, MAPI_CC)) +
           OptionalHeader("Bcc", RecipientMailboxes(message, MAPI_BCC)) +
           OptionalHeader("Date", date ? TimeForMail(*date) : "") +
           HeaderLine("Subject", EncodedWords(OneLine(TextIn(properties, PR_SUBJECT_W)))) +
           OptionalHeader("Message-ID", EncodedWords(OneLine(TextIn(properties, PR_INTERNET_MESSAGE_ID_W)))) +
           OptionalHeader("In-Reply-To", EncodedWords(OneLine(TextIn(properties, PR_IN_REPLY_TO_ID_W)))) +
           OptionalHeader("References", EncodedWords(OneLine(TextIn(properties, PR_INTERNET_REFERENCES_W)))) +
           OptionalHeader("Importance", importance == IMPORTANCE_HIGH  ? "high"
                                        : importance == IMPORTANCE_LOW ? "low"
                                                                       : "");
}

/// The length of a header's name at the beginning of a line; 0 when there is none.
size_t HeaderName(const std::string& line)
{
    const size_t colon = line.find(':');
    const size_t odd = line.find_first_of(" \t");
    return colon == std::string::npos || odd < colon ? 0 : colon;
}

/// Whether a header describes the parts of the message as it came.
bool IsAboutParts(const std::string& name)
{
    std::string lower = name;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char each) { return static_cast<char>(std::tolower(each)); });
    return lower.compare(0, 8, "content-") == 0 || lower == "mime-version";
}

/// The headers as they came, without those that describe the parts and what is no header.
std::string StoredHeaders(const std::string& stored)
{
    std::string headers;
    bool isKept = false;
    for (size_t begin = 0; begin < stored.size();)
    {
        const size_t end = std::min(stored.find('\n', begin), stored.size());
        std::string line = stored.substr(begin, end - begin);
        begin = end + 1;
        line.erase(line.find_last_not_of('\r') + 1);
        const bool isMore = !line.empty() && (line[0] == ' ' || line[0] == '\t');
        if (!isMore)
        {
            const size_t name = HeaderName(line);
            isKept = name != 0 && !IsAboutParts(line.substr(0, name));
        }
        if (isKept)
        {
            std::replace(line.begin(), line.end(), '\r', ' ');
            headers += line + LineEnd;
        }
    }
    return headers;
}

/// Writes one message; messages inside it are written by writers of their own.
class MailWriter
{
public:
    /// @param position of a message inside another one: the number of its attachment and a dot ("2.")
    MailWriter(const MessageContent& message, const MailSink& sink, size_t& boundaries, std::string position)
        : m_message(message)
        , m_sink(sink)
        , m_boundaries(boundaries)
        , m_position(std::move(position))
    {
    }

    std::vector<std::string> Write()
    {
        const std::string stored = StoredHeaders(TextIn(m_message.properties, PR_TRANSPORT_MESSAGE_HEADERS_W));
        m_sink((stored.empty() ? NewHeaders(m_message) : stored) + "MIME-Version: 1.0" + LineEnd);
        ReadBody();
        SortAttachments();
        if (m_plainFiles.empty())
        {
            WriteBody();
        }
        else
        {
            WriteMultipart("mixed", [&](const std::string& boundary)
            {
                m_sink("--" + boundary + LineEnd);
                WriteBody();
                WriteAttachments(m_plainFiles, boundary);
            });
        }
        return m_left;
    }

private:
    void ReadBody()
    {
        m_html = BytesIn(m_message.properties, PR_HTML);
        m_codePage = LongIn(m_message.properties, PR_INTERNET_CPID, 0);
        m_text = TextIn(m_message.properties, PR_BODY_W);
        // A text that was made of the HTML is none of its own.
        if (!m_html.empty() && m_codePage == Utf8CodePage && WithoutReturns(m_text) == TextOfHtml(m_html))
        {
            m_text.clear();
        }
        if (m_html.empty() && m_text.empty() && FindProperty(m_message.properties, PR_RTF_COMPRESSED) != nullptr)
        {
            m_left.push_back("the text " + (m_position.empty() ? "" : "of attachment " + Inside() + " ") +
                             "is left out: it is stored only as rich text");
        }
    }

    /// The position without its last dot.
    std::string Inside() const { return m_position.substr(0, m_position.size() - 1); }

    static std::string WithoutReturns(std::string text)
    {
        text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
        return text;
    }

    /// Pictures that the HTML shows belong to it, all else to the message.
    void SortAttachments()
    {
        for (size_t i = 0; i < m_message.attachments.size(); ++i)
        {
            const AttachmentContent& attachment = m_message.attachments[i];
            const LONG method = LongIn(attachment.properties, PR_ATTACH_METHOD, NO_ATTACHMENT);
            if (!attachment.message && method != ATTACH_BY_VALUE)
            {
                m_left.push_back("attachment " + m_position + std::to_string(i + 1) +
                                 " is left out: it is not stored as a file");
                continue;
            }
            const std::string id = TextIn(attachment.properties, PR_ATTACH_CONTENT_ID_W);
            const bool isShown = !attachment.message && !id.empty() && m_html.find("cid:" + id) != std::string::npos;
            (isShown ? m_pictures : m_plainFiles).push_back(i);
        }
    }

    /// The headers and the content of a multipart. @param write is called with its boundary, which each part begins with
    template <class Write>
    void WriteMultipart(const char* kind, Write write)
    {
        const std::string boundary = "=_zeb_" + std::to_string(++m_boundaries);
        m_sink(std::string("Content-Type: multipart/") + kind + Parameter("boundary", boundary) + LineEnd +
               "Content-Transfer-Encoding: 8bit" + LineEnd + LineEnd);
        write(boundary);
        m_sink(LineEnd + ("--" + boundary) + "--" + LineEnd);
    }

    void WriteBody()
    {
        if (m_html.empty())
        {
            return WriteText("plain", "utf-8", m_text);
        }
        if (m_text.empty())
        {
            return WriteHtml();
        }
        WriteMultipart("alternative", [&](const std::string& boundary)
        {
            m_sink("--" + boundary + LineEnd);
            WriteText("plain", "utf-8", m_text);
            m_sink(LineEnd + ("--" + boundary) + LineEnd);
            WriteHtml();
        });
    }

    void WriteHtml()
    {
        const std::string charset = CharacterSet(m_codePage);
        if (m_pictures.empty())
        {
            return WriteText("html", charset, m_html);
        }
        WriteMultipart("related", [&](const std::string& boundary)
        {
            m_sink("--" + boundary + LineEnd);
            WriteText("html", charset, m_html);
            WriteAttachments(m_pictures, boundary);
        });
    }

    void WriteText(const char* kind, const std::string& charset, const std::string& text)
    {
        const TextEncoding encoding = EncodingOf(text);
        const char* const names[] = {"7bit", "quoted-printable", "base64"};
        m_sink(std::string("Content-Type: text/") + kind + (charset.empty() ? "" : "; charset=" + charset) + LineEnd +
               "Content-Transfer-Encoding: " + names[static_cast<size_t>(encoding)] + LineEnd + LineEnd);
        if (encoding == TextEncoding::Unchanged)
        {
            m_sink(text);
        }
        else if (encoding == TextEncoding::Quoted)
        {
            m_sink(QuotedPrintable(text));
        }
        else
        {
            Base64Lines lines(m_sink);
            lines.Add(text);
            lines.End();
        }
    }

    void WriteAttachments(const std::vector<size_t>& attachments, const std::string& boundary)
    {
        for (const size_t index : attachments)
        {
            m_sink(LineEnd + ("--" + boundary) + LineEnd);
            WriteAttachment(index);
        }
    }

    static std::string NameOf(const Properties& properties)
    {
        for (const ULONG tag : {PR_ATTACH_LONG_FILENAME_W, PR_ATTACH_FILENAME_W})
        {
            const std::string name = TextIn(properties, tag);
            if (!name.empty())
            {
                return name;
            }
        }
        return "";
    }

    /// The type of a part that holds a file. Those that consist of parts are none.
    static std::string TypeOf(const Properties& properties)
    {
        const std::string type = OneLine(TextIn(properties, PR_ATTACH_MIME_TAG_W));
        const bool isType = type.find('/') != std::string::npos &&
                            type.find_first_of(" ;\"<>()") == std::string::npos &&
                            std::all_of(type.begin(), type.end(), [](char each) { return each > ' ' && each < 0x7F; });
        return isType && type.compare(0, 10, "multipart/") != 0 ? type : "application/octet-stream";
    }

    void WriteAttachment(size_t index)
    {
        const AttachmentContent& attachment = m_message.attachments[index];
        const Properties& properties = attachment.properties;
        const std::string name = NameOf(properties);
        const std::string id = OneLine(TextIn(properties, PR_ATTACH_CONTENT_ID_W));
        m_sink("Content-Type: " + (attachment.message ? "message/rfc822" : TypeOf(properties)) + LineEnd +
               "Content-Disposition: attachment" + (name.empty() ? "" : Parameter("filename", name)) + LineEnd +
               (id.empty() ? "" : HeaderLine("Content-ID", "<" + id + ">")));
        if (attachment.message)
        {
            m_sink(std::string("Content-Transfer-Encoding: 8bit") + LineEnd + LineEnd);
            const std::string position = m_position + std::to_string(index + 1) + ".";
            const std::vector<std::string> left =
                MailWriter(*attachment.message, m_sink, m_boundaries, position).Write();
            m_left.insert(m_left.end(), left.begin(), left.end());
            return;
        }
        m_sink(std::string("Content-Transfer-Encoding: base64") + LineEnd + LineEnd);
        WriteContent(properties);
    }

    void WriteContent(const Properties& properties)
    {
        constexpr size_t PieceSize = size_t(1) << 16;
        Base64Lines lines(m_sink);
        const Property* content = FindProperty(properties, PR_ATTACH_DATA_BIN);
        if (content != nullptr && content->source)
        {
            std::string piece(PieceSize, '\0');
            while (const size_t read = content->source->Read(piece.data(), piece.size()))
            {
                lines.Add(piece.substr(0, read));
            }
        }
        else if (content != nullptr)
        {
            lines.Add(content->values.front());
        }
        lines.End();
    }

    const MessageContent& m_message;
    const MailSink& m_sink;
    size_t& m_boundaries; ///< how many there are in the whole mail: each has its own number
    const std::string m_position;
    std::string m_text, m_html;
    LONG m_codePage = 0;
    std::vector<size_t> m_pictures, m_plainFiles; ///< indexes of attachments
    std::vector<std::string> m_left;
};

} // namespace

std::vector<std::string> WriteMail(const MessageContent& message, const MailSink& sink)
{
    size_t boundaries = 0;
    return MailWriter(message, sink, boundaries, "").Write();
}

std::string MboxLine(const MessageContent& message)
{
    std::string address = SenderAddress(message.properties);
    const bool isUsable = !address.empty() && std::all_of(address.begin(), address.end(),
                                                          [](char each) { return each > ' ' && each < 0x7F; });
    const std::optional<FILETIME> date = DateOf(message.properties);
    return "From " + (isUsable ? address : "MAILER-DAEMON") + " " + TimeForMbox(date.value_or(FILETIME{~0U, ~0U}));
}

} // namespace zeb::tools
