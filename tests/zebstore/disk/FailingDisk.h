// A disk of which one call fails.
#pragma once

#include "tests/zebstore/disk/DiskVfs.h"

#include <sqlite3.h>

#include <algorithm>
#include <string>

namespace zebstore::test
{

/// What happens to a call, and to which.
struct DiskFault
{
    enum class Extent
    {
        Nothing, ///< the call does nothing
        Half,    ///< half of the bytes are written, or half of the file is cut off
        Torn,    ///< half of the bytes are written, and bytes that nobody wrote behind them
    };

    DiskCall call = DiskCall::Open;
    int code = 0; ///< what SQLite is told
    Extent extent = Extent::Nothing;
    bool lasting = false; ///< every later call of any kind fails too
    const char* name = "";
};

/// Fails the n-th call of a kind, from 1.
class FailingDisk final : public Disk
{
public:
    void Arm(const DiskFault& fault, int number)
    {
        m_fault = fault;
        m_left = number;
        m_happened = false;
    }
    void Disarm()
    {
        m_left = 0;
        m_lasting = false;
    }
    /// Whether the call was reached since Arm.
    bool Happened() const { return m_happened; }

    int On(const DiskRequest& request, const std::function<int(const DiskRequest&)>& perform) override
    {
        if (m_lasting)
        {
            return CodeOf(request.call);
        }
        if (request.call != m_fault.call || m_left == 0 || --m_left > 0)
        {
            return perform(request);
        }
        m_happened = true;
        m_lasting = m_fault.lasting;
        if (m_fault.extent != DiskFault::Extent::Nothing)
        {
            Partly(request, perform);
        }
        return m_fault.code;
    }

private:
    void Partly(DiskRequest request, const std::function<int(const DiskRequest&)>& perform) const
    {
        std::string bytes;
        if (request.call == DiskCall::Write)
        {
            const auto* written = static_cast<const char*>(request.bytes);
            const size_t half = static_cast<size_t>(request.count / 2);
            bytes.assign(written, half);
            if (m_fault.extent == DiskFault::Extent::Torn)
            {
                bytes.resize(static_cast<size_t>(request.count), '\xA5');
            }
            request.bytes = &bytes[0];
            request.count = static_cast<int>(bytes.size());
        }
        perform(request);
    }
    static int CodeOf(DiskCall call)
    {
        switch (call)
        {
        case DiskCall::Open:
            return SQLITE_CANTOPEN;
        case DiskCall::Read:
            return SQLITE_IOERR_READ;
        case DiskCall::Write:
            return SQLITE_IOERR_WRITE;
        case DiskCall::Sync:
            return SQLITE_IOERR_FSYNC;
        default:
            return SQLITE_IOERR;
        }
    }

    DiskFault m_fault;
    int m_left = 0;
    bool m_lasting = false;
    bool m_happened = false;
};

} // namespace zebstore::test
