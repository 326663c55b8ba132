#include "qorth/TimeProfile.h"

#include "platform/never_destroyed.h"

#include <mutex>

namespace
{

struct Report
{
    std::mutex lock;
    CTimeProfile::Reporter reporter;
};

/// Never destroyed: destructors of static objects may be measured.
Report& TheReport()
{
    static zeb::platform::NeverDestroyed<Report> report;
    return report.Get();
}

} // namespace

CTimeProfile::CTimeProfile(const char* name)
    : m_name(name == nullptr ? "" : name)
    , m_start(std::chrono::steady_clock::now())
{
}

CTimeProfile::~CTimeProfile()
{
    const double seconds = Elapsed();
    try
    {
        Reporter reporter;
        {
            const std::lock_guard<std::mutex> guard(TheReport().lock);
            reporter = TheReport().reporter;
        }
        if (reporter)
        {
            reporter(m_name, seconds);
        }
    }
    catch (...)
    {
        // A measurement that cannot be reported must not fail the measured code.
        return;
    }
}

double CTimeProfile::Elapsed() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

void CTimeProfile::SetReporter(Reporter reporter)
{
    const std::lock_guard<std::mutex> guard(TheReport().lock);
    TheReport().reporter = std::move(reporter);
}
