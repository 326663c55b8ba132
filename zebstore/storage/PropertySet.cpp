#include "zebstore/storage/PropertySet.h"

#include "zebstore/base/Error.h"
#include "zebstore/storage/Encoding.h"

#include <algorithm>

namespace zebstore
{

namespace
{

// Of a message that is saved; a smaller array would be moved several times.
constexpr size_t UsualCount = 24;

bool BeforeId(const PropertySet::Item& item, ULONG id)
{
    return PROP_ID(item.tag) < id;
}

// The encoded bytes, those of a large value read whole.
std::string WholeBytes(const EncodedValue& value)
{
    return value.large != nullptr ? EncodedFromLarge(value.Type(), *value.large) : std::string(value.bytes);
}

} // namespace

bool ValueSource::AnyOf(ULONG, const std::function<bool(const ValueSource&)>&) const
{
    return false;
}

std::vector<ULONG> PropertySet::Tags() const
{
    std::vector<ULONG> tags;
    tags.reserve(m_items.size());
    for (const Item& item : m_items)
    {
        tags.push_back(item.tag);
    }
    return tags;
}

EncodedValue PropertySet::Find(ULONG tag) const
{
    const auto found = std::lower_bound(m_items.begin(), m_items.end(), PROP_ID(tag), BeforeId);
    if (found == m_items.end() || PROP_ID(found->tag) != PROP_ID(tag))
    {
        return {};
    }
    return {found->tag, found->bytes, found->large.get()};
}

LargeValuePtr PropertySet::Large(ULONG tag) const
{
    const auto found = std::lower_bound(m_items.begin(), m_items.end(), PROP_ID(tag), BeforeId);
    if (found == m_items.end() || PROP_ID(found->tag) != PROP_ID(tag))
    {
        return nullptr;
    }
    return found->large;
}

std::vector<PropertySet::Item>::iterator PropertySet::Place(ULONG tag)
{
    if (m_items.capacity() == 0)
    {
        m_items.reserve(UsualCount);
    }
    if (m_items.empty() || PROP_ID(m_items.back().tag) < PROP_ID(tag))
    {
        return m_items.insert(m_items.end(), Item{tag, {}, nullptr});
    }
    auto place = std::lower_bound(m_items.begin(), m_items.end(), PROP_ID(tag), BeforeId);
    if (PROP_ID(place->tag) != PROP_ID(tag))
    {
        place = m_items.insert(place, Item{tag, {}, nullptr});
    }
    return place;
}

void PropertySet::SetEncoded(ULONG tag, std::string_view bytes, LargeValuePtr large)
{
    std::string copy(bytes);
    const auto place = Place(tag);
    place->tag = tag;
    place->bytes.swap(copy);
    place->large = std::move(large);
}

void PropertySet::Set(const SPropValue& value)
{
    std::string bytes = Encode(value);
    const auto place = Place(value.ulPropTag);
    place->tag = value.ulPropTag;
    place->bytes.swap(bytes);
    place->large = nullptr;
}

void PropertySet::SetLarge(ULONG tag, LargeValuePtr value)
{
    const ULONG type = PROP_TYPE(tag);
    if (type != PT_BINARY && !IsText(type))
    {
        throw Error(MAPI_E_INVALID_TYPE, "only text and binaries are written as streams");
    }
    SetEncoded(tag, {}, std::move(value));
}

bool PropertySet::Remove(ULONG tag)
{
    const auto found = std::lower_bound(m_items.begin(), m_items.end(), PROP_ID(tag), BeforeId);
    if (found == m_items.end() || PROP_ID(found->tag) != PROP_ID(tag))
    {
        return false;
    }
    m_items.erase(found);
    return true;
}

void PropertySet::SetLong(ULONG tag, LONG value)
{
    SetEncoded(tag, {reinterpret_cast<const char*>(&value), sizeof(value)});
}

void PropertySet::SetBool(ULONG tag, bool value)
{
    const std::uint16_t stored = value ? 1 : 0;
    SetEncoded(tag, {reinterpret_cast<const char*>(&stored), sizeof(stored)});
}

void PropertySet::SetTime(ULONG tag, const FILETIME& value)
{
    SetEncoded(tag, {reinterpret_cast<const char*>(&value), sizeof(value)});
}

void PropertySet::SetBinary(ULONG tag, const void* bytes, size_t size)
{
    SetEncoded(tag, {static_cast<const char*>(bytes), size});
}

void PropertySet::SetText(ULONG tag, std::string_view utf8)
{
    SetEncoded(CHANGE_PROP_TYPE(tag, PT_UNICODE), utf8);
}

LONG PropertySet::Long(ULONG tag, LONG otherwise) const
{
    const EncodedValue value = Find(tag);
    return value.Type() == PT_LONG ? ReadNumber<LONG>(value.bytes) : otherwise;
}

bool PropertySet::Bool(ULONG tag, bool otherwise) const
{
    const EncodedValue value = Find(tag);
    return value.Type() == PT_BOOLEAN ? ReadNumber<std::uint16_t>(value.bytes) != 0 : otherwise;
}

FILETIME PropertySet::Time(ULONG tag) const
{
    const EncodedValue value = Find(tag);
    return value.Type() == PT_SYSTIME ? ReadNumber<FILETIME>(value.bytes) : FILETIME{};
}

std::string PropertySet::Binary(ULONG tag) const
{
    const EncodedValue value = Find(tag);
    return value.Type() == PT_BINARY ? WholeBytes(value) : std::string();
}

std::string PropertySet::Text(ULONG tag) const
{
    const EncodedValue value = Find(tag);
    if (!IsText(value.Type()))
    {
        return {};
    }
    const std::string bytes = WholeBytes(value);
    return std::string(StoredTextOf(value.Type(), bytes));
}

} // namespace zebstore
