#include "tools/zeb-import/MsgReader.h"

#include "tools/common/Failure.h"
#include "tools/common/MsgNames.h"
#include "tools/common/PropertyReader.h"

#include <algorithm>
#include <set>

namespace zeb::tools
{
namespace
{

/// Larger binaries (bytes) stay in their stream.
constexpr uint64_t LargestValueInMemory = 256 * 1024;

/// The value of a property, in its stream.
class MsgBytes final : public ByteSource
{
public:
    explicit MsgBytes(std::unique_ptr<platform::CompoundStream> stream)
        : m_stream(std::move(stream))
    {
    }

    uint64_t Size() override { return m_stream->Size(); }
    size_t Read(char* buffer, size_t size) override { return m_stream->Read(buffer, size); }

private:
    const std::unique_ptr<platform::CompoundStream> m_stream;
};

/// One entry of an object's list of properties.
struct MsgEntry
{
    ULONG tag = 0;
    std::string value; ///< 8 bytes

    ULONG Type() const { return PROP_TYPE(tag); }
    ULONG Single() const { return PROP_TYPE(tag) & ~static_cast<ULONG>(MV_FLAG); }
    bool IsMany() const { return (PROP_TYPE(tag) & MV_FLAG) != 0; }
};

bool IsKnownType(ULONG type)
{
    try
    {
        ElementSize(type);
        return true;
    }
    catch (const ToolError&)
    {
        return false;
    }
}

/// The folders whose names begin with `prefix`, in the order of the numbers after it.
std::vector<std::string> Numbered(const platform::CompoundFolder& folder, const std::string& prefix)
{
    std::vector<std::string> names;
    for (const std::string& name : folder.Names())
    {
        if (name.compare(0, prefix.size(), prefix) == 0)
        {
            names.push_back(name);
        }
    }
    // The numbers have eight digits each.
    std::sort(names.begin(), names.end());
    return names;
}

/// Reads the message of one file.
class MsgReader
{
public:
    MsgReader(platform::CompoundFolder& top, Notes& notes)
        : m_names(ReadMsgNames(top))
        , m_notes(notes)
    {
    }

    MessageContent ReadMessage(platform::CompoundFolder& folder, size_t header, int depth)
    {
        RefuseTooDeep(depth);
        MessageContent content;
        content.properties = ReadProperties(folder, header, ObjectKind::Message);
        for (const std::string& name : Numbered(folder, msg::RecipientPrefix))
        {
            content.recipients.push_back(
                ReadProperties(*FolderNamed(folder, name), msg::PartHeader, ObjectKind::Recipient));
        }
        for (const std::string& name : Numbered(folder, msg::AttachmentPrefix))
        {
            content.attachments.push_back(ReadAttachment(*FolderNamed(folder, name), depth));
        }
        return content;
    }

private:
    static std::shared_ptr<platform::CompoundFolder> FolderNamed(platform::CompoundFolder& folder,
                                                                 const std::string& name)
    {
        auto found = folder.OpenFolder(name);
        if (!found)
        {
            throw ToolError("'" + name + "' is not a folder");
        }
        return found;
    }

    AttachmentContent ReadAttachment(platform::CompoundFolder& folder, int depth)
    {
        AttachmentContent attachment;
        attachment.properties = ReadProperties(folder, msg::PartHeader, ObjectKind::Attachment);
        const auto object = folder.OpenFolder(msg::ValueName(PR_ATTACH_DATA_OBJ));
        if (object && object->OpenStream(msg::PropertiesName))
        {
            attachment.message = std::make_shared<MessageContent>(ReadMessage(*object, msg::EmbeddedHeader, depth + 1));
        }
        else if (object)
        {
            m_notes.Add("the object of an attachment is left out: it is in the form of another program");
        }
        else if (folder.OpenStream(msg::ValueName(PR_ATTACH_DATA_OBJ)))
        {
            Property& data = attachment.properties.emplace_back();
            data.tag = PR_ATTACH_DATA_OBJ;
            ReadBinary(folder, {data.tag, {}}, data);
        }
        return attachment;
    }

    Properties ReadProperties(platform::CompoundFolder& folder, size_t header, ObjectKind kind)
    {
        if (!folder.OpenStream(msg::PropertiesName))
        {
            throw ToolError(std::string("the stream '") + msg::PropertiesName + "' is missing");
        }
        const std::string list = MsgStream(folder, msg::PropertiesName);
        if (list.size() < header)
        {
            throw ToolError(std::string("the stream '") + msg::PropertiesName + "' is truncated");
        }
        Properties properties;
        std::set<ULONG> seen;
        for (size_t at = header; at + msg::EntrySize <= list.size(); at += msg::EntrySize)
        {
            const MsgEntry entry{NumberFromBytes<ULONG>(list.substr(at, sizeof(ULONG))), list.substr(at + 8, 8)};
            if (IsWanted(entry, kind) && seen.insert(PROP_ID(entry.tag)).second)
            {
                ReadProperty(folder, entry, properties);
            }
        }
        return properties;
    }

    bool IsWanted(const MsgEntry& entry, ObjectKind kind)
    {
        if (entry.tag == PR_ATTACH_DATA_OBJ || (PROP_ID(entry.tag) < msg::FirstNamedId && IsStoresOwn(kind, entry.tag)))
        {
            return false;
        }
        if (PROP_ID(entry.tag) == 0 || !IsKnownType(entry.Single()) || entry.Single() == PT_OBJECT)
        {
            m_notes.Add("the property 0x" + msg::Hex(entry.tag) + " is left out: it has an unknown type");
            return false;
        }
        return true;
    }

