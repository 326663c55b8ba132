#include "tools/common/MsgWriter.h"

#include "tools/common/MsgNames.h"
#include "tools/common/PropertyReader.h"

#include <algorithm>

namespace zeb::tools
{
namespace
{

using namespace msg;

/// A property may be read and written.
constexpr ULONG EntryFlags = 6;
/// In place of the size of an object: it is in a folder, and is a message.
constexpr ULONG NoSize = 0xFFFFFFFF, ObjectIsMessage = 1;
/// In PR_STORE_SUPPORT_MASK: text is in 16 bits.
constexpr LONG UnicodeStore = 0x00040000;

void Append(std::string& bytes, ULONG number)
{
    bytes.append(reinterpret_cast<const char*>(&number), sizeof number);
}

platform::CompoundSource SourceOf(const std::string& bytes)
{
    return [&bytes, done = size_t{0}](char* buffer, size_t size) mutable
    {
        const size_t piece = std::min(size, bytes.size() - done);
        bytes.copy(buffer, piece, done);
        done += piece;
        return piece;
    };
}

/// The bytes of a text's terminator; 0 for other types.
size_t TerminatorSize(ULONG type)
{
    const ULONG single = type & ~static_cast<ULONG>(MV_FLAG);
    return single == PT_UNICODE ? sizeof(WCHAR) : single == PT_STRING8 ? 1 : 0;
}

/// Writes one message with all that is in it.
class Writer
{
public:
    explicit Writer(platform::CompoundOutput& top)
        : m_top(top)
    {
    }

    std::vector<std::string> Write(const MessageContent& content)
    {
        WriteMessage(m_top, content, MessageHeader);
        m_names.Write(m_top);
        m_top.Finish();
        return std::move(m_leftOut);
    }

private:
    /// The properties of an object: their stream is written last.
    struct Object
    {
        platform::CompoundOutput& folder;
        std::string entries;
    };

    static void AddEntry(Object& object, ULONG tag, std::string value)
    {
        value.resize(2 * sizeof(ULONG));
        Append(object.entries, tag);
        Append(object.entries, EntryFlags);
        object.entries += value;
    }

    static void AddSize(Object& object, ULONG tag, uint64_t size, ULONG reserved = 0)
    {
        std::string value;
        Append(value, static_cast<ULONG>(size));
        Append(value, reserved);
        AddEntry(object, tag, value);
    }

    static void AddLong(Object& object, ULONG tag, ULONG number)
    {
        std::string value;
        Append(value, number);
        AddEntry(object, tag, value);
    }

    /// A text, binary or GUID in a stream of its own.
    static void AddInStream(Object& object, ULONG tag, const Property& property)
    {
        static const std::string none;
        uint64_t size = 0;
        const auto source = property.source ? platform::CompoundSource([&](char* buffer, size_t most)
        { return property.source->Read(buffer, most); })
                                            : SourceOf(property.values.empty() ? none : property.values.front());
        object.folder.AddStream(ValueName(tag), [&](char* buffer, size_t most)
        {
            const size_t read = source(buffer, most);
            size += read;
            return read;
        });
        AddSize(object, tag, size + TerminatorSize(PROP_TYPE(tag)));
    }

    /// Texts and binaries of a multi-valued property: a stream of their sizes, and one for each.
    static void AddElements(Object& object, ULONG tag, const std::vector<std::string>& values)
    {
        const size_t terminator = TerminatorSize(PROP_TYPE(tag));
        std::string sizes;
        for (size_t i = 0; i < values.size(); ++i)
        {
            const std::string whole = values[i] + std::string(terminator, '\0');
            object.folder.AddStream(ElementName(tag, i), SourceOf(whole));
            Append(sizes, static_cast<ULONG>(whole.size()));
            if (terminator == 0)
            {
                Append(sizes, 0);
            }
        }
        object.folder.AddStream(ValueName(tag), SourceOf(sizes));
        AddSize(object, tag, sizes.size());
    }

    static void AddNumbers(Object& object, ULONG tag, const std::vector<std::string>& values)
    {
        std::string all;
        for (const std::string& value : values)
        {
            all += value;
        }
        object.folder.AddStream(ValueName(tag), SourceOf(all));
        AddSize(object, tag, all.size());
    }

