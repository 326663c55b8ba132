#include "tools/zeb-import/MimeMessage.h"

#include "platform/tags.h"
#include "tools/common/Failure.h"
#include "tools/common/HtmlText.h"
#include "tools/common/MailProperties.h"
#include "tools/zeb-import/Charset.h"
#include "tools/zeb-import/MessageText.h"
#include "tools/zeb-import/MimeEnvelope.h"
#include "tools/zeb-import/MimeParts.h"

namespace zeb::tools
{
namespace
{

constexpr LONG Utf8CodePage = 65001;
MessageContent ContentOfBytes(std::string bytes, const std::optional<MailState>& state, int depth, Notes& notes);
MessageContent ContentOf(GMimeMessage* message, const std::string& headers, const std::optional<MailState>& state,
                         int depth, Notes& notes);

/// Collects the parts of one message.
class PartReader
{
public:
    PartReader(MessageContent& content, int depth, Notes& notes)
        : m_content(content)
        , m_depth(depth)
        , m_notes(notes)
    {
    }

    void Read(GMimeObject* root)
    {
        m_text = TextPartsOf(root);
        ReadPart(root);
        if (m_text.plain != nullptr)
        {
            AddBody(TextOf(m_text.plain, m_notes));
        }
        if (m_text.html != nullptr)
        {
            AddHtml(TextOf(m_text.html, m_notes));
        }
    }

private:
    void ReadPart(GMimeObject* part)
    {
        if (GMIME_IS_MULTIPART(part))
        {
            ReadMultipart(GMIME_MULTIPART(part));
        }
        else if (GMIME_IS_MESSAGE_PART(part))
        {
            AddMessage(GMIME_MESSAGE_PART(part));
        }
        else if (GMIME_IS_PART(part) && part != GMIME_OBJECT(m_text.plain) && part != GMIME_OBJECT(m_text.html))
        {
            ReadLeaf(GMIME_PART(part));
        }
    }

    void ReadMultipart(GMimeMultipart* part)
    {
        const int count = g_mime_multipart_get_count(part);
        for (int i = 0; i < count; ++i)
        {
            ReadPart(g_mime_multipart_get_part(part, i));
        }
        if (count == 0)
        {
            AddStray(g_mime_multipart_get_prologue(part), "a multipart has no parts: its text is kept");
        }
        AddStray(g_mime_multipart_get_epilogue(part), "text after the last part is kept as an attachment");
    }

    /// Text outside all parts: the body of a message without another body, otherwise an attachment.
    void AddStray(const char* text, const std::string& note)
    {
        if (text == nullptr || Trimmed(text).empty())
        {
            return;
        }
        m_notes.Add(note);
        if (m_text.plain == nullptr && m_text.html == nullptr && !m_hasBody)
        {
            return AddBody(DecodeText(text, "").utf8);
        }
        AttachmentContent& attachment = NewAttachment(ATTACH_BY_VALUE);
        AddText(attachment.properties, PR_ATTACH_MIME_TAG_W, "text/plain");
        AddBytes(attachment.properties, PR_ATTACH_DATA_BIN, text);
    }

    void AddBody(const std::string& text)
    {
        AddText(m_content.properties, PR_BODY_W, WithCrLf(text));
        m_hasBody = true;
    }

    /// HTML is stored as UTF-8 with its code page; a message without plain text gets the text of its HTML.
    void AddHtml(const std::string& html)
    {
        if (!m_hasBody)
        {
            AddBody(TextOfHtml(html));
        }
        AddBytes(m_content.properties, PR_HTML, html);
        AddLong(m_content.properties, PR_INTERNET_CPID, Utf8CodePage);
    }

    AttachmentContent& NewAttachment(LONG method)
    {
        AttachmentContent& attachment = m_content.attachments.emplace_back();
        AddLong(attachment.properties, PR_ATTACH_METHOD, method);
        AddLong(attachment.properties, PR_RENDERING_POSITION, -1);
        return attachment;
    }

