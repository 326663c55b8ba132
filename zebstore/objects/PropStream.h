// Large properties as streams.
#pragma once

#include "zebstore/base/Locks.h"
#include "zebstore/base/Object.h"
#include "zebstore/objects/Stream.h"
#include "zebstore/storage/PropertySet.h"
#include "zebstore/storage/StoreFile.h"

#include <memory>

namespace zebstore
{

/// The object whose property a stream writes.
class StreamOwner
{
public:
    /// The object as its callers see it; streams hold a reference on it.
    virtual IUnknown* Unknown() = 0;
    /// The object's own lock.
    virtual ObjectLock& Lock() = 0;
    virtual StoreFile& File() const = 0;
    /// Sets one property to a value written through a stream.
    virtual void PutStreamValue(ULONG tag, const std::shared_ptr<StagedValue>& value) = 0;

protected:
    virtual ~StreamOwner() = default;
};

/// The bytes of a property of `properties`, for reading: large values are read from storage; text is converted between
/// 8-bit and 16-bit. @throws Error MAPI_E_NOT_FOUND; MAPI_E_INVALID_TYPE for other types than binary and text
std::shared_ptr<StreamBytes> OpenForReading(const PropertySet& properties, ULONG tag);

/// Sets a PT_BINARY, PT_STRING8 or PT_UNICODE property to the bytes of a small value.
void SetFromBytes(PropertySet& properties, ULONG tag, const LargeValue& value);

/// A property open for writing. Nothing is copied before the first write. The written value is set on the object at
/// Commit, when the object is saved, and when the last stream on it is released.
class PropertyBytes final : public StreamBytes
{
public:
    /// @param create true: start empty; false: the property must exist
    /// @throws Error MAPI_E_NOT_FOUND, MAPI_E_INVALID_TYPE
    PropertyBytes(StreamOwner& owner, const PropertySet& properties, ULONG tag, bool create);
    ~PropertyBytes() override;

    std::uint64_t Size() override;
    size_t ReadAt(std::uint64_t offset, void* buffer, size_t size) override;
    void WriteAt(std::uint64_t offset, const void* bytes, size_t size) override;
    void SetSize(std::uint64_t size) override;
    void Commit() override { Publish(); }

    /// Sets the written value on the object.
    void Publish();

private:
    StagedValue& Staged();

    StreamOwner& m_owner;
    Ref<IUnknown> m_keepsOwner;
    const ULONG m_tag;
    std::shared_ptr<StreamBytes> m_original; ///< until the first write
    std::shared_ptr<StagedValue> m_staged;
    bool m_dirty = false;
};

} // namespace zebstore
