#include "tools/common/ReadableMessage.h"

#include "platform/codepage.h"
#include "platform/tags.h"
#include "tools/common/HostSession.h"
#include "tools/common/HtmlText.h"
#include "tools/common/Lister.h"
#include "tools/common/Output.h"
#include "tools/common/Streams.h"

namespace zeb::tools
{
namespace
{

constexpr unsigned Utf8CodePage = 65001, WesternCodePage = 1252;

/// The tags of one address of a message or a recipient.
struct AddressTags
{
    ULONG name, type, address, internetAddress;
};

constexpr AddressTags AuthorTags = {PR_SENT_REPRESENTING_NAME_W, PR_SENT_REPRESENTING_ADDRTYPE_W,
                                    PR_SENT_REPRESENTING_EMAIL_ADDRESS_W, PR_SENT_REPRESENTING_SMTP_ADDRESS_W};
constexpr AddressTags SenderTags = {PR_SENDER_NAME_W, PR_SENDER_ADDRTYPE_W, PR_SENDER_EMAIL_ADDRESS_W,
                                    PR_SENDER_SMTP_ADDRESS_W};
constexpr AddressTags RecipientTags = {PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W, PR_SMTP_ADDRESS_W};

/// @param source a CZebIProp, or a row
template <class Source>
MailAddress AddressOf(Source& source, const AddressTags& tags)
{
    MailAddress address;
    address.name = TextOf(source, tags.name);
    address.address = TextOf(source, tags.internetAddress);
    // An address of Exchange says nothing to people.
    if (address.address.empty() && TextOf(source, tags.type) != "EX")
    {
        address.address = TextOf(source, tags.address);
    }
    return address;
}

bool IsEmpty(const MailAddress& address)
{
    return address.name.empty() && address.address.empty();
}

void ReadAddresses(CZebMessage& message, ReadableMessage& read)
{
    read.from = AddressOf(message, AuthorTags);
    const MailAddress sender = AddressOf(message, SenderTags);
    if (IsEmpty(read.from))
    {
        read.from = sender;
    }
    else if (TextOf(sender) != TextOf(read.from))
    {
        read.sender = sender;
    }
    for (const CZebRow row :
         message.GetRecipientTable().Rows({PR_RECIPIENT_TYPE, RecipientTags.name, RecipientTags.type,
                                           RecipientTags.address, RecipientTags.internetAddress}))
    {
        const LONG type = NumberOf(row, PR_RECIPIENT_TYPE);
        std::vector<MailAddress>& list = type == MAPI_CC ? read.cc : type == MAPI_BCC ? read.bcc : read.to;
        list.push_back(AddressOf(row, RecipientTags));
    }
}

void ReadDate(CZebMessage& message, ReadableMessage& read)
{
    CZebPropValArray values;
    message.GetProps(values, 2, PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME);
    for (const ULONG tag : {PR_CLIENT_SUBMIT_TIME, PR_MESSAGE_DELIVERY_TIME})
    {
        if (!read.hasDate && values.hasRealValue(tag))
        {
            read.date = static_cast<FILETIME>(values[tag]);
            read.hasDate = true;
        }
    }
}

unsigned CodePageOf(CZebMessage& message)
{
    CZebPropValArray values;
    message.GetProps(values, 1, PR_INTERNET_CPID);
    return values.hasRealValue(PR_INTERNET_CPID) ? static_cast<unsigned>(static_cast<LONG>(values[PR_INTERNET_CPID]))
                                                 : 0;
}

/// The HTML text in UTF-8. In its own code page, or without a known one as UTF-8 where it is that, else as Western text.
std::string HtmlOf(CZebMessage& message)
{
    const CComPtr<IStream> stream = OptionalStream(message, PR_HTML);
    if (!stream)
    {
        return TextOf(message, CHANGE_PROP_TYPE(PR_HTML, PT_UNICODE));
    }
    std::string bytes, html;
    ForEachPiece(*stream.Get(), [&](const std::string& piece) { bytes += piece; });
    const unsigned codePage = CodePageOf(message);
    if (codePage != 0 && platform::Utf8FromCodePage(bytes, codePage, html))
    {
        return html;
    }
    const bool isUtf8 = ValidUtf8(bytes) == bytes;
    platform::Utf8FromCodePage(bytes, isUtf8 ? Utf8CodePage : WesternCodePage, html);
    return html;
}

std::string BodyOf(CZebMessage& message, BodyKind kind)
{
    if (kind == BodyKind::None)
    {
        return "";
    }
    const auto rendered = [&] { return TextOfHtml(HtmlOf(message)); };
    const auto plain = [&] { return TextOf(message, PR_BODY_W); };
    std::string text = kind == BodyKind::Html ? rendered() : plain();
    if (text.empty())
    {
        text = kind == BodyKind::Html ? plain() : rendered();
    }
    return text;
}

Json JsonOf(const MailAddress& address)
{
    return {{"name", TextOrNull(address.name)}, {"address", TextOrNull(address.address)}};
}

Json JsonOf(const std::vector<MailAddress>& addresses)
{
    Json list = Json::array();
    for (const MailAddress& address : addresses)
    {
        list.push_back(JsonOf(address));
    }
    return list;
}

} // namespace

std::string TextOf(const MailAddress& address)
{
    if (address.name.empty() || address.address.empty() || address.name == address.address)
    {
        return address.name.empty() ? address.address : address.name;
    }
    return address.name + " <" + address.address + ">";
}

std::string TextOf(const std::vector<MailAddress>& addresses)
{
    std::string text;
    for (const MailAddress& address : addresses)
    {
        text += (text.empty() ? "" : ", ") + TextOf(address);
    }
    return text;
}

Json JsonOf(const ReadableMessage& message)
{
    Json object = {
        {"from", JsonOf(message.from)}, {"sender", JsonOf(message.sender)},
        {"to", JsonOf(message.to)},     {"cc", JsonOf(message.cc)},
        {"bcc", JsonOf(message.bcc)},   {"date", TextOrNull(message.hasDate ? TimeForMachines(message.date) : "")},
        {"subject", message.subject},   {"headers", TextOrNull(message.headers)},
        {"text", message.text},         {"attachments", Json::array()}};
    for (const ListedAttachment& attachment : message.attachments)
    {
        object["attachments"].push_back(JsonOf(attachment));
    }
    return object;
}

ReadableMessage ReadTextOnly(CZebMessage& message, BodyKind kind)
{
    ReadableMessage read;
    ReadAddresses(message, read);
    ReadDate(message, read);
    read.subject = TextOf(message, PR_SUBJECT_W);
    read.text = BodyOf(message, kind);
    return read;
}

ReadableMessage ReadText(CZebMessage& message, BodyKind kind)
{
    ReadableMessage read = ReadTextOnly(message, kind);
    read.headers = TextOf(message, PR_TRANSPORT_MESSAGE_HEADERS_W);
    read.attachments = AttachmentsOf(message);
    return read;
}

} // namespace zeb::tools
