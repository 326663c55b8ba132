#include "zebstore/objects/PropStream.h"

#include "zebstore/base/Guard.h"
#include "zebstore/base/Memory.h"
#include "zebstore/storage/ValueBuilder.h"

#include <algorithm>
#include <cstring>

namespace zebstore
{
namespace
{

constexpr size_t CopyChunk = 256 * 1024;

void RefuseWrite()
{
    throw Error(STG_E_ACCESSDENIED, "the stream was opened for reading");
}

/// Bytes held in memory.
class HeldBytes final : public StreamBytes
{
public:
    explicit HeldBytes(std::string bytes)
        : m_bytes(std::move(bytes))
    {
    }

    std::uint64_t Size() override { return m_bytes.size(); }
    size_t ReadAt(std::uint64_t offset, void* buffer, size_t size) override
    {
        if (offset >= m_bytes.size())
        {
            return 0;
        }
        const size_t got = std::min<std::uint64_t>(size, m_bytes.size() - offset);
        std::memcpy(buffer, m_bytes.data() + offset, got);
        return got;
    }
    void WriteAt(std::uint64_t, const void*, size_t) override { RefuseWrite(); }
    void SetSize(std::uint64_t) override { RefuseWrite(); }
    void Commit() override {}

private:
    const std::string m_bytes;
};

/// LargeValue::Read until `size` bytes are read or the value ends. @return the number of bytes
size_t ReadWhole(const LargeValue& value, std::uint64_t offset, void* buffer, size_t size)
{
    size_t done = 0;
    while (done < size)
    {
        const size_t got = value.Read(offset + done, static_cast<char*>(buffer) + done, size - done);
        if (got == 0)
        {
            break;
        }
        done += got;
    }
    return done;
}

/// A large value, which is read in place and keeps its store open.
class LargeBytes final : public StreamBytes
{
public:
    explicit LargeBytes(LargeValuePtr value)
        : m_value(std::move(value))
    {
    }

    std::uint64_t Size() override { return m_value->Size(); }
    size_t ReadAt(std::uint64_t offset, void* buffer, size_t size) override
    {
        return ReadWhole(*m_value, offset, buffer, size);
    }
    void WriteAt(std::uint64_t, const void*, size_t) override { RefuseWrite(); }
    void SetSize(std::uint64_t) override { RefuseWrite(); }
    void Commit() override {}

private:
    const LargeValuePtr m_value;
};

/// The type of the stream for a tag, given the stored type (0: nothing is stored).
ULONG StreamType(ULONG tag, ULONG storedType)
{
    ULONG type = PROP_TYPE(tag);
    if (type == PT_UNSPECIFIED)
    {
        type = storedType;
    }
    // An attachment's PT_OBJECT data is stored as the bytes of its stream.
    if (type == PT_OBJECT)
    {
        type = PT_BINARY;
    }
    if (type != PT_BINARY && type != PT_STRING8 && type != PT_UNICODE)
    {
        throw Error(MAPI_E_INTERFACE_NOT_SUPPORTED, "only binary and text properties can be opened as streams");
    }
    return type;
}

std::string BytesOf(const SPropValue& value)
{
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_STRING8:
        return value.Value.lpszA;
    case PT_UNICODE:
        return std::string(reinterpret_cast<const char*>(value.Value.lpszW),
                           zeb::platform::WideLength(value.Value.lpszW) * sizeof(WCHAR));
    default:
        return std::string(reinterpret_cast<const char*>(value.Value.bin.lpb), value.Value.bin.cb);
    }
}

} // namespace

std::shared_ptr<StreamBytes> OpenForReading(const PropertySet& properties, ULONG tag)
{
    const EncodedValue stored = properties.Find(tag);
    if (!stored)
    {
        throw Error(MAPI_E_NOT_FOUND, "the object does not have the property");
    }
    const ULONG type = StreamType(tag, stored.Type());
    LargeValuePtr large = properties.Large(tag);
    if (large && type == stored.Type())
    {
        return std::make_shared<LargeBytes>(std::move(large));
    }
    Buffer<char> parent(Allocate(1));
    SPropValue value{};
    if (!BuildValue(PROP_TAG(type, PROP_ID(tag)), properties, BuildOptions(), value, parent.Get()))
    {
        throw Error(MAPI_E_NOT_FOUND, "the object does not have the property with this type");
    }
    return std::make_shared<HeldBytes>(BytesOf(value));
}

