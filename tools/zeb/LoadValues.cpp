#include "tools/zeb/LoadValues.h"

#include "platform/text.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyNames.h"
#include "tools/common/Times.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>

namespace zeb::tools
{
namespace
{

template <class Number>
std::string Bytes(Number number)
{
    return std::string(reinterpret_cast<const char*>(&number), sizeof number);
}

[[noreturn]] void WrongType(const char* wanted, const FileJson& value)
{
    std::string shown = value.dump(-1, ' ', false, FileJson::error_handler_t::replace);
    if (shown.size() > 60)
    {
        shown = shown.substr(0, 57) + "...";
    }
    throw ToolError(std::string("needs ") + wanted + ", not " + shown);
}

bool IsHex(const std::string& text, size_t from)
{
    return text.find_first_not_of("0123456789abcdefABCDEF", from) == std::string::npos;
}

/// "0x" and `digits` hexadecimal digits as the little-endian bytes of that number. @return false for other text
bool RawNumber(const FileJson& value, size_t digits, std::string& bytes)
{
    if (!value.is_string())
    {
        return false;
    }
    const std::string& text = value.get_ref<const std::string&>();
    if (text.size() != digits + 2 || text.compare(0, 2, "0x") != 0 || !IsHex(text, 2))
    {
        return false;
    }
    const uint64_t number = std::stoull(text.substr(2), nullptr, 16);
    bytes = Bytes(number).substr(0, digits / 2);
    return true;
}

/// An integer from `lowest` to `highest`.
int64_t Integer(const FileJson& value, int64_t lowest, int64_t highest, const char* wanted)
{
    if (!value.is_number_integer())
    {
        WrongType(wanted, value);
    }
    if (value.is_number_unsigned() &&
        value.get<uint64_t>() > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
    {
        WrongType(wanted, value);
    }
    const int64_t number = value.get<int64_t>();
    if (number < lowest || number > highest)
    {
        WrongType(wanted, value);
    }
    return number;
}

std::string LongBytes(const FileJson& value)
{
    std::string raw;
    if (RawNumber(value, 8, raw))
    {
        return raw;
    }
    return Bytes(static_cast<uint32_t>(Integer(value, std::numeric_limits<int32_t>::min(),
                                               std::numeric_limits<uint32_t>::max(), "an integer of 32 bits")));
}

std::string FloatBytes(const FileJson& value, bool isDouble)
{
    std::string raw;
    if (RawNumber(value, isDouble ? 16 : 8, raw))
    {
        return raw;
    }
    if (!value.is_number())
    {
        WrongType("a number", value);
    }
    const double number = value.get<double>();
    if (isDouble)
    {
        return Bytes(number);
    }
    if (std::isfinite(number) && std::fabs(number) > static_cast<double>(std::numeric_limits<float>::max()))
    {
        WrongType("a number of 32 bits", value);
    }
    return Bytes(static_cast<float>(number));
}

std::string BooleanBytes(const FileJson& value)
{
    if (value.is_boolean())
    {
        return Bytes(static_cast<uint16_t>(value.get<bool>() ? 1 : 0));
    }
    std::string raw;
    if (RawNumber(value, 4, raw))
    {
        return raw;
    }
    WrongType("true or false", value);
}

std::string TimeBytes(const FileJson& value)
{
    FILETIME time{};
    if (!value.is_string() || !ParseTime(value.get_ref<const std::string&>(), time))
    {
        WrongType("a date such as \"2026-01-02T03:04:05.1234567Z\"", value);
    }
    return Bytes(time.dwLowDateTime) + Bytes(time.dwHighDateTime);
}

unsigned Digit(char digit)
{
    return static_cast<unsigned>(digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10);
}

std::string BinaryBytes(const FileJson& value)
{
    if (!value.is_string())
    {
        WrongType("hexadecimal text", value);
    }
    const std::string& text = value.get_ref<const std::string&>();
    if (text.size() % 2 != 0 || !IsHex(text, 0))
    {
        WrongType("hexadecimal text, two digits a byte", value);
    }
    std::string bytes;
    bytes.reserve(text.size() / 2);
    for (size_t i = 0; i < text.size(); i += 2)
    {
        bytes += static_cast<char>(Digit(text[i]) << 4 | Digit(text[i + 1]));
    }
    return bytes;
}

std::string TextBytes(const FileJson& value, bool wide)
{
    // Bytes that JSON text cannot represent are written as {"hex": "..."}.
    if (value.is_object() && value.size() == 1 && value.contains("hex"))
    {
        std::string bytes = BinaryBytes(value["hex"]);
        if (wide && bytes.size() % 2 != 0)
        {
            WrongType("two bytes per character", value);
        }
        return bytes;
    }
    if (!value.is_string())
    {
        WrongType("text", value);
    }
    const std::string& text = value.get_ref<const std::string&>();
    if (text.find('\0') != std::string::npos)
    {
        WrongType("text without a zero character", value);
    }
    if (!wide)
    {
        return NarrowFromUtf8(text);
    }
    const platform::WideString converted = platform::WideFromUtf8(text.data(), text.size());
    return std::string(reinterpret_cast<const char*>(converted.data()), converted.size() * sizeof(WCHAR));
}

std::string GuidBytes(const FileJson& value)
{
    GUID guid{};
    if (!value.is_string() || !ParseGuid(value.get_ref<const std::string&>(), guid))
    {
        WrongType("a GUID such as \"{00062008-0000-0000-C000-000000000046}\"", value);
    }
    return Bytes(guid);
}

std::string BytesFromJson(ULONG type, const FileJson& value)
{
    switch (type)
    {
    case PT_I2:
        return Bytes(static_cast<int16_t>(Integer(value, -0x8000, 0xFFFF, "an integer of 16 bits")));
    case PT_LONG:
    case PT_ERROR:
        return LongBytes(value);
    case PT_I8:
    case PT_CURRENCY:
        return Bytes(Integer(value, std::numeric_limits<int64_t>::min(), std::numeric_limits<int64_t>::max(),
                             "an integer of 64 bits"));
    case PT_R4:
        return FloatBytes(value, false);
    case PT_DOUBLE:
    case PT_APPTIME:
        return FloatBytes(value, true);
    case PT_BOOLEAN:
        return BooleanBytes(value);
    case PT_STRING8:
        return TextBytes(value, false);
    case PT_UNICODE:
        return TextBytes(value, true);
    case PT_SYSTIME:
        return TimeBytes(value);
    case PT_CLSID:
        return GuidBytes(value);
    default:
        return BinaryBytes(value);
    }
}

/// Parses a type name; text without a width is PT_UNICODE.
ULONG TypeNamed(const std::string& name)
{
    if (name == "PT_TSTRING")
    {
        return PT_UNICODE;
    }
    ULONG type = 0;
    if (!Zeb_ValueFromName("PropType", name.c_str(), &type))
    {
        throw ToolError("unknown property type \"" + name + "\"");
    }
    return type;
}

/// "{GUID}:PT_LONG:id:0x8503" or "{GUID}:PT_UNICODE:name:Keywords".
Property NamedProperty(const std::string& text)
{
    constexpr size_t GuidLength = 38;
    Property property;
    property.name.emplace();
    const size_t type = GuidLength + 1;
    const size_t kind = text.find(':', type);
    const size_t name = kind == std::string::npos ? kind : text.find(':', kind + 1);
    if (name == std::string::npos || text.size() < type || text[GuidLength] != ':' ||
        !ParseGuid(text.substr(0, GuidLength), property.name->set))
    {
        throw ToolError("\"" + text +
                        "\" is not a named property: the form is \"{GUID}:PT_LONG:id:0x8503\" or "
                        "\"{GUID}:PT_UNICODE:name:Keywords\"");
    }
    property.tag = PROP_TAG(TypeNamed(text.substr(type, kind - type)), 0);
    const std::string how = text.substr(kind + 1, name - kind - 1), rest = text.substr(name + 1);
    property.name->isText = how == "name";
    if (how == "name" && !rest.empty())
    {
        property.name->text = platform::WideFromUtf8(rest.data(), rest.size());
    }
    else if (how == "id" && rest.size() > 2 && rest.size() <= 10 && rest.compare(0, 2, "0x") == 0 && IsHex(rest, 2))
    {
        property.name->id = static_cast<LONG>(std::stoul(rest.substr(2), nullptr, 16));
    }
    else
    {
        throw ToolError("\"" + text + "\" names neither an identifier (id:0x8503) nor a text (name:Keywords)");
    }
    return property;
}

/// The wide tag of a narrow text property; other tags unchanged.
ULONG Widened(ULONG tag)
{
    if (PROP_TYPE(tag) == PT_STRING8)
    {
        return PROP_TAG(PT_UNICODE, PROP_ID(tag));
    }
    if (PROP_TYPE(tag) == PT_MV_STRING8)
    {
        return PROP_TAG(PT_MV_UNICODE, PROP_ID(tag));
    }
    return tag;
}

/// A name from MAPI's headers; the suffixes "_A" and "_W" choose the width of text.
bool TagNamed(const std::string& name, ULONG& tag)
{
    if (TagOfProperty(name, tag))
    {
        // The table has PT_STRING8; text in a file is Unicode by default.
        tag = Widened(tag);
        return true;
    }
    const bool narrow = name.size() > 2 && name.compare(name.size() - 2, 2, "_A") == 0;
    const bool wide = name.size() > 2 && name.compare(name.size() - 2, 2, "_W") == 0;
    if (!(narrow || wide) || !TagOfProperty(name.substr(0, name.size() - 2), tag))
    {
        return false;
    }
    if (PROP_TYPE(tag) != PT_STRING8 && PROP_TYPE(tag) != PT_MV_STRING8)
    {
        return false;
    }
    if (wide)
    {
        tag = Widened(tag);
    }
    return true;
}

} // namespace

Property PropertyNamed(const std::string& name)
{
    Property property;
    if (!name.empty() && name.front() == '{')
    {
        property = NamedProperty(name);
    }
    else if (name.size() == 10 && name.compare(0, 2, "0x") == 0 && IsHex(name, 2))
    {
        property.tag = static_cast<ULONG>(std::stoul(name.substr(2), nullptr, 16));
    }
    else if (!TagNamed(name, property.tag))
    {
        throw ToolError("unknown property \"" + name + "\"");
    }
    if (!property.name && (PROP_ID(property.tag) == 0 || PROP_ID(property.tag) >= 0x8000))
    {
        throw ToolError("\"" + name +
                        "\" cannot be stored in a file: identifiers from 0x8000 belong to named properties");
    }
    // A file stores an attachment's object as the bytes of its stream.
    if (property.tag != PR_ATTACH_DATA_OBJ)
    {
        ElementSize(property.Type() & ~static_cast<ULONG>(MV_FLAG));
    }
    return property;
}

void SetValues(Property& property, const FileJson& value)
{
    const ULONG element = property.Type() & ~static_cast<ULONG>(MV_FLAG);
    if ((property.Type() & MV_FLAG) == 0)
    {
        property.values.push_back(BytesFromJson(element, value));
        return;
    }
    if (!value.is_array())
    {
        WrongType("an array", value);
    }
    for (const FileJson& one : value)
    {
        property.values.push_back(BytesFromJson(element, one));
    }
}

} // namespace zeb::tools
