#include "tests/zebstore/model/Value.h"

#include <cmath>

namespace zebstore::model
{

namespace
{

// More characters or bytes than these are generated only far above the provider's limit of 4,096 bytes.
constexpr size_t MostShown = 4096;
constexpr size_t SortedCharacters = 255;

template <class T>
int OrderOf(const T& left, const T& right)
{
    return left < right ? -1 : right < left ? 1 : 0;
}

bool IsReal(ULONG type)
{
    return type == PT_R4 || type == PT_DOUBLE || type == PT_APPTIME;
}

int OrderOfMany(const Value& left, const Value& right, int (*order)(const Value&, const Value&))
{
    for (size_t i = 0; i < std::min(left.many.size(), right.many.size()); ++i)
    {
        if (const int each = order(left.many[i], right.many[i]))
        {
            return each;
        }
    }
    return OrderOf(left.many.size(), right.many.size());
}

std::string FirstCharacters(const std::string& utf8, size_t count)
{
    size_t end = 0;
    while (end < utf8.size() && count > 0)
    {
        do
        {
            ++end;
        } while (end < utf8.size() && (static_cast<unsigned char>(utf8[end]) & 0xC0) == 0x80);
        --count;
    }
    return utf8.substr(0, end);
}

int OrderForSorting(const Value& left, const Value& right)
{
    if (IsTextType(left.type))
    {
        return OrderOf(FirstCharacters(FoldedText(left.text), SortedCharacters),
                       FirstCharacters(FoldedText(right.text), SortedCharacters));
    }
    if (IsReal(left.type) && (std::isnan(left.real) || std::isnan(right.real)))
    {
        return OrderOf(std::isnan(left.real), std::isnan(right.real));
    }
    return *Compared(left, right);
}

} // namespace

Value Number(ULONG type, std::int64_t number)
{
    Value value;
    value.type = type;
    value.number = number;
    return value;
}

Value Text(const Wide& text)
{
    Value value;
    value.type = PT_UNICODE;
    value.text = text;
    return value;
}

Value Text(const std::string& ascii)
{
    return Text(Wide(ascii.begin(), ascii.end()));
}

bool AreComparable(ULONG type, ULONG other)
{
    return type == other ||
           ((type & MV_FLAG) == (other & MV_FLAG) && IsTextType(SingleOf(type)) && IsTextType(SingleOf(other)));
}

bool IsLarge(const Value& value)
{
    return value.text.size() > MostShown || value.bytes.size() > MostShown;
}

std::string FoldedText(const Wide& text, TextFold fold)
{
    return Folded(test::StoredOf(text), fold);
}

std::optional<int> Compared(const Value& left, const Value& right)
{
    if ((left.type & MV_FLAG) != 0)
    {
        for (size_t i = 0; i < std::min(left.many.size(), right.many.size()); ++i)
        {
            const std::optional<int> each = Compared(left.many[i], right.many[i]);
            if (!each || *each != 0)
            {
                return each;
            }
        }
        return OrderOf(left.many.size(), right.many.size());
    }
    if (IsTextType(left.type))
    {
        return OrderOf(FoldedText(left.text), FoldedText(right.text));
    }
    if (IsReal(left.type))
    {
        const bool isNumber = !std::isnan(left.real) && !std::isnan(right.real);
        return isNumber ? std::optional(OrderOf(left.real, right.real)) : std::nullopt;
    }
    if (left.type == PT_BINARY || left.type == PT_CLSID)
    {
        return OrderOf(left.bytes, right.bytes);
    }
    return OrderOf(left.number, right.number);
}

int ComparedForSorting(const Value& left, const Value& right)
{
    if (!left || !right)
    {
        return OrderOf(static_cast<bool>(left), static_cast<bool>(right));
    }
    return (left.type & MV_FLAG) != 0 ? OrderOfMany(left, right, OrderForSorting) : OrderForSorting(left, right);
}

std::uint64_t SizeOf(const Value& value, ULONG asked)
{
    if ((value.type & MV_FLAG) != 0)
    {
        std::uint64_t size = 0;
        for (const Value& each : value.many)
        {
            size += SizeOf(each, SingleOf(asked));
        }
        return size;
    }
    const ULONG type = IsTextType(value.type) && IsTextType(asked) ? asked : value.type;
    switch (type)
    {
    case PT_UNICODE:
        return (value.text.size() + 1) * sizeof(WCHAR);
    case PT_STRING8:
        return value.text.size() + 1;
    case PT_BINARY:
        return value.bytes.size();
    case PT_BOOLEAN:
        return 2;
    default:
        return test::ElementStep(type);
    }
}

void* Room::Keep(const void* bytes, size_t size)
{
    m_blocks.emplace_back(size / sizeof(std::uint64_t) + 1);
    return size != 0 ? std::memcpy(m_blocks.back().data(), bytes, size) : m_blocks.back().data();
}

// Where the single value is in an SPropValue, or in an array.
void Room::PutSingle(const Value& value, void* place)
{
    const auto put = [&](const auto& what) { std::memcpy(place, &what, sizeof(what)); };
    switch (value.type)
    {
    case PT_I2:
    case PT_BOOLEAN:
        return put(static_cast<std::int16_t>(value.number));
    case PT_LONG:
        return put(static_cast<std::int32_t>(value.number));
    case PT_R4:
        return put(static_cast<float>(value.real));
    case PT_DOUBLE:
    case PT_APPTIME:
        return put(value.real);
    case PT_STRING8:
        return put(Keep(std::string(value.text.begin(), value.text.end()).c_str(), value.text.size() + 1));
    case PT_UNICODE:
        return put(Keep(value.text.c_str(), (value.text.size() + 1) * sizeof(WCHAR)));
    case PT_BINARY:
        return put(SBinary{static_cast<ULONG>(value.bytes.size()),
                           static_cast<BYTE*>(Keep(value.bytes.data(), value.bytes.size()))});
    case PT_CLSID:
        std::memcpy(place, value.bytes.data(), sizeof(GUID));
        return;
    default:
        return put(value.number);
    }
}

SPropValue Room::Mapi(ULONG tag, const Value& value)
{
    SPropValue made;
    std::memset(static_cast<void*>(&made), 0, sizeof(made));
    made.ulPropTag = PROP_TAG(value.type, PROP_ID(tag));
    if (value.type == PT_CLSID)
    {
        made.Value.lpguid = static_cast<GUID*>(Keep(value.bytes.data(), value.bytes.size()));
    }
    else if ((value.type & MV_FLAG) != 0)
    {
        const size_t step = test::ElementStep(SingleOf(value.type));
        std::string elements(value.many.size() * step, '\0');
        for (size_t i = 0; i < value.many.size(); ++i)
        {
            PutSingle(value.many[i], &elements[i * step]);
        }
        made.Value.MVl.cValues = static_cast<ULONG>(value.many.size());
        made.Value.MVl.lpl = static_cast<LONG*>(Keep(elements.data(), elements.size()));
    }
    else
    {
        PutSingle(value, &made.Value);
    }
    return made;
}

std::string ShownAs(ULONG tag, const Value& value)
{
    const ULONG asked = PROP_TYPE(tag);
    SPropValue error;
    std::memset(static_cast<void*>(&error), 0, sizeof(error));
    error.ulPropTag = CHANGE_PROP_TYPE(tag, PT_ERROR);
    if (!value || (asked != PT_UNSPECIFIED && !AreComparable(value.type, asked)))
    {
        error.Value.err = MAPI_E_NOT_FOUND;
        return test::CellText(error);
    }
    if (IsLarge(value))
    {
        error.Value.err = MAPI_E_NOT_ENOUGH_MEMORY;
        return test::CellText(error);
    }
    Value shown = value;
    const auto makeText = [](Value& each, ULONG form)
    {
        if (IsTextType(SingleOf(each.type)))
        {
            each.type = (each.type & MV_FLAG) | form;
        }
    };
    const ULONG form = SingleOf(asked) == PT_STRING8 ? PT_STRING8 : PT_UNICODE;
    makeText(shown, form);
    for (Value& each : shown.many)
    {
        makeText(each, form);
    }
    Room room;
    return test::CellText(room.Mapi(tag, shown));
}

std::string Readable(const std::string& bytes)
{
    if (bytes.size() > 60)
    {
        return Readable(bytes.substr(0, 40)) + "... (" + std::to_string(bytes.size()) + " bytes)";
    }
    std::string text = "\"";
    for (const char byte : bytes)
    {
        char hex[8];
        std::snprintf(hex, sizeof(hex), "\\x%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
        text += byte >= ' ' && byte != '"' && byte != '\\' && byte != '\x7F' ? std::string(1, byte) : std::string(hex);
    }
    return text + "\"";
}

std::string Readable(const Value& value)
{
    if (!value)
    {
        return "(none)";
    }
    Room room;
    const SPropValue mapi = room.Mapi(PROP_TAG(value.type, 0x6600), value);
    const std::string text = test::ValueText(mapi);
    const ULONG single = SingleOf(value.type);
    const bool isQuoted = IsTextType(single) || single == PT_BINARY || single == PT_CLSID;
    char type[16];
    std::snprintf(type, sizeof(type), "%04X:", static_cast<unsigned>(value.type));
    return type + (isQuoted ? Readable(text) : text);
}

} // namespace zebstore::model
