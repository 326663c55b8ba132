// Progress reports of a long call to the host.
#pragma once

#include "zebstore/base/Error.h"

#include <cstdint>

namespace zebstore
{

/// Reports the steps of one call to an IMAPIProgress. Threads: the caller's; no lock
/// may be held, since the host's code runs.
class Progress
{
public:
    /// @param sink not owned; null: no reports
    /// @param total all steps of the call
    Progress(IMAPIProgress* sink, std::uint64_t total)
        : m_sink(sink)
        , m_total(total)
    {
        if (m_sink == nullptr)
        {
            return;
        }
        Check(m_sink->GetFlags(&m_flags), "the progress object's GetFlags failed");
        Check(m_sink->GetMin(&m_least), "the progress object's GetMin failed");
        Check(m_sink->GetMax(&m_most), "the progress object's GetMax failed");
    }

    /// @throws Error the progress object's error, MAPI_E_USER_CANCEL when the user stops the call
    void Advance(std::uint64_t steps)
    {
        m_done += steps;
        if (m_sink == nullptr || m_total == 0)
        {
            return;
        }
        const std::uint64_t done = m_done < m_total ? m_done : m_total;
        const std::uint64_t range = m_most > m_least ? m_most - m_least : 0;
        const bool top = (m_flags & MAPI_TOP_LEVEL) != 0;
        Check(m_sink->Progress(static_cast<ULONG>(m_least + range * done / m_total), top ? static_cast<ULONG>(done) : 0,
                               top ? static_cast<ULONG>(m_total) : 0),
              "the call was stopped by its progress object");
    }

private:
    IMAPIProgress* const m_sink;
    const std::uint64_t m_total;
    std::uint64_t m_done = 0;
    ULONG m_flags = 0;
    ULONG m_least = 0;
    ULONG m_most = 0;
};

} // namespace zebstore
