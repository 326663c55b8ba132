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

// The reference of a value of this store that may stay where it is.
const LargeReference* KeptReference(const StoreConnection& store, const PropertySet::Item& item,
                                    std::vector<LargeReference>& kept)
{
    const auto* stored = dynamic_cast<const StoredLargeValue*>(item.large.get());
    if (stored == nullptr || stored->Store() != &store)
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

// What a stream shows of 16-bit text may be twice its encoding; of other types it is never more.
std::uint64_t LongestInline(ULONG type)
{
    return type == PT_UNICODE ? 2 * InlineLimit : InlineLimit;
}

// The encoded bytes of a value that is stored in the blob, nothing for one that goes to chunks. Only the encoding
// decides, not whether the value was given as bytes or as a large value.
// @param buffer holds the bytes of a value that was given as a large one
std::optional<std::string_view> InlineBytes(const PropertySet::Item& item, std::string& buffer)
{
    const ULONG type = PROP_TYPE(item.tag);
    std::string_view bytes = item.bytes;
    if (item.large)
    {
        if (item.large->Size() > LongestInline(type))
        {
            return std::nullopt;
        }
        buffer = EncodedFromLarge(type, *item.large);
        bytes = buffer;
    }
    if (bytes.size() > InlineLimit && CanBeLarge(type))
    {
        return std::nullopt;
    }
    return bytes;
}

} // namespace

PropertyBlob::PropertyBlob(std::string_view bytes, StoreConnection& store, const BlobOwner& owner, BlobCheck check)
    : m_bytes(WithoutChecksum(bytes))
    , m_store(&store)
{
    if (!EndsWithItsValues(m_bytes) || (check == BlobCheck::Checksum && !IsAsWritten(bytes)))
    {
        throw Error(MAPI_E_CORRUPT_DATA, std::string("the properties of ") + owner.what +
                                             (owner.id == 0 ? "" : " " + std::to_string(owner.id)) +
                                             " in the store file '" + store.Path() + "' are damaged");
    }
    m_count = CountOf(m_bytes);
}

std::uint64_t PropertyBlob::SizeOf(std::string_view bytes)
{
    std::uint64_t size = WithoutChecksum(bytes).size();
    for (const LargeReference& reference : ReferencesIn(bytes))
    {
        size += reference.size;
    }
    return size;
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
        properties.SetEncoded(value.tag, value.bytes, value.large != nullptr ? m_large.back() : nullptr);
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

BlobWriter::BlobWriter(StoreConnection& store, const PropertySet& properties, std::vector<LargeReference>& kept)
    : m_store(store)
    , m_kept(kept)
    , m_index{BlobVersion, '\0'}
{
    AppendNumber(m_index, static_cast<std::uint16_t>(properties.Count()));
    for (const PropertySet::Item& item : properties.Items())
    {
        Add(item);
    }
}

void BlobWriter::Add(const PropertySet::Item& item)
{
    const std::optional<std::string_view> bytes = InlineBytes(item, m_buffer);
    if (bytes)
    {
        m_values += *bytes;
        m_valueBytes += bytes->size();
    }
    else
    {
        m_values += AddLarge(item);
        m_hasLarge = true;
    }
    if (m_values.size() > 0x7FFFFFFF)
    {
        throw Error(MAPI_E_TOO_BIG, "the properties of an object are too large together");
    }
    AppendNumber(m_index, static_cast<std::uint16_t>(PROP_ID(item.tag)));
    AppendNumber(m_index, static_cast<std::uint16_t>(PROP_TYPE(item.tag) | (bytes ? 0 : LargeFlag)));
    AppendNumber(m_index, static_cast<std::uint32_t>(m_values.size()));
}

std::string BlobWriter::AddLarge(const PropertySet::Item& item)
{
    const ULONG type = PROP_TYPE(item.tag);
    if (!item.large)
    {
        const LargeReference written = WriteLarge(m_store.Db(), type, item.bytes);
        m_valueBytes += written.form == LargeReference::OwnBytes ? written.ownSize : written.size;
        return written.Encoded();
    }
    m_valueBytes += item.large->Size();
    if (const LargeReference* reference = KeptReference(m_store, item, m_kept))
    {
        return reference->Encoded();
    }
    return WriteLarge(m_store.Db(), type, *item.large).Encoded();
}

void BlobWriter::ReplaceLong(ULONG tag, LONG value)
{
    size_t begin = 0;
    for (size_t at = HeaderSize; at < m_index.size(); at += EntrySize)
    {
        const size_t end = ReadNumber<std::uint32_t>(m_index, at + 4);
        if (ReadNumber<std::uint16_t>(m_index, at) == PROP_ID(tag) && end - begin == sizeof(value))
        {
            m_values.replace(begin, sizeof(value), reinterpret_cast<const char*>(&value), sizeof(value));
        }
        begin = end;
    }
}

std::string BlobWriter::Take()
{
    std::string blob = std::move(m_index);
    blob += m_values;
    AppendChecksum(blob);
    return blob;
}

std::string WriteBlob(StoreConnection& store, const PropertySet& properties, std::vector<LargeReference>& kept)
{
    return BlobWriter(store, properties, kept).Take();
}

std::string WriteBlob(StoreConnection& store, const PropertySet& properties)
{
    std::vector<LargeReference> none;
    return WriteBlob(store, properties, none);
}

} // namespace zebstore
