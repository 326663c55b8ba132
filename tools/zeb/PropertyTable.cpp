#include "tools/zeb/PropertyTable.h"

#include "platform/text.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyValues.h"
#include "tools/zeb/SaveFormat.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>

namespace zeb::tools
{
namespace
{

/// The line width without a terminal.
constexpr size_t ColumnsWithoutTerminal = 120;
constexpr size_t NarrowestValue = 12, NarrowestName = 16, WidestName = 40, TypeWidth = 13;
/// The number of bytes read of a long value that is shown shortened.
constexpr size_t BeginningOfValue = 1024;

/// A property whose values are MAPI constants, and the table of their names.
struct KnownNumber
{
    ULONG tag;
    const char* table;
    bool isBits;
};

constexpr KnownNumber KnownNumbers[] = {
    {PR_MESSAGE_FLAGS, "MsgFlags", true},      {PR_OBJECT_TYPE, "MAPIObjTypes", false},
    {PR_RECIPIENT_TYPE, "RecipType", false},   {PR_PRIORITY, "Priority", false},
    {PR_ATTACH_METHOD, "AttachMethod", false}, {PR_FOLDER_TYPE, "FolderType", false},
    {PR_RESOURCE_TYPE, "ResourceType", false}};

std::string NamesOfBits(const char* table, ULONG value)
{
    std::string names;
    for (ULONG bit = 1; bit != 0; bit <<= 1)
    {
        if (const char* name = value & bit ? Zeb_NameFromValue(table, bit, nullptr) : nullptr)
        {
            names += (names.empty() ? "" : " | ") + std::string(name);
        }
    }
    return names;
}

/// A number with its name, if any: "5 (MAPI_MESSAGE)".
std::string NumberText(const Property& property, LONG value)
{
    std::string text = std::to_string(value);
    for (const KnownNumber& known : KnownNumbers)
    {
        if (property.name || PROP_ID(known.tag) != PROP_ID(property.tag))
        {
            continue;
        }
        const char* name = Zeb_NameFromValue(known.table, static_cast<ULONG>(value), nullptr);
        const std::string names = known.isBits      ? NamesOfBits(known.table, static_cast<ULONG>(value))
                                  : name != nullptr ? name
                                                    : "";
        if (!names.empty())
        {
            text += " (" + names + ")";
        }
    }
    return text;
}

std::string TextOfBytes(const std::string& bytes, bool isWide)
{
    if (!isWide)
    {
        return Utf8FromNarrow(bytes);
    }
    platform::WideString wide(bytes.size() / sizeof(WCHAR), WCHAR(0));
    std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(WCHAR));
    return platform::Utf8FromWide(wide.data(), wide.size());
}

std::string HexOf(const std::string& bytes)
{
    std::string text;
    char digits[4];
    for (const char byte : bytes)
    {
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        text += digits;
    }
    return text;
}

std::string ErrorText(ULONG code)
{
    const char* name = Zeb_NameFromValue("MAPIErrors", code, nullptr);
    char number[16];
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(code));
    return name != nullptr ? name : number;
}

/// A text for display: in one line, or complete with line breaks.
std::string ShownText(const std::string& text, bool full)
{
    if (!full)
    {
        return OneLine(text);
    }
    std::string shown;
    for (size_t at = 0; at <= text.size();)
    {
        const size_t end = std::min(text.find('\n', at), text.size());
        const bool hasReturn = end > at && end < text.size() && text[end - 1] == '\r';
        shown += (at == 0 ? "" : "\n") + OneLine(text.substr(at, end - at - (hasReturn ? 1 : 0)));
        at = end + 1;
    }
    return shown;
}

/// One element as text for display.
std::string ElementText(const Property& property, const std::string& bytes, const TableStyle& style)
{
    const ULONG type = property.Type() & ~static_cast<ULONG>(MV_FLAG);
    switch (type)
    {
    case PT_LONG:
        return NumberText(property, NumberFromBytes<LONG>(bytes));
    case PT_ERROR:
        return ErrorText(NumberFromBytes<ULONG>(bytes));
    case PT_STRING8:
    case PT_UNICODE:
        return ShownText(TextOfBytes(bytes, type == PT_UNICODE), style.full);
    case PT_SYSTIME:
        return TimeWithZone(NumberFromBytes<FILETIME>(bytes), style.zone);
    case PT_BINARY:
        return HexOf(bytes);
    default:
        break;
    }
    Property single;
    single.tag = PROP_TAG(type, PROP_ID(property.tag));
    single.values.push_back(bytes);
    const FileJson value = ValueInFile(single);
    return value.is_string() ? value.get<std::string>() : value.dump();
}

std::string SizeText(const Property& property, uint64_t bytes)
{
    if (property.Type() == PT_UNICODE)
    {
        return "(" + Grouped(bytes / sizeof(WCHAR)) + " characters) ";
    }
    return "(" + Grouped(bytes) + (bytes == 1 ? " byte) " : " bytes) ");
}

