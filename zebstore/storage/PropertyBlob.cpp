#include "zebstore/storage/PropertyBlob.h"

#include "zebstore/storage/Checksum.h"
#include "zebstore/storage/Encoding.h"

#include <algorithm>
#include <optional>

namespace zebstore
{

namespace
{

constexpr char VersionWithoutChecksum = 1;
constexpr char BlobVersion = 2;
constexpr size_t ChecksumSize = 8;
constexpr size_t HeaderSize = 4;
constexpr size_t EntrySize = 8;
constexpr ULONG LargeFlag = 0x8000;

// The blob without its checksum; empty when it is too short or of no known version.
std::string_view WithoutChecksum(std::string_view bytes)
{
    if (bytes.size() >= HeaderSize && bytes[0] == VersionWithoutChecksum)
    {
        return bytes;
    }
    if (bytes.size() >= HeaderSize + ChecksumSize && bytes[0] == BlobVersion)
    {
        return bytes.substr(0, bytes.size() - ChecksumSize);
    }
    return {};
}

size_t CountOf(std::string_view body)
{
    return ReadNumber<std::uint16_t>(body, 2);
}

// True when the last property of the index ends where the bytes do.
bool EndsWithItsValues(std::string_view body)
{
    if (body.empty())
    {
        return false;
    }
    const size_t index = HeaderSize + CountOf(body) * EntrySize;
    if (index > body.size())
    {
        return false;
    }
    const size_t values = CountOf(body) == 0 ? 0 : ReadNumber<std::uint32_t>(body, index - 4);
    return body.size() - index == values;
}

void AppendChecksum(std::string& body)
{
    body[0] = BlobVersion;
    AppendNumber(body, Checksum(body));
}

bool CanBeLarge(ULONG type)
{
    return IsText(type) || type == PT_BINARY;
}

// Where a value of this store stands, when it may stay there.
const LargeReference* KeptReference(const StoreFile& store, const PropertySet::Item& item,
                                    std::vector<LargeReference>& kept)
{
    const auto* stored = dynamic_cast<const StoredLargeValue*>(item.large.get());
    if (!stored || stored->Store() != &store)
    {
        return nullptr;
    }
    const auto found = std::find_if(kept.begin(), kept.end(),
                                    [&](const LargeReference& each) { return each.id == stored->Reference().id; });
    if (found == kept.end())
    {
        return nullptr;
    }
    kept.erase(found);
    return &stored->Reference();
}

std::string LargeBytes(StoreFile& store, const PropertySet::Item& item, std::vector<LargeReference>& kept)
{
    if (!item.large)
    {
        return WriteLarge(store.Connection(), PROP_TYPE(item.tag), item.bytes).Encoded();
    }
    if (const LargeReference* reference = KeptReference(store, item, kept))
    {
        return reference->Encoded();
    }
    return WriteLarge(store.Connection(), PROP_TYPE(item.tag), *item.large).Encoded();
}

// What a stream shows of 16-bit text may be twice its encoding; of other types it is never more.
std::uint64_t LongestInline(ULONG type)
{
    return type == PT_UNICODE ? 2 * InlineLimit : InlineLimit;
}

// The encoded bytes of a value that stays next to its siblings, nothing for one that goes to chunks. The encoding alone
// decides, whether the value was given as bytes or as a large value.
// @param room holds the bytes of a value that was given as a large one
std::optional<std::string_view> InlineBytes(const PropertySet::Item& item, std::string& room)
{
    const ULONG type = PROP_TYPE(item.tag);
    std::string_view bytes = item.bytes;
    if (item.large)
    {
        if (item.large->Size() > LongestInline(type))
        {
            return std::nullopt;
        }
        room = EncodedFromLarge(type, *item.large);
        bytes = room;
    }
    if (bytes.size() > InlineLimit && CanBeLarge(type))
    {
        return std::nullopt;
    }
    return bytes;
}

} // namespace

PropertyBlob::PropertyBlob(std::string_view bytes, StoreFile& store, const BlobOwner& owner)
    : m_bytes(WithoutChecksum(bytes))
    , m_store(&store)
{
    if (!EndsWithItsValues(m_bytes) || !IsAsWritten(bytes))
    {
        throw Error(MAPI_E_CORRUPT_DATA, std::string("The properties of ") + owner.what +
                                             (owner.id == 0 ? "" : " " + std::to_string(owner.id)) +
                                             " in the store file '" + store.Path() + "' are damaged.");
    }
    m_count = CountOf(m_bytes);
}

size_t PropertyBlob::SizeOf(std::string_view bytes)
{
    return WithoutChecksum(bytes).size();
}

ULONG PropertyBlob::RawTag(size_t index) const
{
    const size_t at = HeaderSize + index * EntrySize;
    return PROP_TAG(ReadNumber<std::uint16_t>(m_bytes, at + 2), ReadNumber<std::uint16_t>(m_bytes, at));
}

std::string_view PropertyBlob::RawBytes(size_t index) const
{
    const size_t at = HeaderSize + index * EntrySize;
    const size_t begin = index == 0 ? 0 : ReadNumber<std::uint32_t>(m_bytes, at - EntrySize + 4);
    const size_t end = ReadNumber<std::uint32_t>(m_bytes, at + 4);
    const size_t values = HeaderSize + m_count * EntrySize;
    if (begin > end || end > m_bytes.size() - values)
    {
        return {};
    }
    return m_bytes.substr(values + begin, end - begin);
}

EncodedValue PropertyBlob::Make(size_t index) const
{
    const ULONG tag = RawTag(index);
    if (!(tag & LargeFlag))
    {
        return {tag, RawBytes(index), nullptr};
    }
    m_large.push_back(
        std::make_shared<StoredLargeValue>(m_store->shared_from_this(), LargeReference::Decode(RawBytes(index))));
    return {tag & ~LargeFlag, {}, m_large.back().get()};
}

EncodedValue PropertyBlob::Find(ULONG tag) const
{
    const ULONG id = PROP_ID(tag);
    size_t low = 0;
    size_t high = m_count;
    while (low < high)
    {
        const size_t middle = (low + high) / 2;
        const ULONG at = ReadNumber<std::uint16_t>(m_bytes, HeaderSize + middle * EntrySize);
        if (at == id)
        {
            return Make(middle);
        }
        if (at < id)
        {
            low = middle + 1;
        }
        else
        {
            high = middle;
        }
    }
    return {};
}

EncodedValue PropertyBlob::At(size_t index) const
{
    return Make(index);
}

PropertySet PropertyBlob::Decode() const
{
    PropertySet properties;
    for (size_t i = 0; i < m_count; ++i)
    {
        const EncodedValue value = Make(i);
        properties.SetEncoded(value.tag, value.bytes, value.large ? m_large.back() : nullptr);
    }
    return properties;
}

bool PropertyBlob::IsSound(std::string_view bytes)
{
    const std::string_view body = WithoutChecksum(bytes);
    if (!EndsWithItsValues(body))
    {
        return false;
    }
    size_t before = 0;
    ULONG idBefore = 0;
    for (size_t i = 0; i < CountOf(body); ++i)
    {
        const size_t at = HeaderSize + i * EntrySize;
        const size_t end = ReadNumber<std::uint32_t>(body, at + 4);
        const ULONG id = ReadNumber<std::uint16_t>(body, at);
        if (end < before || (i > 0 && id <= idBefore))
        {
            return false;
        }
        before = end;
        idBefore = id;
    }
    return true;
}

bool PropertyBlob::IsAsWritten(std::string_view bytes)
{
    const std::string_view body = WithoutChecksum(bytes);
    return body.size() == bytes.size() || Checksum(body) == ReadNumber<std::uint64_t>(bytes, body.size());
}

std::string PropertyBlob::Sealed(std::string_view bytes)
{
    if (!IsSound(bytes))
    {
        return std::string(bytes);
    }
    std::string sealed(WithoutChecksum(bytes));
    AppendChecksum(sealed);
    return sealed;
}

std::vector<LargeReference> ReferencesIn(std::string_view blob)
{
    std::vector<LargeReference> references;
    if (!PropertyBlob::IsSound(blob) || !PropertyBlob::IsAsWritten(blob))
    {
        return references;
    }
    const size_t values = HeaderSize + CountOf(blob) * EntrySize;
    size_t begin = 0;
    for (size_t at = HeaderSize; at < values; at += EntrySize)
    {
        const size_t end = ReadNumber<std::uint32_t>(blob, at + 4);
        if (ReadNumber<std::uint16_t>(blob, at + 2) & LargeFlag)
        {
            references.push_back(LargeReference::Decode(blob.substr(values + begin, end - begin)));
        }
        begin = end;
    }
    return references;
}

std::uint64_t StoredSize(const PropertySet::Item& item)
{
    std::string room;
    if (const std::optional<std::string_view> bytes = InlineBytes(item, room))
    {
        return bytes->size();
    }
    if (item.large)
    {
        return item.large->Size();
    }
    switch (PROP_TYPE(item.tag))
    {
    case PT_UNICODE:
        return WideFromStored(item.bytes).size() * sizeof(WCHAR);
    case PT_STRING8:
        return NarrowOf(item.bytes).size();
    default:
        return item.bytes.size();
    }
}

std::string WriteBlob(StoreFile& store, const PropertySet& properties, std::vector<LargeReference>& kept,
                      bool& hasLarge)
{
    std::string index(1, BlobVersion);
    index += '\0';
    AppendNumber(index, static_cast<std::uint16_t>(properties.Count()));
    std::string values;
    std::string room;
    for (const PropertySet::Item& item : properties.Items())
    {
        const std::optional<std::string_view> bytes = InlineBytes(item, room);
        if (bytes)
        {
            values += *bytes;
        }
        else
        {
            values += LargeBytes(store, item, kept);
            hasLarge = true;
        }
        if (values.size() > 0x7FFFFFFF)
        {
            throw Error(MAPI_E_TOO_BIG, "The properties of an object are too large together.");
        }
        AppendNumber(index, static_cast<std::uint16_t>(PROP_ID(item.tag)));
        AppendNumber(index, static_cast<std::uint16_t>(PROP_TYPE(item.tag) | (bytes ? 0 : LargeFlag)));
        AppendNumber(index, static_cast<std::uint32_t>(values.size()));
    }
    index += values;
    AppendChecksum(index);
    return index;
}

} // namespace zebstore
