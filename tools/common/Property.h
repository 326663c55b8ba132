// A property on its way into a store, with its value in the bytes that MAPI's files use.
#pragma once

#include "zebapi/ZebAPI.h"

#include <cstdint>
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
    LONG id = 0;                   ///< when it is a number
    std::basic_string<WCHAR> text; ///< when it is a text
};

/// Bytes that are read piece by piece, for values too large to hold.
class ByteSource
{
public:
    virtual ~ByteSource() = default;
    /// The bytes that there are in all.
    virtual uint64_t Size() = 0;
    /// Reads at most `size` bytes into `buffer`. @return the bytes read, 0 at the end.
    virtual size_t Read(char* buffer, size_t size) = 0;
};

/// One property. A value is its bytes in little-endian order: numbers in their own size, PT_BOOLEAN in 2
/// bytes, text without its terminator (PT_UNICODE in UTF-16), a GUID in 16 bytes, binaries as they are. A
/// single value is one element; a multi-valued property has any number.
struct Property
{
    ULONG tag = 0; ///< of a named property only the type counts
    std::optional<PropertyName> name;
    std::vector<std::string> values;
    std::shared_ptr<ByteSource> source; ///< when set: the value of a string or binary instead of `values`
    bool removed = false;               ///< on its way into a store: the object is not to have the property

    ULONG Type() const { return PROP_TYPE(tag); }
};

using Properties = std::vector<Property>;

/// The size of one element of a fixed-size type in a Property; 0 for strings and binaries.
/// @throws ToolError when no property can have the type
size_t ElementSize(ULONG type);

/// "PR_SUBJECT", or "0x68010003" when the identifier has no name, or the name of a named property.
std::string PropertyText(const Property& property);

/// A GUID as "{00062008-0000-0000-C000-000000000046}".
std::string GuidText(const GUID& guid);
/// The inverse; takes either case. @return false when the text is no GUID.
bool ParseGuid(const std::string& text, GUID& guid);

/// Properties as an array of SPropValue in MAPI memory, freed with the object.
class PropertyArray
{
public:
    PropertyArray() = default;
    ~PropertyArray();
    PropertyArray(const PropertyArray&) = delete;
    PropertyArray& operator=(const PropertyArray&) = delete;

    /// Copies `properties` whose tags are all real; those with a source are refused.
    /// @throws ToolError for bytes that do not fit the type
    void Assign(const std::vector<const Property*>& properties);

    SPropValue* Values() { return m_values; }
    ULONG Count() const { return m_count; }
    /// Hands the buffer to the caller, who frees it with Zeb_MemFree.
    SPropValue* Detach();

private:
    SPropValue* m_values = nullptr;
    ULONG m_count = 0;
};

} // namespace zeb::tools
