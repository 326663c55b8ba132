#include "tools/zeb-import/MimeMessage.h"

#include "platform/text.h"
#include "tools/common/Failure.h"

#include <cstdint>
#include <cstring>

namespace zeb::tools
{
namespace
{

// Tags of mail that MAPI's headers do not name.
constexpr ULONG TagTransportHeaders = PROP_TAG(PT_UNICODE, 0x007D);
constexpr ULONG TagInternetMessageId = PROP_TAG(PT_UNICODE, 0x1035);
constexpr ULONG TagInReplyTo = PROP_TAG(PT_UNICODE, 0x1042);
constexpr ULONG TagReferences = PROP_TAG(PT_UNICODE, 0x1039);
constexpr ULONG TagHtml = PROP_TAG(PT_BINARY, 0x1013);
constexpr ULONG TagCodePage = PROP_TAG(PT_LONG, 0x3FDE);
constexpr ULONG TagAttachMimeType = PROP_TAG(PT_UNICODE, 0x370E);
constexpr ULONG TagAttachContentId = PROP_TAG(PT_UNICODE, 0x3712);
constexpr ULONG TagSmtpAddress = PROP_TAG(PT_UNICODE, 0x39FE);
constexpr LONG Utf8CodePage = 65001;
/// File time of the Unix epoch and its units a second.
constexpr int64_t EpochAsFileTime = 116'444'736'000'000'000, UnitsPerSecond = 10'000'000;
constexpr int DeepestMessage = 32;

void AddBytes(Properties& properties, ULONG tag, std::string bytes)
{
    Property property;
    property.tag = tag;
    property.values.push_back(std::move(bytes));
    properties.push_back(std::move(property));
}

void AddText(Properties& properties, ULONG tag, const char* text)
{
    if (!text)
        return;
    const platform::WideString wide = platform::WideFromUtf8(text, std::strlen(text));
    AddBytes(properties, tag,
             std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(WCHAR)));
}

void AddLong(Properties& properties, ULONG tag, LONG number)
{
    AddBytes(properties, tag, std::string(reinterpret_cast<const char*>(&number), sizeof number));
}

void AddTime(Properties& properties, ULONG tag, GDateTime* time)
{
    const int64_t ticks = g_date_time_to_unix(time) * UnitsPerSecond + EpochAsFileTime;
    if (ticks > 0)
        AddBytes(properties, tag, std::string(reinterpret_cast<const char*>(&ticks), sizeof ticks));
}

/// The first mailbox of an address list, or null; groups are looked into.
InternetAddressMailbox* FirstMailbox(InternetAddressList* list)
{
    for (int i = 0, count = list ? internet_address_list_length(list) : 0; i < count; ++i)
    {
        InternetAddress* address = internet_address_list_get_address(list, i);
        if (INTERNET_ADDRESS_IS_MAILBOX(address))
            return INTERNET_ADDRESS_MAILBOX(address);
        if (InternetAddressMailbox* inGroup =
                FirstMailbox(internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address))))
            return inGroup;
    }
    return nullptr;
}

const char* NameOrAddress(InternetAddressMailbox* mailbox)
{
    const char* name = internet_address_get_name(INTERNET_ADDRESS(mailbox));
    return name && *name ? name : internet_address_mailbox_get_addr(mailbox);
}

void AddSender(Properties& properties, GMimeMessage* message)
{
    InternetAddressMailbox* author = FirstMailbox(g_mime_message_get_from(message));
    InternetAddressMailbox* sender = FirstMailbox(g_mime_message_get_sender(message));
    if (!sender)
        sender = author;
    if (sender)
    {
        AddText(properties, PR_SENDER_NAME_W, NameOrAddress(sender));
        AddText(properties, PR_SENDER_ADDRTYPE_W, "SMTP");
        AddText(properties, PR_SENDER_EMAIL_ADDRESS_W, internet_address_mailbox_get_addr(sender));
    }
    if (author)
    {
        AddText(properties, PR_SENT_REPRESENTING_NAME_W, NameOrAddress(author));
        AddText(properties, PR_SENT_REPRESENTING_ADDRTYPE_W, "SMTP");
        AddText(properties, PR_SENT_REPRESENTING_EMAIL_ADDRESS_W, internet_address_mailbox_get_addr(author));
    }
}

