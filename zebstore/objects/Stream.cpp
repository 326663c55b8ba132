#include "zebstore/objects/Stream.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace zebstore
{
namespace
{

constexpr size_t CopyChunk = 64 * 1024;
constexpr std::uint64_t LargestSize = 0x7FFFFFFF;

} // namespace

size_t Stream::ReadHere(void* buffer, size_t size)
{
    const size_t got = m_bytes->ReadAt(m_position, buffer, size);
    m_position += got;
    return got;
}

HRESULT Stream::Read(void* buffer, ULONG size, ULONG* read)
{
    return Guarded("IStream::Read", [&]() -> HRESULT
    {
        if (read != nullptr)
        {
            *read = 0;
        }
        if (buffer == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        const size_t got = ReadHere(buffer, size);
        if (read != nullptr)
        {
            *read = static_cast<ULONG>(got);
        }
        return got < size ? S_FALSE : S_OK;
    });
}

HRESULT Stream::Write(const void* bytes, ULONG size, ULONG* written)
{
    return Guarded("IStream::Write", [&]() -> HRESULT
    {
        if (written != nullptr)
        {
            *written = 0;
        }
        if (!m_writable)
        {
            throw Error(STG_E_ACCESSDENIED, "the stream was opened for reading");
        }
        if (bytes == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        if (m_position + size > LargestSize)
        {
            throw Error(STG_E_MEDIUMFULL, "a property holds at most 2 GB");
        }
        m_bytes->WriteAt(m_position, bytes, size);
        m_position += size;
        if (written != nullptr)
        {
            *written = size;
        }
        return S_OK;
    });
}

HRESULT Stream::Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position)
{
    return Guarded("IStream::Seek", [&]() -> HRESULT
    {
        std::int64_t base = 0;
        if (origin == STREAM_SEEK_CUR)
        {
            base = static_cast<std::int64_t>(m_position);
        }
        else if (origin == STREAM_SEEK_END)
        {
            base = static_cast<std::int64_t>(m_bytes->Size());
        }
        else if (origin != STREAM_SEEK_SET)
        {
            return STG_E_INVALIDFUNCTION;
        }
        constexpr std::int64_t Furthest = std::int64_t{1} << 62;
        if (move.QuadPart > Furthest || move.QuadPart < -Furthest || base + move.QuadPart < 0)
        {
            return STG_E_INVALIDFUNCTION;
        }
        m_position = static_cast<std::uint64_t>(base + move.QuadPart);
        if (position != nullptr)
        {
            position->QuadPart = m_position;
        }
        return S_OK;
    });
}

HRESULT Stream::SetSize(ULARGE_INTEGER size)
{
    return Guarded("IStream::SetSize", [&]
    {
        if (!m_writable)
        {
            throw Error(STG_E_ACCESSDENIED, "the stream was opened for reading");
        }
        if (size.QuadPart > LargestSize)
        {
            throw Error(STG_E_MEDIUMFULL, "a property holds at most 2 GB");
        }
        m_bytes->SetSize(size.QuadPart);
    });
}

void Stream::CopyLoop(IStream* target, std::uint64_t size, std::uint64_t& read, std::uint64_t& written)
{
    std::vector<char> buffer(static_cast<size_t>(std::min<std::uint64_t>(size, CopyChunk)));
    while (size > 0)
    {
        const size_t wanted = static_cast<size_t>(std::min<std::uint64_t>(size, buffer.size()));
        const size_t got = ReadHere(buffer.data(), wanted);
        if (got == 0)
        {
            return;
        }
        read += got;
        ULONG put = 0;
        Check(target->Write(buffer.data(), static_cast<ULONG>(got), &put),
              "the target stream of the copy cannot be written");
        written += put;
        size -= got;
    }
}

HRESULT Stream::CopyTo(IStream* target, ULARGE_INTEGER size, ULARGE_INTEGER* read, ULARGE_INTEGER* written)
{
    return Guarded("IStream::CopyTo", [&]
    {
        if (target == nullptr)
        {
            throw Error(STG_E_INVALIDPOINTER, "the target stream is null");
        }
        std::uint64_t bytesRead = 0;
        std::uint64_t bytesWritten = 0;
        CopyLoop(target, size.QuadPart, bytesRead, bytesWritten);
        if (read != nullptr)
        {
            read->QuadPart = bytesRead;
        }
        if (written != nullptr)
        {
            written->QuadPart = bytesWritten;
        }
    });
}

HRESULT Stream::Commit(DWORD)
{
    return Guarded("IStream::Commit", [&]
    {
        if (m_writable)
        {
            m_bytes->Commit();
        }
    });
}

HRESULT Stream::Revert()
{
    return Guarded("IStream::Revert", [] { throw Error(MAPI_E_NO_SUPPORT, "a stream cannot be reverted"); });
}

HRESULT Stream::LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
{
    return Guarded("IStream::LockRegion", []() -> HRESULT { return STG_E_INVALIDFUNCTION; });
}

HRESULT Stream::UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
{
    return Guarded("IStream::UnlockRegion", []() -> HRESULT { return STG_E_INVALIDFUNCTION; });
}

HRESULT Stream::Stat(STATSTG* stat, DWORD)
{
    return Guarded("IStream::Stat", [&]() -> HRESULT
    {
        if (stat == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        std::memset(stat, 0, sizeof(*stat));
        stat->type = STGTY_STREAM;
        stat->cbSize.QuadPart = m_bytes->Size();
        stat->grfMode = m_writable ? STGM_READWRITE : STGM_READ;
        return S_OK;
    });
}

HRESULT Stream::Clone(IStream** clone)
{
    return Guarded("IStream::Clone", [&]() -> HRESULT
    {
        if (clone == nullptr)
        {
            return STG_E_INVALIDPOINTER;
        }
        Stream* copy = new Stream(m_bytes, m_writable);
        copy->m_position = m_position;
        *clone = copy;
        return S_OK;
    });
}

} // namespace zebstore