    void ReadProperty(platform::CompoundFolder& folder, const MsgEntry& entry, Properties& properties)
    {
        Property property;
        property.tag = entry.tag;
        if (PROP_ID(entry.tag) >= msg::FirstNamedId)
        {
            const size_t index = PROP_ID(entry.tag) - msg::FirstNamedId;
            if (index >= m_names.size() || !m_names[index])
            {
                return m_notes.Add("the property 0x" + msg::Hex(entry.tag) + " is left out: it has no name");
            }
            property.name = m_names[index];
        }
        ReadValue(folder, entry, property);
        properties.push_back(std::move(property));
    }

    void ReadValue(platform::CompoundFolder& folder, const MsgEntry& entry, Property& property)
    {
        const size_t size = ElementSize(entry.Single());
        if (entry.IsMany())
        {
            property.values = size == 0 ? Elements(folder, entry) : Numbers(folder, entry, size);
        }
        else if (size != 0 && size <= entry.value.size())
        {
            property.values.push_back(entry.value.substr(0, size));
        }
        else if (entry.Type() == PT_BINARY)
        {
            ReadBinary(folder, entry, property);
        }
        else
        {
            std::string bytes = ValueStream(folder, entry);
            if (size != 0 && bytes.size() != size)
            {
                throw ToolError(PropertyText(property) + " has " + std::to_string(bytes.size()) + " bytes, not " +
                                std::to_string(size));
            }
            property.values.push_back(AsText(std::move(bytes), entry.Type()));
        }
    }

    /// The stream of a value; one that an empty value does not need may be missing.
    static std::unique_ptr<platform::CompoundStream> OpenValue(platform::CompoundFolder& folder, const MsgEntry& entry)
    {
        constexpr ULONG LargestEmpty = 2; // a terminator
        auto stream = folder.OpenStream(msg::ValueName(entry.tag));
        if (!stream && NumberFromBytes<ULONG>(entry.value) > LargestEmpty)
        {
            throw ToolError("the stream '" + msg::ValueName(entry.tag) + "' is missing");
        }
        return stream;
    }

    static std::string ValueStream(platform::CompoundFolder& folder, const MsgEntry& entry)
    {
        OpenValue(folder, entry);
        return MsgStream(folder, msg::ValueName(entry.tag));
    }

    static void ReadBinary(platform::CompoundFolder& folder, const MsgEntry& entry, Property& property)
    {
        auto stream = OpenValue(folder, entry);
        if (stream && stream->Size() > LargestValueInMemory)
        {
            property.source = std::make_shared<MsgBytes>(std::move(stream));
        }
        else
        {
            // On Windows a stream can be opened again only after it was closed.
            stream.reset();
            property.values.push_back(MsgStream(folder, msg::ValueName(entry.tag)));
        }
    }

    static std::vector<std::string> Numbers(platform::CompoundFolder& folder, const MsgEntry& entry, size_t size)
    {
        const std::string all = ValueStream(folder, entry);
        std::vector<std::string> values;
        for (size_t at = 0; at + size <= all.size(); at += size)
        {
            values.push_back(all.substr(at, size));
        }
        return values;
    }

    /// The texts or binaries of a multi-valued property.
    std::vector<std::string> Elements(platform::CompoundFolder& folder, const MsgEntry& entry)
    {
        const size_t width = entry.Single() == PT_BINARY ? 2 * sizeof(ULONG) : sizeof(ULONG);
        const size_t count = ValueStream(folder, entry).size() / width;
        std::vector<std::string> values;
        for (size_t i = 0; i < count; ++i)
        {
            const std::string name = msg::ElementName(entry.tag, i);
            if (!folder.OpenStream(name))
            {
                throw ToolError("the stream '" + name + "' is missing");
            }
            values.push_back(AsText(MsgStream(folder, name), entry.Single()));
        }
        return values;
    }

    /// A text without its terminator; a zero character inside becomes U+FFFD, because it ends a MAPI text. Other types
    /// stay as they are.
    std::string AsText(std::string bytes, ULONG type)
    {
        if (type != PT_UNICODE && type != PT_STRING8)
        {
            return bytes;
        }
        const size_t width = type == PT_UNICODE ? sizeof(WCHAR) : 1;
        const std::string zero(width, '\0'), mark = width == 1 ? "?" : "\xFD\xFF";
        bytes.resize(bytes.size() / width * width);
        if (bytes.size() >= width && bytes.compare(bytes.size() - width, width, zero) == 0)
        {
            bytes.resize(bytes.size() - width);
        }
        for (size_t at = 0; at < bytes.size(); at += width)
        {
            if (bytes.compare(at, width, zero) == 0)
            {
                bytes.replace(at, width, mark);
                m_notes.Add("a text has a zero character");
            }
        }
        return bytes;
    }

    const std::vector<std::optional<PropertyName>> m_names;
    Notes& m_notes;
};

} // namespace

MessageContent ReadMsg(const std::string& file, Notes& notes)
{
    const auto top = platform::OpenCompoundFile(file);
    if (!top->OpenStream(msg::PropertiesName))
    {
        throw ToolError("it is a compound file without a message");
    }
    return MsgReader(*top, notes).ReadMessage(*top, msg::MessageHeader, 0);
}

} // namespace zeb::tools
