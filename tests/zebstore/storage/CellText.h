// Property values of all types as text that can be compared and read.
#pragma once

#include "platform/mapi.h"
#include "zebstore/storage/Text.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace zebstore::test
{

template <class T>
T NumberAt(const void* place)
{
    T number{};
    std::memcpy(&number, place, sizeof(number));
    return number;
}

inline std::string RealText(double number)
{
    char text[40];
    std::snprintf(text, sizeof(text), "%.17g", number);
    return text;
}

inline std::string WideText(const WCHAR* text)
{
    return StoredFromWide(text, zeb::platform::WideLength(text));
}

/// One value of a single type. @param place of it in memory: in the SPropValue, or in an array; type PT_CLSID: the GUID
inline std::string SingleText(ULONG type, const void* place)
{
    switch (type)
    {
    case PT_I2:
        return std::to_string(NumberAt<std::int16_t>(place));
    case PT_LONG:
        return std::to_string(NumberAt<std::int32_t>(place));
    case PT_BOOLEAN:
        return NumberAt<std::uint16_t>(place) != 0 ? "yes" : "no";
    case PT_R4:
        return RealText(NumberAt<float>(place));
    case PT_DOUBLE:
    case PT_APPTIME:
        return RealText(NumberAt<double>(place));
    case PT_CURRENCY:
    case PT_I8:
    case PT_SYSTIME:
        return std::to_string(NumberAt<std::int64_t>(place));
    case PT_STRING8:
        return NumberAt<const char*>(place);
    case PT_UNICODE:
        return WideText(NumberAt<const WCHAR*>(place));
    case PT_CLSID:
        return {static_cast<const char*>(place), sizeof(GUID)};
    case PT_BINARY:
    {
        const auto binary = NumberAt<SBinary>(place);
        return {reinterpret_cast<const char*>(binary.lpb), binary.cb};
    }
    default:
        return "a type that is not stored";
    }
}

/// Bytes from one element of an array of this single type to the next.
inline size_t ElementStep(ULONG type)
{
    switch (type)
    {
    case PT_I2:
        return 2;
    case PT_LONG:
    case PT_R4:
        return 4;
    case PT_BINARY:
    case PT_CLSID:
        return 16;
    default:
        return 8;
    }
}

/// The value without its tag; under a tag with MV_INSTANCE it is a single one. Every array of the union begins with its count and the pointer to its elements.
inline std::string ValueText(const SPropValue& value)
{
    const ULONG type = PROP_TYPE(value.ulPropTag);
    if (type == PT_ERROR)
    {
        return "error " + std::to_string(value.Value.err);
    }
    const ULONG single = type & ~static_cast<ULONG>(MV_FLAG | MV_INSTANCE);
    if ((type & (MV_FLAG | MV_INSTANCE)) == MV_FLAG)
    {
        std::string text = std::to_string(value.Value.MVl.cValues) + " values";
        for (ULONG i = 0; i < value.Value.MVl.cValues; ++i)
        {
            text +=
                "|" + SingleText(single, reinterpret_cast<const BYTE*>(value.Value.MVl.lpl) + i * ElementStep(single));
        }
        return text;
    }
    return SingleText(single, single == PT_CLSID ? static_cast<const void*>(value.Value.lpguid) : &value.Value);
}

/// The tag and the value of a cell.
inline std::string CellText(const SPropValue& value)
{
    return std::to_string(value.ulPropTag) + " " + ValueText(value);
}

} // namespace zebstore::test
