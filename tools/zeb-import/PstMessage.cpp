#include "tools/zeb-import/PstMessage.h"

#include "tools/common/Failure.h"
namespace zeb::tools
{
namespace
{

/// Larger attachments (bytes) are read in pieces.
constexpr size64_t LargestInMemory = 1024 * 1024;
/// An attachment's bytes; keeps the attachment and its message open.
class AttachmentBytes : public ByteSource
{
public:
    AttachmentBytes(std::shared_ptr<libpff_item_t> message, pff::Item attachment, uint64_t size)
        : m_message(std::move(message))
        , m_attachment(std::move(attachment))
        , m_size(size)
    {
    }

    uint64_t Size() override { return m_size; }

    size_t Read(char* buffer, size_t size) override
    {
        libpff_error_t* error = nullptr;
        const ssize_t read =
            libpff_attachment_data_read_buffer(m_attachment.get(), reinterpret_cast<uint8_t*>(buffer), size, &error);
        pff::Check(read < 0 ? -1 : 0, error, "an attachment cannot be read");
        return static_cast<size_t>(read);
    }

private:
    std::shared_ptr<libpff_item_t> m_message;
    pff::Item m_attachment;
    const uint64_t m_size;
};

Property* Find(Properties& properties, ULONG id)
{
    for (Property& property : properties)
    {
        if (!property.name && PROP_ID(property.tag) == id)
        {
            return &property;
        }
    }
    return nullptr;
}

/// The file keeps the length of the subject's prefix ("RE: ") in two characters before the text; they are not part of
/// the property.
void StripSubjectMark(Properties& properties)
{
    Property* subject = Find(properties, PROP_ID(PR_SUBJECT));
    if (subject == nullptr || subject->values.size() != 1)
    {
        return;
    }
    std::string& text = subject->values.front();
    const size_t width = subject->Type() == PT_UNICODE ? 2 : 1;
    if (text.size() >= 2 * width && text[0] == 1 && (width == 1 || text[1] == 0))
    {
        text.erase(0, 2 * width);
    }
}

/// Defers reading the bytes of a large attachment until they are written. The bytes of an OLE object, which the file
/// stores next to its properties, become the property that MAPI uses for them.
void ReadAttachmentData(const std::shared_ptr<libpff_item_t>& message, pff::Item attachment, Properties& properties)
{
    size64_t size = 0;
    libpff_error_t* error = nullptr;
    const int known = libpff_attachment_get_data_size(attachment.get(), &size, &error);
    pff::Check(known, error, "an attachment cannot be read");
    Property* data = Find(properties, PROP_ID(PR_ATTACH_DATA_BIN));
    if (known != 1 || data != nullptr ? size <= LargestInMemory : size == 0)
    {
        return;
    }
    if (data == nullptr)
    {
        properties.emplace_back();
        data = &properties.back();
        data->tag = PR_ATTACH_DATA_OBJ;
    }
    data->values.clear();
    data->source = std::make_shared<AttachmentBytes>(message, std::move(attachment), size);
}

MessageContent ReadMessage(const std::shared_ptr<libpff_item_t>& item, int depth);

AttachmentContent ReadAttachment(const std::shared_ptr<libpff_item_t>& message, int index, int depth)
{
    pff::Item attachment = pff::Take("an attachment cannot be read", [&](libpff_item_t** item, libpff_error_t** error)
    { return libpff_message_get_attachment(message.get(), index, item, error); });
    AttachmentContent content;
    content.properties = pff::ReadRecordSet(attachment.get(), 0);
    const int type = pff::Number("an attachment has no type", [&](int* number, libpff_error_t** error)
    { return libpff_attachment_get_type(attachment.get(), number, error); });
    if (type == LIBPFF_ATTACHMENT_TYPE_ITEM)
    {
        pff::Item embedded =
            pff::Take("an embedded message cannot be read", [&](libpff_item_t** item, libpff_error_t** error)
        { return libpff_attachment_get_item(attachment.get(), item, error); });
        // The embedded item must not outlive its attachment, nor the attachment the message.
        struct Owner
        {
            std::shared_ptr<libpff_item_t> message;
            pff::Item attachment, embedded;
        };
        const auto owner = std::make_shared<Owner>(Owner{message, std::move(attachment), std::move(embedded)});
        content.message = std::make_shared<MessageContent>(
            ReadMessage(std::shared_ptr<libpff_item_t>(owner, owner->embedded.get()), depth + 1));
        return content;
    }
    ReadAttachmentData(message, std::move(attachment), content.properties);
    return content;
}

std::vector<Properties> ReadRecipients(libpff_item_t* message)
{
    std::vector<Properties> recipients;
    const pff::Item list = pff::Take("the recipients cannot be read", [&](libpff_item_t** item, libpff_error_t** error)
    { return libpff_message_get_recipients(message, item, error); });
    for (int i = 0, count = list ? pff::RecordSets(list.get()) : 0; i < count; ++i)
    {
        recipients.push_back(pff::ReadRecordSet(list.get(), i));
    }
    return recipients;
}

MessageContent ReadMessage(const std::shared_ptr<libpff_item_t>& item, int depth)
{
    RefuseTooDeep(depth);
    MessageContent content;
    content.properties = pff::ReadRecordSet(item.get(), 0);
    StripSubjectMark(content.properties);
    content.recipients = ReadRecipients(item.get());
    const int attachments = pff::Number("the attachments cannot be read", [&](int* number, libpff_error_t** error)
    { return libpff_message_get_number_of_attachments(item.get(), number, error); });
    for (int i = 0; i < attachments; ++i)
    {
        content.attachments.push_back(ReadAttachment(item, i, depth));
    }
    return content;
}

} // namespace

MessageContent ReadPstMessage(std::shared_ptr<libpff_item_t> item)
{
    return ReadMessage(item, 0);
}

} // namespace zeb::tools