/// The first bytes of a source, or, with `full`, all of them.
std::string Beginning(ByteSource& source, bool full)
{
    std::string bytes(full ? static_cast<size_t>(source.Size()) : BeginningOfValue, '\0');
    size_t done = 0;
    while (const size_t got = done < bytes.size() ? source.Read(bytes.data() + done, bytes.size() - done) : 0)
    {
        done += got;
    }
    bytes.resize(done);
    return bytes;
}

std::string ValueText(const Property& property, const TableStyle& style)
{
    if (property.source)
    {
        return SizeText(property, property.source->Size()) +
               ElementText(property, Beginning(*property.source, style.full), style);
    }
    if ((property.Type() & MV_FLAG) == 0)
    {
        const std::string& bytes = property.values.front();
        const bool cut = !style.full && bytes.size() > BeginningOfValue;
        const std::string size = property.Type() == PT_BINARY || cut ? SizeText(property, bytes.size()) : "";
        return size + ElementText(property, cut ? bytes.substr(0, BeginningOfValue) : bytes, style);
    }
    std::string text = "(" + Grouped(property.values.size()) + ") ";
    for (size_t i = 0; i < property.values.size() && (style.full || text.size() < BeginningOfValue); ++i)
    {
        text += (i == 0 ? "" : ", ") + ElementText(property, property.values[i], style);
    }
    return text;
}

std::string TypeText(const Property& property)
{
    const char* name = Zeb_NameFromValue("PropType", property.Type(), nullptr);
    char number[16];
    std::snprintf(number, sizeof number, "0x%04X", static_cast<unsigned>(property.Type()));
    return name != nullptr ? name : number;
}

/// The name in the first column; for a named property its name within the set.
std::string ShortName(const Property& property)
{
    if (!property.name)
    {
        return PropertyText(property);
    }
    if (property.name->isText)
    {
        return OneLine(Utf8(CStringW(property.name->text.c_str())));
    }
    char number[16];
    std::snprintf(number, sizeof number, "0x%04X", static_cast<unsigned>(property.name->id));
    return number;
}

using Rows = std::vector<std::pair<std::string, const Property*>>;

void PrintRows(Rows& rows, const std::string& indent, size_t nameWidth, const TableStyle& style)
{
    std::stable_sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    const size_t columns = style.columns == 0 ? ColumnsWithoutTerminal : style.columns;
    const size_t used = indent.size() + nameWidth + 2 + TypeWidth + 2;
    const size_t room = columns > used + NarrowestValue ? columns - used : NarrowestValue;
    for (const auto& row : rows)
    {
        const std::string value = ValueText(*row.second, style);
        const std::string lines = indent + Fitted(row.first, nameWidth) + "  " +
                                  Fitted(TypeText(*row.second), TypeWidth) + "  " +
                                  (style.full ? value : Shortened(value, room));
        for (size_t at = 0; at <= lines.size();)
        {
            const size_t end = std::min(lines.find('\n', at), lines.size());
            const std::string line = (at == 0 ? "" : std::string(used, ' ')) + lines.substr(at, end - at);
            Print(line.substr(0, line.find_last_not_of(' ') + 1) + "\n");
            at = end + 1;
        }
    }
}

} // namespace

void PrintProperties(const Properties& properties, const std::string& indent, const TableStyle& style)
{
    Rows plain;
    std::map<std::string, Rows> sets;
    const size_t others = indent.size() + 2 + TypeWidth + 2 + NarrowestValue;
    const size_t widest = style.columns == 0                       ? WidestName
                          : style.columns < others + NarrowestName ? NarrowestName
                                                                   : std::min(style.columns - others, WidestName);
    size_t nameWidth = 0;
    for (const Property& property : properties)
    {
        Rows& rows = property.name ? sets[GuidText(property.name->set)] : plain;
        rows.emplace_back(ShortName(property), &property);
        nameWidth = std::max(nameWidth, std::min(DisplayWidth(rows.back().first), widest));
    }
    PrintRows(plain, indent, nameWidth, style);
    for (auto& set : sets)
    {
        Print(indent + "named in " + set.first + "\n");
        PrintRows(set.second, indent, nameWidth, style);
    }
}

std::string ShownValues(const Property& property, Zone zone)
{
    TableStyle style;
    style.zone = zone;
    std::string text;
    for (const std::string& bytes : property.values)
    {
        text += (text.empty() ? "" : ", ") + ElementText(property, bytes, style);
    }
    return text;
}

Json PropertiesForMachines(const Properties& properties)
{
    std::map<std::string, Json> byName;
    for (const Property& property : properties)
    {
        Json object;
        const std::string name = NameInFile(property);
        char tag[16];
        std::snprintf(tag, sizeof tag, "0x%08X", static_cast<unsigned>(property.tag));
        object["name"] = name.empty() ? tag : name;
        object["tag"] = tag;
        object["type"] = TypeText(property);
        object["value"] = ValueInFile(property);
        byName.emplace(object["name"], object);
    }
    Json list = Json::array();
    for (const auto& entry : byName)
    {
        list.push_back(entry.second);
    }
    return list;
}

} // namespace zeb::tools
