#include "tools/common/MailProperties.h"

#include "platform/text.h"
#include "tools/common/PropertyReader.h"

#include <algorithm>
#include <cstring>

namespace zeb::tools
{

void AddBytes(Properties& properties, ULONG tag, std::string bytes)
{
    Property property;
    property.tag = tag;
    property.values.push_back(std::move(bytes));
    properties.push_back(std::move(property));
}

void AddText(Properties& properties, ULONG tag, const std::string& text)
{
    const platform::WideString wide = platform::WideFromUtf8(text.data(), text.size());
    AddBytes(properties, tag, std::string(reinterpret_cast<const char*>(wide.data()), wide.size() * sizeof(WCHAR)));
}

std::string Utf8Of(const Property& property)
{
    const std::string& bytes = property.values.front();
    platform::WideString wide(bytes.size() / sizeof(WCHAR), 0);
    std::memcpy(wide.data(), bytes.data(), wide.size() * sizeof(WCHAR));
    return platform::Utf8FromWide(wide.data(), wide.size());
}

void AddLong(Properties& properties, ULONG tag, LONG number)
{
    AddBytes(properties, tag, std::string(reinterpret_cast<const char*>(&number), sizeof number));
}

void AddTime(Properties& properties, ULONG tag, int64_t ticks)
{
    AddBytes(properties, tag, std::string(reinterpret_cast<const char*>(&ticks), sizeof ticks));
}

const Property* FindProperty(const Properties& properties, ULONG tag)
{
    const auto found = std::find_if(properties.begin(), properties.end(), [&](const Property& each)
    { return PROP_ID(each.tag) == PROP_ID(tag) && !each.name && (!each.values.empty() || each.source); });
    return found == properties.end() ? nullptr : &*found;
}

std::string BytesIn(const Properties& properties, ULONG tag)
{
    const Property* property = FindProperty(properties, tag);
    if (property == nullptr)
    {
        return {};
    }
    return property->source ? ReadAll(*property->source) : property->values.front();
}

std::string TextIn(const Properties& properties, ULONG tag)
{
    const Property* property = FindProperty(properties, tag);
    if (property == nullptr)
    {
        return {};
    }
    Property whole;
    whole.tag = property->tag;
    whole.values.push_back(BytesIn(properties, tag));
    return whole.Type() == PT_UNICODE ? Utf8Of(whole) : whole.values.front();
}

LONG LongIn(const Properties& properties, ULONG tag, LONG otherwise)
{
    const Property* property = FindProperty(properties, tag);
    return property == nullptr ? otherwise : NumberFromBytes<LONG>(property->values.front());
}

} // namespace zeb::tools