    static void AddNames(Properties& properties, GMimeObject* part, const std::string& shown)
    {
        const std::string name = FileNameOf(part);
        if (!name.empty())
        {
            AddText(properties, PR_ATTACH_LONG_FILENAME_W, name);
            AddText(properties, PR_ATTACH_FILENAME_W, name);
        }
        if (!name.empty() || !shown.empty())
        {
            AddText(properties, PR_DISPLAY_NAME_W, shown.empty() ? name : shown);
        }
        if (const char* id = g_mime_object_get_content_id(part))
        {
            AddText(properties, PR_ATTACH_CONTENT_ID_W, id);
        }
    }

    void ReadLeaf(GMimePart* part)
    {
        std::string bytes = DecodedBytes(part, m_notes);
        const GText type(g_mime_content_type_get_mime_type(g_mime_object_get_content_type(GMIME_OBJECT(part))));
        const std::string typeName = LowerCase(type ? type.get() : "");
        // Such a part should not have a transfer encoding; if it has one, it is not parsed.
        const bool isMessage = typeName == "message/rfc822" || typeName == "message/global";
        if (isMessage && IsHeaderLine(bytes.substr(0, bytes.find('\n'))))
        {
            return Embed(GMIME_OBJECT(part), ContentOfBytes(bytes, std::nullopt, m_depth + 1, m_notes));
        }
        AttachmentContent& attachment = NewAttachment(ATTACH_BY_VALUE);
        AddNames(attachment.properties, GMIME_OBJECT(part), std::string());
        if (type)
        {
            AddText(attachment.properties, PR_ATTACH_MIME_TAG_W, type.get());
        }
        AddBytes(attachment.properties, PR_ATTACH_DATA_BIN, std::move(bytes));
    }

    void AddMessage(GMimeMessagePart* part)
    {
        if (GMimeMessage* message = g_mime_message_part_get_message(part))
        {
            return Embed(GMIME_OBJECT(part), ContentOf(message, "", std::nullopt, m_depth + 1, m_notes));
        }
        m_notes.Add("an attached message is empty");
        AttachmentContent& attachment = NewAttachment(ATTACH_BY_VALUE);
        AddNames(attachment.properties, GMIME_OBJECT(part), std::string());
        AddText(attachment.properties, PR_ATTACH_MIME_TAG_W, "message/rfc822");
        AddBytes(attachment.properties, PR_ATTACH_DATA_BIN, std::string());
    }

    void Embed(GMimeObject* part, MessageContent content)
    {
        AttachmentContent& attachment = NewAttachment(ATTACH_EMBEDDED_MSG);
        AddNames(attachment.properties, part, SubjectOf(content));
        attachment.message = std::make_shared<MessageContent>(std::move(content));
    }

    static std::string SubjectOf(const MessageContent& content)
    {
        for (const Property& property : content.properties)
        {
            if (property.tag == PR_SUBJECT_W)
            {
                return Utf8Of(property);
            }
        }
        return {};
    }

    MessageContent& m_content;
    const int m_depth;
    Notes& m_notes;
    TextParts m_text;
    bool m_hasBody = false;
};

MessageContent ContentOf(GMimeMessage* message, const std::string& headers, const std::optional<MailState>& state,
                         int depth, Notes& notes)
{
    RefuseTooDeep(depth);
    MessageContent content;
    AddEnvelope(content, message, headers, state, notes);
    if (GMimeObject* root = g_mime_message_get_mime_part(message))
    {
        PartReader(content, depth, notes).Read(root);
    }
    return content;
}

MessageContent ContentOfBytes(std::string bytes, const std::optional<MailState>& state, int depth, Notes& notes)
{
    const MessageText mail = MendMessage(std::move(bytes), notes);
    const GRef<GMimeStream> stream(g_mime_stream_mem_new_with_buffer(mail.text.data(), mail.text.size()));
    const GRef<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
    const GRef<GMimeMessage> message(g_mime_parser_construct_message(parser.get(), nullptr));
    if (!message)
    {
        throw ToolError("it is not a mail message");
    }
    return ContentOf(message.get(), mail.headers, state, depth, notes);
}

} // namespace

void StartMime()
{
    static const bool started = (g_mime_init(), true);
    static_cast<void>(started);
}

MessageContent ContentOfMail(std::string bytes, const std::optional<MailState>& state, Notes& notes)
{
    StartMime();
    return ContentOfBytes(std::move(bytes), state, 0, notes);
}

} // namespace zeb::tools
