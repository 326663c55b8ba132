// A property to be written to a store, with its value in the byte form of MAPI's file formats.
#pragma once

#include "zebapi/ZebAPI.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The name of a named property.
struct PropertyName
{
    GUID set{};
    bool isText = false;
    LONG id = 0;                   ///< used when the name is a number
    std::basic_string<WCHAR> text; ///< used when the name is a text
};

/// A byte source that is read in pieces, for values too large for memory.
class ByteSource
{
public:
    virtual ~ByteSource() = default;
    /// The total number of bytes.
    virtual uint64_t Size() = 0;
    /// Reads at most `size` bytes into `buffer`. @return the bytes read, 0 at the end.
    virtual size_t Read(char* buffer, size_t size) = 0;
};

/// One property. A value is its bytes in little-endian order: numbers in their size, PT_BOOLEAN in 2 bytes, text
/// without a terminator (PT_UNICODE in UTF-16), a GUID in 16 bytes, binaries unchanged. A single value is one element;
/// a multi-valued property has any number.
struct Property
{
    ULONG tag = 0; ///< for a named property only the type is used
    std::optional<PropertyName> name;
    std::vector<std::string> values;
    std::shared_ptr<ByteSource> source; ///< when set: the value of a string or binary instead of `values`
    bool removed = false;               ///< when writing: delete the property from the object

    ULONG Type() const { return PROP_TYPE(tag); }
};

using Properties = std::vector<Property>;

/// The size of one element of a fixed-size type in a Property; 0 for strings and binaries.
/// @throws ToolError for a type that no property can have
size_t ElementSize(ULONG type);

/// An element of a property as a number; the bytes that it does not have are 0.
template <class Number>
Number NumberFromBytes(const std::string& bytes)
{
    Number number{};
    std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof number));
    return number;
}

/// "PR_SUBJECT", or "0x68010003" when the identifier has no name, or the name of a named property.
std::string PropertyText(const Property& property);
/// The same for a tag.
std::string PropertyText(ULONG tag);

/// A GUID as "{00062008-0000-0000-C000-000000000046}".
std::string GuidText(const GUID& guid);
/// The inverse; accepts either case. @return false when the text is not a GUID
bool ParseGuid(const std::string& text, GUID& guid);

/// Fills `values` with copies of `properties`, whose tags are all real, byte by byte: also what the array's typed
/// assignments do not keep, such as other truth values than 0 and 1. Properties with a source are refused.
/// @throws ToolError for bytes that do not fit the type
void FillValues(CZebPropValArray& values, const std::vector<const Property*>& properties);

} // namespace zeb::tools
