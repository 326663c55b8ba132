// IStream over a byte source.
#pragma once

#include "zebstore/base/Object.h"

#include <cstdint>
#include <memory>

namespace zebstore
{

/// The bytes of a stream. Offsets and sizes are in bytes; failures are thrown as Error.
class StreamBytes
{
public:
    virtual ~StreamBytes() = default;
    virtual std::uint64_t Size() = 0;
    /// Reads up to `size` bytes from `offset`; fewer only at the end. @return the bytes read.
    virtual size_t ReadAt(std::uint64_t offset, void* buffer, size_t size) = 0;
    /// Writes at `offset`; a gap after the end is filled with zeros.
    virtual void WriteAt(std::uint64_t offset, const void* bytes, size_t size) = 0;
    /// Truncates or extends with zeros.
    virtual void SetSize(std::uint64_t size) = 0;
    /// Makes the written bytes as durable as the owner guarantees.
    virtual void Commit() = 0;
};

/// An IStream with a position of its own over shared bytes.
class Stream final : public Object<IStream>
{
public:
    Stream(std::shared_ptr<StreamBytes> bytes, bool writable)
        : m_bytes(std::move(bytes))
        , m_writable(writable)
    {
    }

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override;
    HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG size, ULONG* written) override;
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override;
    HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
    HRESULT STDMETHODCALLTYPE CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read,
                                     ULARGE_INTEGER* written) override;
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Revert() override;
    HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) override;
    HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER size, DWORD type) override;
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD flags) override;
    HRESULT STDMETHODCALLTYPE Clone(IStream** clone) override;

private:
    bool Answers(REFIID iid) const override { return IsOneOf(iid, {&IID_IStream, &IID_ISequentialStream}); }
    size_t ReadHere(void* buffer, size_t size);
    void CopyLoop(IStream* target, std::uint64_t size, std::uint64_t& read, std::uint64_t& written);

    std::shared_ptr<StreamBytes> m_bytes;
    const bool m_writable;
    std::uint64_t m_position = 0;
};

} // namespace zebstore
