// A stream over bytes in memory, with a position.
#pragma once

#include "tests/support/doubles/UnusedStream.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace zeb::test
{

/// Reads and writes as a provider's stream may: fewer bytes than asked for in one call, no error at the end.
class ByteStream : public UnusedStream
{
public:
    explicit ByteStream(Journal& journal, std::string bytes = "", std::string name = "stream")
        : UnusedStream(journal, std::move(name))
        , m_bytes(std::move(bytes))
    {
    }

    std::string m_bytes;
    size_t m_position = 0;
    /// The most bytes that one call reads or writes.
    ULONG m_atOnce = 0xFFFFFFFF;

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG count, ULONG* read) override
    {
        const ProviderScope inside;
        const HRESULT result = Called("Read", "", Require(buffer != nullptr && read != nullptr, STG_E_INVALIDPOINTER));
        if (this->Stops(result))
        {
            return result;
        }
        const size_t given = std::min<size_t>({count, m_atOnce, m_bytes.size() - std::min(m_position, m_bytes.size())});
        std::memcpy(buffer, m_bytes.data() + m_position, given);
        m_position += given;
        *read = static_cast<ULONG>(given);
        return given < count ? S_FALSE : S_OK;
    }
    HRESULT STDMETHODCALLTYPE Write(const void* buffer, ULONG count, ULONG* written) override
    {
        const ProviderScope inside;
        const HRESULT result =
            Called("Write", "", Require(buffer != nullptr && written != nullptr, STG_E_INVALIDPOINTER));
        if (this->Stops(result))
        {
            return result;
        }
        const ULONG taken = std::min(count, m_atOnce);
        m_bytes.resize(std::max(m_bytes.size(), m_position + taken));
        std::memcpy(&m_bytes[m_position], buffer, taken);
        m_position += taken;
        *written = taken;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override
    {
        const ProviderScope inside;
        return Called("Commit", Number(flags));
    }
};

} // namespace zeb::test
