// Recipients, attachments and embedded messages of PropertyReader.
#include "tools/common/Failure.h"
#include "tools/common/PropertyReader.h"
#include "tools/common/PropertyValues.h"

namespace zeb::tools
{
namespace
{

/// All available columns of a table, text in 16 bits.
std::vector<ULONG> AllColumns(CZebTable& table)
{
    CZebPropTagArray all;
    table.QueryColumns(&all, TBL_ALL_COLUMNS);
    std::vector<ULONG> tags;
    for (int i = 0; i < all.GetCount(); ++i)
    {
        const ULONG tag = all[i];
        if (IsText(PROP_TYPE(tag)))
        {
            tags.push_back(PROP_TAG(PT_UNICODE | (PROP_TYPE(tag) & MV_FLAG), PROP_ID(tag)));
        }
        else if (PROP_TYPE(tag) != PT_OBJECT)
        {
            tags.push_back(tag);
        }
    }
    return tags;
}

std::vector<ULONG> NarrowedText(std::vector<ULONG> tags)
{
    for (ULONG& tag : tags)
    {
        if (IsText(PROP_TYPE(tag)))
        {
            tag = Narrowed(tag);
        }
    }
    return tags;
}

void QueryColumns(CZebTable& table, const std::vector<ULONG>& columns, CZebRowSet& rows)
{
    table.SetColumns(static_cast<SPropTagArray*>(TagArray(columns)));
    table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr);
    table.QueryAllRows(&rows, nullptr, nullptr);
}

std::vector<ULONG> AttachmentNumbers(CZebMessage& message)
{
    std::vector<ULONG> numbers;
    for (CZebRow row : message.GetAttachmentTable(0).Rows({PR_ATTACH_NUM}))
    {
        if (row.hasRealValue(PR_ATTACH_NUM))
        {
            numbers.push_back(row[PR_ATTACH_NUM]);
        }
    }
    return numbers;
}

bool HasObject(CZebIProp& object, ULONG tag)
{
    CZebPropTagArray tags;
    object.GetPropList(&tags, 0);
    for (int i = 0; i < tags.GetCount(); ++i)
    {
        if (PROP_ID(tags[i]) == PROP_ID(tag) && PROP_TYPE(tags[i]) == PT_OBJECT)
        {
            return true;
        }
    }
    return false;
}

} // namespace

void RefuseTooDeep(int depth)
{
    constexpr int DeepestMessage = 32;
    if (depth > DeepestMessage)
    {
        throw ToolError("embedded messages are nested more than " + std::to_string(DeepestMessage) + " deep");
    }
}

MessageContent PropertyReader::ReadMessage(CZebMessage& message)
{
    return ReadMessage(message, 0);
}

MessageContent PropertyReader::ReadMessage(CZebMessage& message, int depth)
{
    RefuseTooDeep(depth);
    MessageContent content;
    content.properties = ReadObject(message);
    content.recipients = ReadRecipients(message);
    for (const ULONG number : AttachmentNumbers(message))
    {
        content.attachments.push_back(ReadAttachment(message, number, depth));
    }
    return content;
}

std::vector<Properties> PropertyReader::ReadRecipients(CZebMessage& message)
{
    CZebTable table = message.GetRecipientTable();
    std::vector<Properties> recipients;
    if (table.GetRowCount() == 0)
    {
        return recipients;
    }
    const std::vector<ULONG> columns = AllColumns(table);
    m_names.Learn(message, columns);
    CZebRowSet rows;
    QueryColumns(table, columns, rows);
    bool lost = false;
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        recipients.push_back(ReadRecipient(rows[i], columns, lost));
    }
    if (!lost)
    {
        return recipients;
    }
    CZebRowSet narrow;
    QueryColumns(table, NarrowedText(columns), narrow);
    for (ULONG i = 0; i < narrow.Count() && i < recipients.size(); ++i)
    {
        for (Property& property : recipients[i])
        {
            if (IsText(property.Type()) && narrow[i].hasRealValue(property.tag))
            {
                SettleWidth(property, ValueBytes(narrow[i][property.tag]));
            }
        }
    }
    return recipients;
}

Properties PropertyReader::ReadRecipient(const CZebRow& row, const std::vector<ULONG>& columns, bool& lost)
{
    Properties recipient;
    for (ULONG i = 0; i < row.Count(); ++i)
    {
        const SPropValue& value = row.GetAt(static_cast<int>(i));
        Property property;
        property.tag = columns[i];
        if (PROP_TYPE(value.ulPropTag) == PT_ERROR)
        {
            if (value.Value.err != MAPI_E_NOT_FOUND)
            {
                m_unread.push_back({columns[i], "the value is too large for the recipient table"});
            }
            continue;
        }
        property.values = ValueBytes(value);
        lost = lost || (IsText(property.Type()) && HasReplacement(property.values));
        Name(property);
        recipient.push_back(std::move(property));
    }
    return recipient;
}

AttachmentContent PropertyReader::ReadAttachment(CZebMessage& message, ULONG number, int depth)
{
    CZebAttachment attachment = message.OpenAttachment(number);
    AttachmentContent content;
    content.properties = ReadObject(attachment);
    if (!HasObject(attachment, PR_ATTACH_DATA_OBJ) || ReadEmbedded(attachment, content, depth))
    {
        return content;
    }
    // Any other object, as the bytes of its stream.
    try
    {
        Property data;
        data.tag = PR_ATTACH_DATA_OBJ;
        ReadLarge(attachment, data);
        content.properties.push_back(std::move(data));
    }
    catch (...)
    {
        m_unread.push_back({PR_ATTACH_DATA_OBJ, CurrentFailure()});
    }
    return content;
}

bool PropertyReader::ReadEmbedded(CZebAttachment& attachment, AttachmentContent& content, int depth)
{
    CZebMessage message;
    try
    {
        message = attachment.OpenMessage();
    }
    catch (CZebException* exception)
    {
        exception->Delete();
        return false;
    }
    content.message = std::make_shared<MessageContent>(ReadMessage(message, depth + 1));
    return true;
}

} // namespace zeb::tools
