#include "zebstore/storage/Encoding.h"

#include "zebstore/base/Error.h"

#include <algorithm>

namespace zebstore
{

namespace
{

constexpr char SameBytes = 0;
constexpr char OwnBytes = 1;

// The elements of a multi-valued type with their layout.
template <class Each>
std::string EncodeElements(ULONG count, Each&& each)
{
    std::string ends;
    std::string elements;
    AppendNumber<std::uint32_t>(ends, count);
    for (ULONG i = 0; i < count; ++i)
    {
        elements += each(i);
        AppendNumber<std::uint32_t>(ends, static_cast<std::uint32_t>(elements.size()));
    }
    return ends + elements;
}

std::string EncodeFixedArray(ULONG count, const void* elements, size_t elementSize)
{
    std::string bytes;
    AppendNumber<std::uint32_t>(bytes, count);
    if (count)
    {
        bytes.append(static_cast<const char*>(elements), count * elementSize);
    }
    return bytes;
}

std::string EncodeBinary(const SBinary& binary)
{
    Require(binary.cb == 0 || binary.lpb != nullptr, "a binary value without its bytes");
    return std::string(reinterpret_cast<const char*>(binary.lpb), binary.cb);
}

std::string EncodeWide(const WCHAR* text)
{
    Require(text != nullptr, "a text value without its text");
    return StoredFromWide(text, zeb::platform::WideLength(text));
}

std::string EncodeMany(const SPropValue& value)
{
    const ULONG type = PROP_TYPE(value.ulPropTag);
    // Every array of the union starts with its count and the pointer to its elements.
    const ULONG count = value.Value.MVl.cValues;
    Require(count == 0 || value.Value.MVl.lpl != nullptr, "a multi-valued property without its values");
    switch (type)
    {
    case PT_MV_STRING8:
        return EncodeElements(count, [&](ULONG i)
        {
            const char* text = value.Value.MVszA.lppszA[i];
            Require(text != nullptr, "a text value without its text");
            return EncodeNarrow(text);
        });
    case PT_MV_UNICODE:
        return EncodeElements(count, [&](ULONG i) { return EncodeWide(value.Value.MVszW.lppszW[i]); });
    case PT_MV_BINARY:
        return EncodeElements(count, [&](ULONG i) { return EncodeBinary(value.Value.MVbin.lpbin[i]); });
    default:
        return EncodeFixedArray(count, value.Value.MVl.lpl, FixedSize(type & ~static_cast<ULONG>(MV_FLAG)));
    }
}

} // namespace

size_t FixedSize(ULONG type)
{
    switch (type)
    {
    case PT_I2:
    case PT_BOOLEAN:
        return 2;
    case PT_LONG:
    case PT_R4:
        return 4;
    case PT_DOUBLE:
    case PT_CURRENCY:
    case PT_APPTIME:
    case PT_I8:
    case PT_SYSTIME:
        return 8;
    case PT_CLSID:
        return 16;
    default:
        return 0;
    }
}

bool IsStorable(ULONG type)
{
    if ((type & MV_FLAG) && type != (PT_BOOLEAN | MV_FLAG))
    {
        type &= ~static_cast<ULONG>(MV_FLAG);
    }
    return FixedSize(type) != 0 || IsText(type) || type == PT_BINARY;
}

bool TypesMatch(ULONG stored, ULONG asked)
{
    if (stored == asked)
    {
        return true;
    }
    const ULONG many = stored & MV_FLAG;
    return many == (asked & MV_FLAG) && IsText(stored & ~many) && IsText(asked & ~many);
}

std::string EncodeNarrow(std::string_view narrow)
{
    std::string stored = StoredFromNarrow(narrow);
    std::string bytes;
    if (stored == narrow)
    {
        bytes.reserve(narrow.size() + 1);
        bytes += SameBytes;
        bytes += narrow;
        return bytes;
    }
    bytes += OwnBytes;
    AppendNumber<std::uint32_t>(bytes, static_cast<std::uint32_t>(stored.size()));
    bytes += stored;
    bytes += narrow;
    return bytes;
}

std::string Encode(const SPropValue& value)
{
    const ULONG type = PROP_TYPE(value.ulPropTag);
    if (!IsStorable(type))
    {
        throw Error(MAPI_E_INVALID_TYPE, "a property of a type that cannot be stored");
    }
    if (type & MV_FLAG)
    {
        return EncodeMany(value);
    }
    switch (type)
    {
    case PT_STRING8:
        Require(value.Value.lpszA != nullptr, "a text value without its text");
        return EncodeNarrow(value.Value.lpszA);
    case PT_UNICODE:
        return EncodeWide(value.Value.lpszW);
    case PT_BINARY:
        return EncodeBinary(value.Value.bin);
    case PT_CLSID:
        Require(value.Value.lpguid != nullptr, "a GUID value without its GUID");
        return std::string(reinterpret_cast<const char*>(value.Value.lpguid), sizeof(GUID));
    default:
        return std::string(reinterpret_cast<const char*>(&value.Value), FixedSize(type));
    }
}

std::string_view StoredTextOf(ULONG type, std::string_view bytes)
{
    if (type != PT_STRING8)
    {
        return bytes;
    }
    if (bytes.empty())
    {
        return {};
    }
    if (bytes[0] == SameBytes)
    {
        return bytes.substr(1);
    }
    const size_t length = ReadNumber<std::uint32_t>(bytes, 1);
    return bytes.size() >= 5 ? bytes.substr(5, length) : std::string_view();
}

std::string NarrowOf(std::string_view bytes)
{
    const std::string_view stored = StoredTextOf(PT_STRING8, bytes);
    if (bytes.size() >= 5 + stored.size() && bytes[0] == OwnBytes)
    {
        const std::string_view written = bytes.substr(5 + stored.size());
        if (StoredFromNarrow(written) == stored)
        {
            return std::string(written);
        }
    }
    return NarrowFromStored(stored);
}

ULONG ElementCount(ULONG type, std::string_view bytes)
{
    const ULONG count = ReadNumber<std::uint32_t>(bytes);
    const size_t fixed = FixedSize(type & ~static_cast<ULONG>(MV_FLAG));
    const size_t most = bytes.size() < 4 ? 0 : (bytes.size() - 4) / (fixed ? fixed : 4);
    return static_cast<ULONG>(std::min<size_t>(count, most));
}

std::string_view Element(ULONG type, std::string_view bytes, ULONG index)
{
    const size_t fixed = FixedSize(type & ~static_cast<ULONG>(MV_FLAG));
    if (fixed)
    {
        return bytes.substr(4 + index * fixed, fixed);
    }
    const size_t elements = 4 + size_t(ElementCount(type, bytes)) * 4;
    const size_t begin = index == 0 ? 0 : ReadNumber<std::uint32_t>(bytes, size_t(index) * 4);
    const size_t end = ReadNumber<std::uint32_t>(bytes, 4 + size_t(index) * 4);
    if (begin > end || elements + end > bytes.size())
    {
        return {};
    }
    return bytes.substr(elements + begin, end - begin);
}

std::string EncodedFromLarge(ULONG type, const LargeValue& value)
{
    const std::uint64_t size = value.Size();
    if (size > 0x7FFFFFFF)
    {
        throw Error(MAPI_E_NOT_ENOUGH_MEMORY, "a value of more than 2 GB can only be read as a stream");
    }
    std::string raw(static_cast<size_t>(size), '\0');
    raw.resize(value.Read(0, &raw[0], raw.size()));
    if (type == PT_STRING8)
    {
        return EncodeNarrow(raw);
    }
    if (type != PT_UNICODE)
    {
        return raw;
    }
    zeb::platform::WideString wide(raw.size() / sizeof(WCHAR), WCHAR(0));
    std::memcpy(&wide[0], raw.data(), wide.size() * sizeof(WCHAR));
    return StoredFromWide(wide.data(), wide.size());
}

} // namespace zebstore
