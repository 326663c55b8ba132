#include "tools/zebview/Details.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/OutputFile.h"
#include "tools/common/ReadableMessage.h"
#include "tools/common/Streams.h"
#include "tools/common/Times.h"

namespace zeb::view
{
namespace
{

using tools::NumberOf;
using tools::TextOf;

std::string Field(const char* name, const std::string& text)
{
    return text.empty() ? std::string() : std::string(name) + "\t" + tools::OneLine(text) + "\n";
}

std::string PageOf(const tools::ReadableMessage& message)
{
    const std::string headers = Field("From:", tools::TextOf(message.from)) +
                                Field("Sender:", tools::TextOf(message.sender)) +
                                Field("To:", tools::TextOf(message.to)) + Field("Cc:", tools::TextOf(message.cc)) +
                                Field("Bcc:", tools::TextOf(message.bcc)) +
                                Field("Date:", message.hasDate ? TimeWithZone(message.date, tools::Zone::Local) : "") +
                                Field("Subject:", message.subject);
    return headers + "\n" + (message.text.empty() ? "(no text)" : message.text);
}

/// A number of the object; empty when it has none.
std::string ValueIn(const std::vector<PropertyRow>& rows, ULONG tag)
{
    for (const PropertyRow& row : rows)
    {
        if (row.property.tag == tag && !row.property.values.empty())
        {
            return tools::Grouped(tools::NumberFromBytes<ULONG>(row.property.values.front()));
        }
    }
    return "";
}

const char* NameOfRecipientType(LONG type)
{
    switch (type)
    {
    case MAPI_TO:
        return "To";
    case MAPI_CC:
        return "Cc";
    case MAPI_BCC:
        return "Bcc";
    default:
        return "";
    }
}

std::string AddressIn(const CZebRow& row)
{
    const std::string type = TextOf(row, PR_ADDRTYPE_W), address = TextOf(row, PR_EMAIL_ADDRESS_W);
    return type.empty() || type == "SMTP" ? address : type + ":" + address;
}

std::vector<RecipientRow> ReadRecipients(CZebMessage& message)
{
    std::vector<RecipientRow> recipients;
    for (const CZebRow row :
         message.GetRecipientTable().Rows({PR_RECIPIENT_TYPE, PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W}))
    {
        recipients.push_back(
            {NameOfRecipientType(NumberOf(row, PR_RECIPIENT_TYPE)), TextOf(row, PR_DISPLAY_NAME_W), AddressIn(row)});
    }
    return recipients;
}

std::vector<RecipientRow> ReadMembers(CZebDistList list)
{
    std::vector<RecipientRow> members;
    for (const CZebRow row :
         list.GetContentsTable(MAPI_UNICODE).Rows({PR_DISPLAY_NAME_W, PR_ADDRTYPE_W, PR_EMAIL_ADDRESS_W}))
    {
        members.push_back({"Member", TextOf(row, PR_DISPLAY_NAME_W), AddressIn(row)});
    }
    return members;
}

} // namespace

Details ReadMessageDetails(Mailbox& mailbox, const SBinary& entryId)
{
    Details details;
    details.message = std::make_shared<CZebMessage>();
    CZebMessage& message = *details.message;
    mailbox.Store().OpenEntry(entryId, message, 0);
    const tools::ReadableMessage read = tools::ReadText(message, tools::BodyKind::Plain);
    details.text = PageOf(read);
    details.attachments = read.attachments;
    details.recipients = ReadRecipients(message);
    details.properties = ReadPropertyRows(message);
    return details;
}

Details ReadAddressDetails(Mailbox& mailbox, const SBinary& entryId)
{
    CZebABItem entry;
    mailbox.Book().OpenEntry(entryId, entry, 0);
    Details details;
    details.properties = ReadPropertyRows(entry);
    details.text = Field("Name:", TextOf(entry, PR_DISPLAY_NAME_W)) + Field("Type:", TextOf(entry, PR_ADDRTYPE_W)) +
                   Field("Address:", TextOf(entry, PR_EMAIL_ADDRESS_W)) + Field("Title:", TextOf(entry, PR_TITLE_W)) +
                   Field("Comment:", TextOf(entry, PR_COMMENT_W));
    if (entry.GetObjectType() == MAPI_DISTLIST)
    {
        details.recipients = ReadMembers(entry);
        details.text += Field("Members:", tools::Grouped(details.recipients.size()));
    }
    return details;
}

Details ReadObjectDetails(const std::string& name, CZebIProp& object)
{
    Details details;
    details.properties = ReadPropertyRows(object);
    details.text = Field("Name:", name);
    for (const auto& [title, tag] : {std::pair("Messages:", PR_CONTENT_COUNT), std::pair("Unread:", PR_CONTENT_UNREAD)})
    {
        details.text += Field(title, ValueIn(details.properties, tag));
    }
    return details;
}

void SaveAttachment(CZebMessage& message, const tools::ListedAttachment& attachment, const std::string& file)
{
    if (attachment.method != ATTACH_BY_VALUE)
    {
        throw tools::ToolError("the attachment '" + tools::OneLine(attachment.name) + "' " +
                               (tools::IsMessage(attachment) ? "is a message, not a file" : "is not stored as a file"));
    }
    CZebAttachment opened = message.OpenAttachment(attachment.number, 0);
    tools::OutputFile output(file);
    if (const CComPtr<IStream> content = tools::OptionalStream(opened, PR_ATTACH_DATA_BIN))
    {
        tools::ForEachPiece(*content.Get(), [&](const std::string& piece) { output.Write(piece); });
    }
    output.Finish();
}

} // namespace zeb::view
