#include "tools/zeb-import/Pff.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <algorithm>
#include <cstring>

namespace zeb::tools::pff
{
namespace
{

struct FreeRecordSet
{
    void operator()(libpff_record_set_t* set) const { libpff_record_set_free(&set, nullptr); }
};
struct FreeEntry
{
    void operator()(libpff_record_entry_t* entry) const { libpff_record_entry_free(&entry, nullptr); }
};
using Entry = std::unique_ptr<libpff_record_entry_t, FreeEntry>;

constexpr const char* Reading = "a property cannot be read";

/// Calls libpff and throws when it fails.
template <class Call>
int Do(Call&& call)
{
    libpff_error_t* error = nullptr;
    return Check(call(&error), error, Reading);
}

std::string DataOf(libpff_record_entry_t* entry)
{
    size_t size = 0;
    Do([&](libpff_error_t** error) { return libpff_record_entry_get_data_size(entry, &size, error); });
    std::string data(size, '\0');
    if (size > 0)
    {
        Do([&](libpff_error_t** error)
        { return libpff_record_entry_get_data(entry, reinterpret_cast<uint8_t*>(data.data()), size, error); });
    }
    return data;
}

/// Text of the file's code page as the library's narrow text, UTF-8, without its terminator.
std::string NarrowTextOf(libpff_record_entry_t* entry)
{
    size_t size = 0;
    Do([&](libpff_error_t** error) { return libpff_record_entry_get_data_as_utf8_string_size(entry, &size, error); });
    std::string text(size, '\0');
    if (size > 0)
    {
        Do([&](libpff_error_t** error)
        {
            return libpff_record_entry_get_data_as_utf8_string(entry, reinterpret_cast<uint8_t*>(text.data()), size,
                                                               error);
        });
    }
    return text.substr(0, text.find('\0'));
}

/// UTF-16 text up to its terminator.
std::string WithoutTerminator(std::string utf16)
{
    utf16.resize(utf16.size() & ~size_t{1});
    for (size_t i = 0; i + 1 < utf16.size(); i += 2)
    {
        if (utf16[i] == 0 && utf16[i + 1] == 0)
        {
            utf16.resize(i);
        }
    }
    return utf16;
}

/// The stored bytes of a single value in the form of a Property. The file stores short numbers in four bytes, or in
/// fewer bytes than their type has.
std::string SingleValue(ULONG type, std::string data)
{
    if (type == PT_UNICODE)
    {
        return WithoutTerminator(std::move(data));
    }
    if (const size_t size = ElementSize(type))
    {
        data.resize(size, '\0');
    }
    return data;
}

uint32_t NumberAt(const std::string& data, size_t offset)
{
    uint32_t number = 0;
    for (size_t i = 4; i-- > 0;)
    {
        number = number << 8 | static_cast<unsigned char>(data[offset + i]);
    }
    return number;
}

/// The offsets of the elements of a multi-valued property, followed by the end of the last one: numbers are contiguous;
/// texts and binaries are preceded by their count and the offset of each.
std::vector<size_t> Bounds(const std::string& data, size_t elementSize)
{
    constexpr size_t Word = 4;
    std::vector<size_t> bounds;
    bool sound = true;
    if (elementSize != 0)
    {
        sound = data.size() % elementSize == 0;
        for (size_t at = 0; at <= data.size(); at += elementSize)
        {
            bounds.push_back(at);
        }
    }
    else
    {
        const size_t count = data.size() < Word ? 0 : NumberAt(data, 0);
        sound = (data.empty() || data.size() >= Word) && count <= data.size() / Word - (data.empty() ? 0 : 1);
        for (size_t i = 0; sound && i < count; ++i)
        {
            bounds.push_back(NumberAt(data, Word * (i + 1)));
        }
        bounds.push_back(data.size());
    }
    for (size_t i = 1; i < bounds.size(); ++i)
    {
        sound = sound && bounds[i - 1] <= bounds[i];
    }
    if (!sound)
    {
        throw ToolError("a multi-valued property is damaged");
    }
    return bounds;
}

std::vector<std::string> ManyValues(libpff_record_entry_t* entry, ULONG type)
{
    const std::string data = DataOf(entry);
    const std::vector<size_t> bounds = Bounds(data, ElementSize(type));
    std::vector<std::string> values;
    for (size_t i = 1; i < bounds.size(); ++i)
    {
        std::string bytes = data.substr(bounds[i - 1], bounds[i] - bounds[i - 1]);
        if (type == PT_STRING8)
        {
            bytes.resize(std::min(bytes.find('\0'), bytes.size()));
        }
        values.push_back(SingleValue(type, std::move(bytes)));
    }
    return values;
}

PropertyName NameOf(libpff_name_to_id_map_entry_t* map)
{
    PropertyName name;
    uint8_t kind = 0;
    uint8_t guid[16] = {};
    Do([&](libpff_error_t** error) { return libpff_name_to_id_map_entry_get_guid(map, guid, sizeof guid, error); });
    std::memcpy(&name.set, guid, sizeof name.set);
    Do([&](libpff_error_t** error) { return libpff_name_to_id_map_entry_get_type(map, &kind, error); });
    name.isText = kind == LIBPFF_NAME_TO_ID_MAP_ENTRY_TYPE_STRING;
    if (!name.isText)
    {
        uint32_t number = 0;
        Do([&](libpff_error_t** error) { return libpff_name_to_id_map_entry_get_number(map, &number, error); });
        name.id = static_cast<LONG>(number);
        return name;
    }
    size_t size = 0;
    Do([&](libpff_error_t** error) { return libpff_name_to_id_map_entry_get_utf16_string_size(map, &size, error); });
    std::vector<uint16_t> text(size + 1);
    Do([&](libpff_error_t** error)
    { return libpff_name_to_id_map_entry_get_utf16_string(map, text.data(), size, error); });
    for (size_t i = 0; i < size && text[i] != 0; ++i)
    {
        name.text += static_cast<WCHAR>(text[i]);
    }
    return name;
}

/// @return false for an entry that is not a property (a row's internal entries have no type)
bool ReadEntry(libpff_record_entry_t* entry, Property& property)
{
    uint32_t id = 0, type = 0;
    if (Do([&](libpff_error_t** error) { return libpff_record_entry_get_entry_type(entry, &id, error); }) == 0 ||
        Do([&](libpff_error_t** error) { return libpff_record_entry_get_value_type(entry, &type, error); }) == 0)
    {
        return false;
    }
    // Objects are read separately; they have no property here.
    if (type == PT_OBJECT || type == PT_NULL || type == PT_UNSPECIFIED)
    {
        return false;
    }
    libpff_name_to_id_map_entry_t* map = nullptr;
    if (Do([&](libpff_error_t** error) { return libpff_record_entry_get_name_to_id_map_entry(entry, &map, error); }) ==
            1 &&
        map != nullptr)
    {
        property.name = NameOf(map);
    }
    // A name that is missing from the file's map has no meaning outside the file.
    else if (id >= 0x8000)
    {
        return false;
    }
    property.tag = PROP_TAG(type, property.name ? 0 : id);
    if (type & MV_FLAG)
    {
        property.values = ManyValues(entry, type & ~static_cast<ULONG>(MV_FLAG));
    }
    else if (type == PT_STRING8)
    {
        property.values.push_back(NarrowTextOf(entry));
    }
    else
    {
        property.values.push_back(SingleValue(type, DataOf(entry)));
    }
    return true;
}

} // namespace

int Check(int result, libpff_error_t*& error, const std::string& what)
{
    if (result != -1)
    {
        return result;
    }
    char text[512] = "";
    if (error != nullptr)
    {
        libpff_error_sprint(error, text, sizeof text);
    }
    libpff_error_free(&error);
    std::string words = text;
    words.erase(words.find_last_not_of(" \n.") + 1);
    throw ToolError(what + (words.empty() ? "" : " (" + words + ")"));
}

int RecordSets(libpff_item_t* item)
{
    return Number(Reading, [&](int* number, libpff_error_t** error)
    { return libpff_item_get_number_of_record_sets(item, number, error); });
}

Properties ReadRecordSet(libpff_item_t* item, int index)
{
    libpff_record_set_t* raw = nullptr;
    Do([&](libpff_error_t** error) { return libpff_item_get_record_set_by_index(item, index, &raw, error); });
    const std::unique_ptr<libpff_record_set_t, FreeRecordSet> set(raw);
    const int count = Number(Reading, [&](int* number, libpff_error_t** error)
    { return libpff_record_set_get_number_of_entries(raw, number, error); });
    Properties properties;
    for (int i = 0; i < count; ++i)
    {
        libpff_record_entry_t* rawEntry = nullptr;
        Do([&](libpff_error_t** error) { return libpff_record_set_get_entry_by_index(raw, i, &rawEntry, error); });
        const Entry entry(rawEntry);
        Property property;
        if (ReadEntry(rawEntry, property))
        {
            properties.push_back(std::move(property));
        }
    }
    return properties;
}

} // namespace zeb::tools::pff