void AddRecipients(std::vector<Properties>& recipients, InternetAddressList* list, LONG type)
{
    for (int i = 0, count = list ? internet_address_list_length(list) : 0; i < count; ++i)
    {
        InternetAddress* address = internet_address_list_get_address(list, i);
        if (INTERNET_ADDRESS_IS_GROUP(address))
        {
            AddRecipients(recipients, internet_address_group_get_members(INTERNET_ADDRESS_GROUP(address)),
                          type);
            continue;
        }
        InternetAddressMailbox* mailbox = INTERNET_ADDRESS_MAILBOX(address);
        Properties recipient;
        AddLong(recipient, PR_RECIPIENT_TYPE, type);
        AddText(recipient, PR_DISPLAY_NAME_W, NameOrAddress(mailbox));
        AddText(recipient, PR_ADDRTYPE_W, "SMTP");
        AddText(recipient, PR_EMAIL_ADDRESS_W, internet_address_mailbox_get_addr(mailbox));
        AddText(recipient, TagSmtpAddress, internet_address_mailbox_get_addr(mailbox));
        recipients.push_back(std::move(recipient));
    }
}

/// A header's value unfolded and decoded, or null; the pointer lives as long as the message.
const char* Header(GMimeMessage* message, const char* name)
{
    return g_mime_object_get_header(GMIME_OBJECT(message), name);
}

/// When the mail arrived: the date of the topmost Received header (behind its last semicolon), else when it was sent.
GDateTime* ArrivalOf(GMimeMessage* message)
{
    const char* received = Header(message, "Received");
    const char* date = received ? std::strrchr(received, ';') : nullptr;
    return date ? g_mime_utils_header_decode_date(date + 1) : nullptr;
}

void AddDates(Properties& properties, GMimeMessage* message)
{
    GDateTime* sent = g_mime_message_get_date(message);
    GDateTime* arrived = ArrivalOf(message);
    if (sent)
        AddTime(properties, PR_CLIENT_SUBMIT_TIME, sent);
    if (arrived || sent)
        AddTime(properties, PR_MESSAGE_DELIVERY_TIME, arrived ? arrived : sent);
    if (arrived)
        g_date_time_unref(arrived);
}

void AddEnvelope(Properties& properties, GMimeMessage* message)
{
    AddText(properties, PR_MESSAGE_CLASS_W, "IPM.Note");
    const char* subject = g_mime_message_get_subject(message);
    AddText(properties, PR_SUBJECT_W, subject ? subject : "");
    AddSender(properties, message);
    AddDates(properties, message);
    if (const char* id = g_mime_message_get_message_id(message))
        AddText(properties, TagInternetMessageId, ("<" + std::string(id) + ">").c_str());
    AddText(properties, TagInReplyTo, Header(message, "In-Reply-To"));
    AddText(properties, TagReferences, Header(message, "References"));
    if (char* headers = g_mime_object_get_headers(GMIME_OBJECT(message), nullptr))
    {
        // Headers of old mail are in no known character set; what is no UTF-8 is replaced.
        char* valid = g_utf8_make_valid(headers, -1);
        AddText(properties, TagTransportHeaders, valid);
        g_free(valid);
        g_free(headers);
    }
    AddLong(properties, PR_MESSAGE_FLAGS, MSGFLAG_READ);
}

std::string DecodedBytes(GMimePart* part)
{
    GMimeDataWrapper* content = g_mime_part_get_content(part);
    if (!content)
        return {};
    const GRef<GMimeStream> stream(g_mime_stream_mem_new());
    if (g_mime_data_wrapper_write_to_stream(content, stream.get()) < 0)
        throw ToolError("a part can not be decoded");
    const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(stream.get()));
    return std::string(reinterpret_cast<const char*>(bytes->data), bytes->len);
}

/// Collects the parts of one message.
class PartReader
{
public:
    PartReader(MessageContent& content, int depth)
        : m_content(content)
        , m_depth(depth)
    {
    }

