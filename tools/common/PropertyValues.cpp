#include "tools/common/PropertyValues.h"

#include "platform/text.h"

#include <algorithm>
#include <cstring>

namespace zeb::tools
{
namespace
{

std::string WideBytes(const WCHAR* text)
{
    return text != nullptr
               ? std::string(reinterpret_cast<const char*>(text), platform::WideLength(text) * sizeof(WCHAR))
               : std::string();
}

std::string NarrowBytes(const char* text)
{
    return text != nullptr ? std::string(text) : std::string();
}

std::string BinaryBytes(const SBinary& binary)
{
    return binary.lpb != nullptr ? std::string(reinterpret_cast<const char*>(binary.lpb), binary.cb) : std::string();
}

std::string SingleBytes(const SPropValue& value)
{
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_STRING8:
        return NarrowBytes(value.Value.lpszA);
    case PT_UNICODE:
        return WideBytes(value.Value.lpszW);
    case PT_BINARY:
        return BinaryBytes(value.Value.bin);
    case PT_CLSID:
        return std::string(reinterpret_cast<const char*>(value.Value.lpguid), sizeof(GUID));
    default:
        return std::string(reinterpret_cast<const char*>(&value.Value), ElementSize(PROP_TYPE(value.ulPropTag)));
    }
}

std::vector<std::string> ManyBytes(const SPropValue& value)
{
    const ULONG type = PROP_TYPE(value.ulPropTag) & ~static_cast<ULONG>(MV_FLAG);
    const size_t size = ElementSize(type);
    // All array members of the union have the same layout: a count and a pointer.
    const char* elements = reinterpret_cast<const char*>(value.Value.MVl.lpl);
    std::vector<std::string> values;
    for (ULONG i = 0; i < value.Value.MVl.cValues; ++i)
    {
        if (size != 0)
        {
            values.emplace_back(elements + i * size, size);
        }
        else if (type == PT_STRING8)
        {
            values.push_back(NarrowBytes(value.Value.MVszA.lppszA[i]));
        }
        else if (type == PT_UNICODE)
        {
            values.push_back(WideBytes(value.Value.MVszW.lppszW[i]));
        }
        else
        {
            values.push_back(BinaryBytes(value.Value.MVbin.lpbin[i]));
        }
    }
    return values;
}

platform::WideString WideOf(const std::string& bytes)
{
    platform::WideString text(bytes.size() / sizeof(WCHAR), WCHAR(0));
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
    return text;
}

} // namespace

CZebPropTagArray TagArray(const std::vector<ULONG>& tags)
{
    CZebPropTagArray array;
    for (const ULONG tag : tags)
    {
        array.AddOne(tag);
    }
    return array;
}

bool IsText(ULONG type)
{
    type &= ~static_cast<ULONG>(MV_FLAG);
    return type == PT_STRING8 || type == PT_UNICODE;
}

ULONG Narrowed(ULONG tag)
{
    return PROP_TAG(PT_STRING8 | (PROP_TYPE(tag) & MV_FLAG), PROP_ID(tag));
}

std::vector<std::string> ValueBytes(const SPropValue& value)
{
    if (PROP_TYPE(value.ulPropTag) & MV_FLAG)
    {
        return ManyBytes(value);
    }
    return {SingleBytes(value)};
}

bool HasReplacement(const std::vector<std::string>& values)
{
    return std::any_of(values.begin(), values.end(), [](const std::string& bytes)
    { return WideOf(bytes).find(WCHAR(0xFFFD)) != platform::WideString::npos; });
}

void SettleWidth(Property& property, const std::vector<std::string>& narrow)
{
    if (narrow.size() != property.values.size())
    {
        return;
    }
    bool lost = false;
    for (size_t i = 0; i < narrow.size(); ++i)
    {
        const platform::WideString wide = platform::WideFromNarrow(narrow[i].data(), narrow[i].size());
        if (wide != WideOf(property.values[i]))
        {
            return;
        }
        lost = lost || platform::NarrowFromWide(wide.data(), wide.size()) != narrow[i];
    }
    if (!lost)
    {
        return;
    }
    property.tag = Narrowed(property.tag);
    property.values = narrow;
}

} // namespace zeb::tools
