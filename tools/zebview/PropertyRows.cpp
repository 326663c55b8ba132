#include "tools/zebview/PropertyRows.h"

#include "platform/text.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyReader.h"
#include "tools/common/Times.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace zeb::view
{
namespace
{

using tools::Property;

/// More of a value than a row of a list can show.
constexpr size_t ShownBytes = 1024;
constexpr size_t BytesInLine = 16;
/// A value above this size is opened in part: a text of this length is the most that can still be read.
constexpr uint64_t LargestShown = 16 * 1024 * 1024;

std::string Format(const char* format, unsigned value)
{
    char text[24];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Hex(const std::string& bytes)
{
    std::string text;
    for (const char byte : bytes)
    {
        text += Format("%02X", static_cast<unsigned char>(byte));
    }
    return text;
}

std::string TextOfBytes(const std::string& bytes, ULONG type)
{
    if (type == PT_STRING8)
    {
        return tools::Utf8FromNarrow(bytes);
    }
    platform::WideString wide(bytes.size() / sizeof(WCHAR), WCHAR(0));
    std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(WCHAR));
    return platform::Utf8FromWide(wide.data(), wide.size());
}

std::string DoubleText(double number)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.15g", number);
    return text;
}

std::string ErrorText(ULONG code)
{
    const char* name = Zeb_NameFromValue("MAPIErrors", code, nullptr);
    return (name != nullptr ? std::string(name) + " " : std::string()) + Format("0x%08X", static_cast<unsigned>(code));
}

/// One element of a value.
std::string ElementText(ULONG type, const std::string& bytes)
{
    switch (type)
    {
    case PT_I2:
        return std::to_string(tools::NumberFromBytes<SHORT>(bytes));
    case PT_LONG:
        return std::to_string(tools::NumberFromBytes<LONG>(bytes)) +
               Format(" (0x%08X)", tools::NumberFromBytes<ULONG>(bytes));
    case PT_I8:
    case PT_CURRENCY:
        return std::to_string(tools::NumberFromBytes<int64_t>(bytes));
    case PT_R4:
        return DoubleText(static_cast<double>(tools::NumberFromBytes<float>(bytes)));
    case PT_DOUBLE:
    case PT_APPTIME:
        return DoubleText(tools::NumberFromBytes<double>(bytes));
    case PT_BOOLEAN:
        return tools::NumberFromBytes<SHORT>(bytes) != 0 ? "true" : "false";
    case PT_ERROR:
        return ErrorText(tools::NumberFromBytes<ULONG>(bytes));
    case PT_SYSTIME:
        return tools::TimeWithZone(tools::NumberFromBytes<FILETIME>(bytes), tools::Zone::Local);
    case PT_CLSID:
        return tools::GuidText(tools::NumberFromBytes<GUID>(bytes));
    case PT_STRING8:
    case PT_UNICODE:
        return TextOfBytes(bytes, type);
    default:
        return Hex(bytes);
    }
}

std::string TypeText(ULONG type)
{
    const char* name = Zeb_NameFromValue("PropType", type, nullptr);
    return name != nullptr ? name : Format("0x%04X", static_cast<unsigned>(type));
}

std::string StreamText(Property& property)
{
    const uint64_t bytes = property.source->Size();
    return property.Type() == PT_UNICODE ? "(" + tools::Counted(bytes / sizeof(WCHAR), "character", "characters") + ")"
                                         : "(" + tools::Counted(bytes, "byte", "bytes") + ")";
}

std::string RowText(Property& property)
{
    if (property.source)
    {
        return StreamText(property);
    }
    const ULONG type = property.Type() & ~static_cast<ULONG>(MV_FLAG);
    std::string text = property.Type() == type ? "" : "(" + tools::Grouped(property.values.size()) + ") ";
    for (size_t i = 0; i < property.values.size() && text.size() < ShownBytes; ++i)
    {
        text += (i == 0 ? "" : ", ") + ElementText(type, property.values[i].substr(0, ShownBytes));
    }
    return tools::OneLine(text);
}

/// "0010  48 65 6C 6C 6F ...  Hello"
std::string DumpLine(const std::string& bytes, size_t at)
{
    std::string line = Format("%08X ", static_cast<unsigned>(at));
    std::string characters;
    for (size_t i = at; i < at + BytesInLine; ++i)
    {
        const auto byte = i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0;
        line += i < bytes.size() ? " " + Format("%02X", byte) : "   ";
        characters += i >= bytes.size() ? ' ' : byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : '.';
    }
    return line + "  " + characters + "\n";
}

std::string Dump(const std::string& bytes)
{
    std::string text;
    for (size_t at = 0; at < bytes.size(); at += BytesInLine)
    {
        text += DumpLine(bytes, at);
    }
    return text;
}

bool IsEntryIdentifier(const Property& property)
{
    return !property.name && tools::PropertyText(property).find("ENTRYID") != std::string::npos;
}

std::string WholeBinary(const Property& property, const std::string& bytes)
{
    const std::string decoded = IsEntryIdentifier(property)
                                    ? tools::Utf8FromNarrow(Zeb_DumpEntryID(Hex(bytes).c_str()).GetString()) + "\n"
                                    : std::string();
    return decoded + tools::Counted(bytes.size(), "byte", "bytes") + "\n" + Dump(bytes);
}

std::string ReadStream(Property& property)
{
    const uint64_t size = property.source->Size();
    if (size > LargestShown)
    {
        throw tools::ToolError(tools::PropertyText(property) + " has " + tools::Grouped(size) +
                               " bytes: values up to " + tools::Grouped(LargestShown) + " bytes can be shown");
    }
    return ReadAll(*property.source);
}

} // namespace

std::vector<PropertyRow> ReadPropertyRows(CZebIProp& object)
{
    tools::PropertyReader reader(tools::ReadWhat::Beginnings);
    std::vector<PropertyRow> rows;
    for (Property& property : reader.ReadObject(object))
    {
        PropertyRow row;
        row.name = tools::OneLine(tools::PropertyText(property));
        row.type = TypeText(property.Type());
        row.value = RowText(property);
        row.property = std::move(property);
        rows.push_back(std::move(row));
    }
    for (const tools::Unread& unread : reader.TakeUnread())
    {
        rows.push_back(
            {{}, tools::PropertyText(unread.tag), TypeText(PROP_TYPE(unread.tag)), "cannot be read: " + unread.reason});
    }
    std::stable_sort(rows.begin(), rows.end(),
                     [](const PropertyRow& a, const PropertyRow& b) { return a.name < b.name; });
    return rows;
}

std::string WholeValue(Property& property)
{
    if (property.source)
    {
        // A source is read once: from here on the value is in memory.
        property.values = {ReadStream(property)};
        property.source.reset();
    }
    const ULONG type = property.Type() & ~static_cast<ULONG>(MV_FLAG);
    std::string text;
    for (const std::string& bytes : property.values)
    {
        text += type == PT_BINARY ? WholeBinary(property, bytes) : ElementText(type, bytes);
        text += &bytes == &property.values.back() ? "" : "\n";
    }
    return text;
}

} // namespace zeb::view
