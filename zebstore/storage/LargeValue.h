// Values that are too large to be held in memory with the other properties, read and written in pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace zebstore
{

/// The bytes of one large value as a stream shows them: a PT_BINARY's bytes, a PT_STRING8's narrow
/// characters, a PT_UNICODE's 16-bit characters (little endian); text without its terminator. Threads: any; a
/// value of a store takes the store's lock for each call.
class LargeValue
{
public:
    virtual ~LargeValue() = default;

    /// In bytes.
    virtual std::uint64_t Size() const = 0;
    /// Copies at most `count` bytes from `offset` on. @return how many were copied; 0 at and past the end.
    /// @throws Error MAPI_E_DISK_ERROR, MAPI_E_CORRUPT_STORE ...
    virtual size_t Read(std::uint64_t offset, void* to, size_t count) const = 0;
};

/// A value that is being written. It lives in memory while it is small and then in the store connection's
/// temporary database, so nothing of it is seen in the store's file before an object that holds it is saved,
/// and it dies with the process. Made by StoreFile::Stage; keeps the store open.
class StagedValue : public LargeValue
{
public:
    /// Writes over and past the end; a gap between the old end and `offset` reads as zeros.
    /// @throws Error MAPI_E_NOT_ENOUGH_DISK ...; the value may then hold a part of the bytes.
    virtual void Write(std::uint64_t offset, const void* from, size_t count) = 0;
    /// Cuts off or grows with zeros.
    virtual void SetSize(std::uint64_t size) = 0;
};

using LargeValuePtr = std::shared_ptr<const LargeValue>;

} // namespace zebstore