    void Read(GMimeObject* part)
    {
        if (GMIME_IS_MULTIPART(part))
            for (int i = 0, count = g_mime_multipart_get_count(GMIME_MULTIPART(part)); i < count; ++i)
                Read(g_mime_multipart_get_part(GMIME_MULTIPART(part), i));
        else if (GMIME_IS_MESSAGE_PART(part))
            AddEmbedded(GMIME_MESSAGE_PART(part));
        else if (GMIME_IS_PART(part))
            ReadLeaf(GMIME_PART(part));
    }

private:
    void ReadLeaf(GMimePart* part)
    {
        GMimeContentType* type = g_mime_object_get_content_type(GMIME_OBJECT(part));
        const bool attached = g_mime_part_is_attachment(part) != 0;
        if (!attached && !m_hasText && g_mime_content_type_is_type(type, "text", "plain"))
        {
            m_hasText = true;
            AddBody(part, PR_BODY_W);
        }
        else if (!attached && !m_hasHtml && g_mime_content_type_is_type(type, "text", "html"))
        {
            m_hasHtml = true;
            AddBody(part, TagHtml);
        }
        else
        {
            AddAttachment(part, type);
        }
    }

    /// Text in UTF-8: for HTML as bytes with their code page, for plain text as wide text.
    void AddBody(GMimePart* part, ULONG tag)
    {
        char* text = GMIME_IS_TEXT_PART(part) ? g_mime_text_part_get_text(GMIME_TEXT_PART(part)) : nullptr;
        const std::string body = text ? text : DecodedBytes(part);
        g_free(text);
        if (PROP_TYPE(tag) == PT_UNICODE)
            AddText(m_content.properties, tag, body.c_str());
        else
        {
            AddBytes(m_content.properties, tag, body);
            AddLong(m_content.properties, TagCodePage, Utf8CodePage);
        }
    }

    void AddAttachment(GMimePart* part, GMimeContentType* type)
    {
        AttachmentContent attachment;
        AddLong(attachment.properties, PR_ATTACH_METHOD, ATTACH_BY_VALUE);
        AddLong(attachment.properties, PR_RENDERING_POSITION, -1);
        if (const char* name = g_mime_part_get_filename(part))
        {
            AddText(attachment.properties, PR_ATTACH_LONG_FILENAME_W, name);
            AddText(attachment.properties, PR_ATTACH_FILENAME_W, name);
            AddText(attachment.properties, PR_DISPLAY_NAME_W, name);
        }
        if (char* mime = g_mime_content_type_get_mime_type(type))
        {
            AddText(attachment.properties, TagAttachMimeType, mime);
            g_free(mime);
        }
        AddText(attachment.properties, TagAttachContentId, g_mime_part_get_content_id(part));
        AddBytes(attachment.properties, PR_ATTACH_DATA_BIN, DecodedBytes(part));
        m_content.attachments.push_back(std::move(attachment));
    }

    void AddEmbedded(GMimeMessagePart* part);

    MessageContent& m_content;
    const int m_depth;
    bool m_hasText = false, m_hasHtml = false;
};

MessageContent Content(GMimeMessage* message, int depth)
{
    if (depth > DeepestMessage)
        throw ToolError("messages are embedded in each other more than " + std::to_string(DeepestMessage) +
                        " deep");
    MessageContent content;
    AddEnvelope(content.properties, message);
    AddRecipients(content.recipients, g_mime_message_get_to(message), MAPI_TO);
    AddRecipients(content.recipients, g_mime_message_get_cc(message), MAPI_CC);
    AddRecipients(content.recipients, g_mime_message_get_bcc(message), MAPI_BCC);
    if (GMimeObject* root = g_mime_message_get_mime_part(message))
        PartReader(content, depth).Read(root);
    return content;
}

void PartReader::AddEmbedded(GMimeMessagePart* part)
{
    GMimeMessage* message = g_mime_message_part_get_message(part);
    if (!message)
        return;
    AttachmentContent attachment;
    AddLong(attachment.properties, PR_ATTACH_METHOD, ATTACH_EMBEDDED_MSG);
    AddLong(attachment.properties, PR_RENDERING_POSITION, -1);
    AddText(attachment.properties, PR_DISPLAY_NAME_W, g_mime_message_get_subject(message));
    attachment.message = std::make_shared<MessageContent>(Content(message, m_depth + 1));
    m_content.attachments.push_back(std::move(attachment));
}

} // namespace

void StartMime()
{
    static const bool started = (g_mime_init(), true);
    static_cast<void>(started);
}

MessageContent ContentOfMime(GMimeMessage* message)
{
    return Content(message, 0);
}

} // namespace zeb::tools