    void AddProperty(Object& object, const Property& property)
    {
        const ULONG id = property.name ? m_names.IdOf(*property.name) : PROP_ID(property.tag);
        if (id == 0 || (!property.name && id >= FirstNamedId))
        {
            m_leftOut.push_back(PropertyText(property) + " is left out: it has no name");
            return;
        }
        const ULONG type = property.Type(), tag = PROP_TAG(type, id);
        if (type == PT_OBJECT)
        {
            return AddInStream(object, tag, property);
        }
        const bool isMany = (type & MV_FLAG) != 0;
        const size_t size = ElementSize(type & ~static_cast<ULONG>(MV_FLAG));
        if (isMany)
        {
            size == 0 ? AddElements(object, tag, property.values) : AddNumbers(object, tag, property.values);
        }
        else if (size == 0 || size > 2 * sizeof(ULONG))
        {
            AddInStream(object, tag, property);
        }
        else
        {
            AddEntry(object, tag, property.values.front());
        }
    }

    void AddProperties(Object& object, ObjectKind kind, const Properties& properties)
    {
        for (const Property& property : properties)
        {
            if (!property.removed && (property.name || !IsStoresOwn(kind, property.tag)))
            {
                AddProperty(object, property);
            }
        }
    }

    static void Finish(const Object& object, const std::string& header)
    {
        object.folder.AddStream(PropertiesName, SourceOf(header + object.entries));
    }

    void WriteRecipient(platform::CompoundOutput& above, const Properties& recipient, ULONG number)
    {
        const auto folder = above.AddFolder(RecipientPrefix + Hex(number));
        Object object{*folder, {}};
        AddProperties(object, ObjectKind::Recipient, recipient);
        AddLong(object, PR_ROWID, number);
        Finish(object, std::string(PartHeader, '\0'));
        folder->Finish();
    }

    void WriteAttachment(platform::CompoundOutput& above, const AttachmentContent& attachment, ULONG number)
    {
        const auto folder = above.AddFolder(AttachmentPrefix + Hex(number));
        Object object{*folder, {}};
        AddProperties(object, ObjectKind::Attachment, attachment.properties);
        AddLong(object, PR_ATTACH_NUM, number);
        if (attachment.message)
        {
            const auto inside = folder->AddFolder(ValueName(PR_ATTACH_DATA_OBJ));
            WriteMessage(*inside, *attachment.message, EmbeddedHeader);
            inside->Finish();
            AddSize(object, PR_ATTACH_DATA_OBJ, NoSize, ObjectIsMessage);
        }
        Finish(object, std::string(PartHeader, '\0'));
        folder->Finish();
    }

    void WriteMessage(platform::CompoundOutput& folder, const MessageContent& content, size_t headerSize)
    {
        const auto recipients = static_cast<ULONG>(content.recipients.size());
        const auto attachments = static_cast<ULONG>(content.attachments.size());
        for (ULONG i = 0; i < recipients; ++i)
        {
            WriteRecipient(folder, content.recipients[i], i);
        }
        for (ULONG i = 0; i < attachments; ++i)
        {
            WriteAttachment(folder, content.attachments[i], i);
        }
        Object object{folder, {}};
        AddProperties(object, ObjectKind::Message, content.properties);
        AddLong(object, PR_STORE_SUPPORT_MASK, UnicodeStore);
        // The numbers for the next ones, and how many there are.
        std::string header(2 * sizeof(ULONG), '\0');
        for (const ULONG number : {recipients, attachments, recipients, attachments})
        {
            Append(header, number);
        }
        header.resize(headerSize);
        Finish(object, header);
    }

    platform::CompoundOutput& m_top;
    MsgNames m_names;
    std::vector<std::string> m_leftOut;
};

} // namespace

std::vector<std::string> WriteMsg(const MessageContent& content, const std::string& file)
{
    const auto top = platform::CreateCompoundFile(file, MessageClass);
    return Writer(*top).Write(content);
}

} // namespace zeb::tools