void SetFromBytes(PropertySet& properties, ULONG tag, const LargeValue& value)
{
    std::vector<BYTE> bytes(static_cast<size_t>(value.Size()) + sizeof(WCHAR));
    const size_t size = bytes.size() - sizeof(WCHAR);
    for (size_t done = 0; done < size;)
    {
        const size_t got = value.Read(done, bytes.data() + done, size - done);
        if (got == 0)
        {
            throw Error(MAPI_E_CORRUPT_DATA, "a stored value is shorter than its recorded size");
        }
        done += got;
    }
    SPropValue property{};
    property.ulPropTag = tag;
    switch (PROP_TYPE(tag))
    {
    case PT_STRING8:
        property.Value.lpszA = reinterpret_cast<char*>(bytes.data());
        break;
    case PT_UNICODE:
        // Half a character at the end is dropped, so that the terminating zero is aligned.
        std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(size - size % sizeof(WCHAR)), bytes.end(), BYTE(0));
        property.Value.lpszW = reinterpret_cast<WCHAR*>(bytes.data());
        break;
    default:
        property.Value.bin.cb = static_cast<ULONG>(size);
        property.Value.bin.lpb = bytes.data();
    }
    properties.Set(property);
}

PropertyBytes::PropertyBytes(StreamOwner& owner, const PropertySet& properties, ULONG tag, bool create)
    : m_owner(owner)
    , m_keepsOwner(Ref<IUnknown>::Share(owner.Unknown()))
    , m_tag(PROP_TAG(StreamType(tag, properties.Find(tag).Type()), PROP_ID(tag)))
{
    if (!create)
    {
        m_original = OpenForReading(properties, m_tag);
        return;
    }
    m_staged = owner.File().Stage();
    m_dirty = true;
}

PropertyBytes::~PropertyBytes()
{
    try
    {
        Publish();
    }
    catch (...)
    {
        // Callers that need the result of the write call Commit.
        ResultOfCurrentException();
    }
}

StagedValue& PropertyBytes::Staged()
{
    if (!m_staged)
    {
        std::shared_ptr<StagedValue> staged = m_owner.File().Stage();
        std::vector<char> chunk(CopyChunk);
        for (std::uint64_t offset = 0;;)
        {
            const size_t got = m_original->ReadAt(offset, chunk.data(), chunk.size());
            if (got == 0)
            {
                break;
            }
            staged->Write(offset, chunk.data(), got);
            offset += got;
        }
        m_staged = std::move(staged);
        m_original.reset();
    }
    m_dirty = true;
    return *m_staged;
}

std::uint64_t PropertyBytes::Size()
{
    const std::lock_guard hold(m_owner.Lock());
    return m_staged ? m_staged->Size() : m_original->Size();
}

size_t PropertyBytes::ReadAt(std::uint64_t offset, void* buffer, size_t size)
{
    const std::lock_guard hold(m_owner.Lock());
    if (!m_staged)
    {
        return m_original->ReadAt(offset, buffer, size);
    }
    return ReadWhole(*m_staged, offset, buffer, size);
}

void PropertyBytes::WriteAt(std::uint64_t offset, const void* bytes, size_t size)
{
    const std::lock_guard hold(m_owner.Lock());
    if (size > 0)
    {
        Staged().Write(offset, bytes, size);
    }
}

void PropertyBytes::SetSize(std::uint64_t size)
{
    const std::lock_guard hold(m_owner.Lock());
    Staged().SetSize(size);
}

void PropertyBytes::Publish()
{
    const std::lock_guard hold(m_owner.Lock());
    if (!m_dirty)
    {
        return;
    }
    m_owner.PutStreamValue(m_tag, m_staged);
    m_dirty = false;
}

} // namespace zebstore
