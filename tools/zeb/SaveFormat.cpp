#include "tools/zeb/SaveFormat.h"

#include "platform/text.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyReader.h"
#include "tools/common/PropertyValues.h"
#include "tools/common/Times.h"
#include "tools/zeb/LoadValues.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace zeb::tools
{
namespace
{

constexpr size_t SourcePiece = 64 * 1024;

void AppendHex(std::string& out, const char* bytes, size_t size)
{
    constexpr char Digits[] = "0123456789ABCDEF";
    for (size_t i = 0; i < size; ++i)
    {
        const auto byte = static_cast<unsigned char>(bytes[i]);
        out += Digits[byte >> 4];
        out += Digits[byte & 15];
    }
}

std::string Hex(const std::string& bytes)
{
    std::string text;
    text.reserve(bytes.size() * 2);
    AppendHex(text, bytes.data(), bytes.size());
    return text;
}

/// The bits of a number as "0x" and hexadecimal digits.
template <class Number>
std::string Bits(const std::string& bytes)
{
    char text[20];
    std::snprintf(text, sizeof text, "0x%0*llX", static_cast<int>(2 * sizeof(Number)),
                  static_cast<unsigned long long>(NumberFromBytes<Number>(bytes)));
    return text;
}

FileJson FloatInFile(const std::string& bytes, bool isDouble)
{
    const double number =
        isDouble ? NumberFromBytes<double>(bytes) : static_cast<double>(NumberFromBytes<float>(bytes));
    if (std::isfinite(number))
    {
        return number;
    }
    return isDouble ? Bits<uint64_t>(bytes) : Bits<uint32_t>(bytes);
}

FileJson TextInFile(const std::string& bytes, bool isWide)
{
    // Bytes that JSON text cannot represent are written as hexadecimal digits.
    if (!isWide)
    {
        const std::string text = Utf8FromNarrow(bytes);
        if (NarrowFromUtf8(text) == bytes && bytes.find('\0') == std::string::npos)
        {
            return text;
        }
        return {{"hex", Hex(bytes)}};
    }
    platform::WideString wide(bytes.size() / sizeof(WCHAR), WCHAR(0));
    std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(WCHAR));
    const std::string text = platform::Utf8FromWide(wide.data(), wide.size());
    if (platform::WideFromUtf8(text.data(), text.size()) == wide && text.find('\0') == std::string::npos)
    {
        return text;
    }
    return {{"hex", Hex(bytes)}};
}

FileJson ElementInFile(ULONG type, const std::string& bytes)
{
    switch (type)
    {
    case PT_I2:
        return NumberFromBytes<int16_t>(bytes);
    case PT_LONG:
        return NumberFromBytes<int32_t>(bytes);
    case PT_ERROR:
        return Bits<uint32_t>(bytes);
    case PT_I8:
    case PT_CURRENCY:
        return NumberFromBytes<int64_t>(bytes);
    case PT_R4:
        return FloatInFile(bytes, false);
    case PT_DOUBLE:
    case PT_APPTIME:
        return FloatInFile(bytes, true);
    case PT_BOOLEAN:
        if (NumberFromBytes<uint16_t>(bytes) > 1)
        {
            return Bits<uint16_t>(bytes);
        }
        return NumberFromBytes<uint16_t>(bytes) == 1;
    case PT_STRING8:
    case PT_UNICODE:
        return TextInFile(bytes, type == PT_UNICODE);
    case PT_SYSTIME:
        return TimeForMachines(NumberFromBytes<FILETIME>(bytes));
    case PT_CLSID:
        return GuidText(NumberFromBytes<GUID>(bytes));
    default:
        return Hex(bytes);
    }
}

std::string Dumped(const FileJson& value)
{
    return value.dump(-1, ' ', false, FileJson::error_handler_t::replace);
}

/// The name of a tag in MAPI's headers if it is read back as the same tag; empty for others.
std::string LookUpHeaderName(ULONG tag)
{
    const char* name = Zeb_NameFromValue("PropTags", tag, nullptr);
    const bool isText = IsText(PROP_TYPE(tag));
    if (name == nullptr && isText)
    {
        name = Zeb_NameFromValue("PropTags", Narrowed(tag), nullptr);
    }
    ULONG back = 0;
    if (name == nullptr || !Zeb_ValueFromName("PropTags", name, &back))
    {
        return {};
    }
    const bool isNarrow = isText && tag == Narrowed(tag);
    const std::string text = isNarrow ? name + std::string("_A") : name;
    try
    {
        return PropertyNamed(text).tag == tag ? text : std::string();
    }
    catch (const ToolError&)
    {
        return {};
    }
}

const std::string& HeaderName(ULONG tag)
{
    static std::unordered_map<ULONG, std::string> known;
    const auto found = known.find(tag);
    return found != known.end() ? found->second : known.emplace(tag, LookUpHeaderName(tag)).first->second;
}

std::string NamedName(const Property& property)
{
    const char* type = Zeb_NameFromValue("PropType", property.Type(), nullptr);
    if (type == nullptr)
    {
        return {};
    }
    std::string text = GuidText(property.name->set) + ":" + type;
    if (property.name->isText)
    {
        return text + ":name:" + Utf8(CStringW(property.name->text.c_str()));
    }
    char number[16];
    std::snprintf(number, sizeof number, ":id:0x%04X", static_cast<unsigned>(property.name->id));
    return text + number;
}

/// The properties of one object sorted by name; the same order for every store.
void AppendProperties(std::string& out, ObjectKind kind, const Properties& properties,
                      const std::vector<ULONG>& removed = {})
{
    std::map<std::string, const Property*> byName;
    for (const Property& property : properties)
    {
        if (property.name || !IsStoresOwn(kind, property.tag))
        {
            byName.emplace(NameInFile(property), &property);
        }
    }
    for (const ULONG tag : removed)
    {
        Property missing;
        missing.tag = tag;
        byName.emplace(NameInFile(missing), nullptr);
    }
    byName.erase(std::string());
    out += '{';
    const char* separator = "";
    for (const auto& entry : byName)
    {
        out += separator + Dumped(entry.first) + ": ";
        if (entry.second != nullptr)
        {
            AppendValue(out, *entry.second);
        }
        else
        {
            out += "null";
        }
        separator = ", ";
    }
    out += '}';
}

bool Has(const Properties& properties, ULONG tag)
{
    return std::any_of(properties.begin(), properties.end(),
                       [&](const Property& each) { return !each.name && PROP_ID(each.tag) == PROP_ID(tag); });
}

/// Properties that a store adds when it saves a message, and that this message does not have.
std::vector<ULONG> RemovedOf(const MessageContent& message)
{
    std::vector<ULONG> candidates = {PR_MESSAGE_CLASS_W};
    if (Has(message.properties, PR_SUBJECT))
    {
        candidates.insert(candidates.end(), {PR_SUBJECT_PREFIX_W, PR_NORMALIZED_SUBJECT_W});
    }
    if (!message.recipients.empty())
    {
        candidates.insert(candidates.end(), {PR_DISPLAY_TO_W, PR_DISPLAY_CC_W, PR_DISPLAY_BCC_W});
    }
    candidates.erase(
        std::remove_if(candidates.begin(), candidates.end(), [&](ULONG tag) { return Has(message.properties, tag); }),
        candidates.end());
    return candidates;
}

void AppendMessage(std::string& out, const MessageContent& message);

void AppendAttachments(std::string& out, const std::vector<AttachmentContent>& attachments)
{
    const char* separator = ", \"attachments\": [";
    for (const AttachmentContent& attachment : attachments)
    {
        out += separator + std::string("{\"properties\": ");
        AppendProperties(out, ObjectKind::Attachment, attachment.properties);
        if (attachment.message)
        {
            out += ", \"message\": {";
            AppendMessage(out, *attachment.message);
            out += '}';
        }
        out += '}';
        separator = ", ";
    }
    if (!attachments.empty())
    {
        out += ']';
    }
}

/// The keys of a message, without the braces around them.
void AppendMessage(std::string& out, const MessageContent& message)
{
    out += "\"properties\": ";
    AppendProperties(out, ObjectKind::Message, message.properties, RemovedOf(message));
    const char* separator = ", \"recipients\": [";
    for (const Properties& recipient : message.recipients)
    {
        out += separator + std::string("{\"properties\": ");
        AppendProperties(out, ObjectKind::Recipient, recipient);
        out += '}';
        separator = ", ";
    }
    if (!message.recipients.empty())
    {
        out += ']';
    }
    AppendAttachments(out, message.attachments);
}

} // namespace

