#include "tools/common/Property.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/common/PropertyNames.h"

#include <cstdio>
#include <cstring>

namespace zeb::tools
{
namespace
{

[[noreturn]] void BadValue(const Property& property, const char* what)
{
    throw ToolError(PropertyText(property) + " " + what);
}

void* Allocate(size_t size, void* parent)
{
    if (size > 0x7FFFFFFF)
    {
        throw ToolError("a value of more than 2 GiB does not fit into memory");
    }
    return Zeb_MemAllocate(static_cast<unsigned long>(size), parent);
}

/// A copy of the bytes in MAPI memory, followed by two zero bytes.
char* Terminated(const std::string& bytes, void* parent)
{
    char* copy = static_cast<char*>(Allocate(bytes.size() + 2, parent));
    std::memcpy(copy, bytes.data(), bytes.size());
    return copy;
}

SBinary BinaryOf(const std::string& bytes, void* parent)
{
    SBinary binary;
    binary.cb = static_cast<ULONG>(bytes.size());
    binary.lpb = reinterpret_cast<BYTE*>(Terminated(bytes, parent));
    return binary;
}

void SetSingle(const Property& property, SPropValue& value, void* parent)
{
    if (property.values.size() != 1)
    {
        BadValue(property, "needs one value");
    }
    const std::string& bytes = property.values.front();
    const size_t size = ElementSize(property.Type());
    if (size != 0 && bytes.size() != size)
    {
        BadValue(property, "has a value of the wrong size");
    }
    switch (property.Type())
    {
    case PT_STRING8:
        value.Value.lpszA = Terminated(bytes, parent);
        break;
    case PT_UNICODE:
        value.Value.lpszW = reinterpret_cast<LPWSTR>(Terminated(bytes, parent));
        break;
    case PT_BINARY:
        value.Value.bin = BinaryOf(bytes, parent);
        break;
    case PT_CLSID:
        value.Value.lpguid = reinterpret_cast<LPGUID>(Terminated(bytes, parent));
        break;
    default:
        std::memcpy(&value.Value, bytes.data(), bytes.size());
        break;
    }
}

/// The elements of a fixed-size multi-valued property, in sequence.
void* Packed(const Property& property, size_t size, void* parent)
{
    char* packed = static_cast<char*>(Allocate(property.values.size() * size, parent));
    for (size_t i = 0; i < property.values.size(); ++i)
    {
        if (property.values[i].size() != size)
        {
            BadValue(property, "has an element of the wrong size");
        }
        std::memcpy(packed + i * size, property.values[i].data(), size);
    }
    return packed;
}

void SetMany(const Property& property, SPropValue& value, void* parent)
{
    const size_t count = property.values.size();
    // All array members of the union have the same layout: a count and a pointer.
    value.Value.MVl.cValues = static_cast<ULONG>(count);
    if (const size_t size = ElementSize(property.Type() & ~MV_FLAG))
    {
        value.Value.MVl.lpl = static_cast<LONG*>(Packed(property, size, parent));
        return;
    }
    if (property.Type() == PT_MV_BINARY)
    {
        auto* elements = static_cast<SBinary*>(Allocate(count * sizeof(SBinary), parent));
        for (size_t i = 0; i < count; ++i)
        {
            elements[i] = BinaryOf(property.values[i], parent);
        }
        value.Value.MVbin.lpbin = elements;
        return;
    }
    auto* elements = static_cast<char**>(Allocate(count * sizeof(char*), parent));
    for (size_t i = 0; i < count; ++i)
    {
        elements[i] = Terminated(property.values[i], parent);
    }
    value.Value.MVszA.lppszA = elements;
}

} // namespace

size_t ElementSize(ULONG type)
{
    switch (type)
    {
    case PT_I2:
    case PT_BOOLEAN:
        return 2;
    case PT_LONG:
    case PT_R4:
    case PT_ERROR:
        return 4;
    case PT_DOUBLE:
    case PT_CURRENCY:
    case PT_APPTIME:
    case PT_I8:
    case PT_SYSTIME:
        return 8;
    case PT_CLSID:
        return 16;
    case PT_STRING8:
    case PT_UNICODE:
    case PT_BINARY:
        return 0;
    default:
        char text[64];
        std::snprintf(text, sizeof text, "properties cannot be written with type 0x%04X", static_cast<unsigned>(type));
        throw ToolError(text);
    }
}

std::string GuidText(const GUID& guid)
{
    char text[40];
    std::snprintf(text, sizeof text, "{%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}",
                  static_cast<unsigned>(guid.Data1), guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1],
                  guid.Data4[2], guid.Data4[3], guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
    return text;
}

bool ParseGuid(const std::string& text, GUID& guid)
{
    constexpr const char* Shape = "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}";
    if (text.size() != std::strlen(Shape))
    {
        return false;
    }
    std::string digits;
    for (size_t i = 0; i < text.size(); ++i)
    {
        if (Shape[i] != 'x' ? text[i] != Shape[i] : std::strchr("0123456789abcdefABCDEF", text[i]) == nullptr)
        {
            return false;
        }
        if (Shape[i] == 'x')
        {
            digits += text[i];
        }
    }
    guid.Data1 = static_cast<ULONG>(std::stoul(digits.substr(0, 8), nullptr, 16));
    guid.Data2 = static_cast<WORD>(std::stoul(digits.substr(8, 4), nullptr, 16));
    guid.Data3 = static_cast<WORD>(std::stoul(digits.substr(12, 4), nullptr, 16));
    for (size_t i = 0; i < 8; ++i)
    {
        guid.Data4[i] = static_cast<BYTE>(std::stoul(digits.substr(16 + 2 * i, 2), nullptr, 16));
    }
    return true;
}

std::string PropertyText(const Property& property)
{
    char number[16];
    if (property.name)
    {
        std::snprintf(number, sizeof number, "0x%04X", static_cast<unsigned>(property.name->id));
        const std::string name =
            property.name->isText ? Utf8(CStringW(property.name->text.c_str())) : std::string(number);
        return "named property " + GuidText(property.name->set) + " " + name;
    }
    if (const char* name = NameOfProperty(PROP_ID(property.tag)))
    {
        return name;
    }
    std::snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(property.tag));
    return number;
}

std::string PropertyText(ULONG tag)
{
    Property property;
    property.tag = tag;
    return PropertyText(property);
}

void FillValues(CZebPropValArray& values, const std::vector<const Property*>& properties)
{
    // The buffer is the array's from here on.
    SPropValue*& buffer = *&values;
    buffer = static_cast<SPropValue*>(Allocate(properties.size() * sizeof(SPropValue), nullptr));
    *values.CountPtr() = static_cast<ULONG>(properties.size());
    for (size_t i = 0; i < properties.size(); ++i)
    {
        const Property& property = *properties[i];
        if (property.source)
        {
            BadValue(property, "is too large for memory");
        }
        buffer[i].ulPropTag = property.tag;
        if (property.Type() & MV_FLAG)
        {
            SetMany(property, buffer[i], buffer);
        }
        else
        {
            SetSingle(property, buffer[i], buffer);
        }
    }
}

} // namespace zeb::tools