std::string NameInFile(const Property& property)
{
    if (property.name)
    {
        return NamedName(property);
    }
    if (PROP_ID(property.tag) == 0 || PROP_ID(property.tag) >= 0x8000)
    {
        return {};
    }
    const std::string& name = HeaderName(property.tag);
    if (!name.empty())
    {
        return name;
    }
    char number[16];
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(property.tag));
    return number;
}

FileJson ValueInFile(const Property& property)
{
    const ULONG type = property.Type() & ~static_cast<ULONG>(MV_FLAG);
    if (property.source)
    {
        return ElementInFile(type, ReadAll(*property.source));
    }
    if ((property.Type() & MV_FLAG) == 0)
    {
        return ElementInFile(type, property.values.front());
    }
    FileJson list = FileJson::array();
    for (const std::string& bytes : property.values)
    {
        list.push_back(ElementInFile(type, bytes));
    }
    return list;
}

void AppendValue(std::string& out, const Property& property)
{
    if (!property.source || IsText(property.Type()))
    {
        out += Dumped(ValueInFile(property));
        return;
    }
    out += '"';
    out.reserve(out.size() + 2 * static_cast<size_t>(property.source->Size()) + SourcePiece);
    std::string piece(SourcePiece, '\0');
    while (const size_t size = property.source->Read(piece.data(), piece.size()))
    {
        AppendHex(out, piece.data(), size);
    }
    out += '"';
}

std::string FolderLine(const FolderPath& folder, const Properties& properties)
{
    Properties own;
    for (const Property& property : properties)
    {
        // The path contains the name.
        if (property.name || PROP_ID(property.tag) != PROP_ID(PR_DISPLAY_NAME))
        {
            own.push_back(property);
        }
    }
    std::string line = "{\"folder\": " + Dumped(folder.Text()) + ", \"folderProperties\": ";
    AppendProperties(line, ObjectKind::Folder, own);
    return line + "}\n";
}

std::string MessageLine(const FolderPath& folder, bool associated, const MessageContent& message)
{
    std::string line = "{\"folder\": " + Dumped(folder.Text()) + ", ";
    if (associated)
    {
        line += "\"associated\": true, ";
    }
    AppendMessage(line, message);
    return line += "}\n";
}

} // namespace zeb::tools
