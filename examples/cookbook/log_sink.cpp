// Receives the library's log: counts its lines, and keeps the failures for a report.
#include "Mapi.h"

#include <string>
#include <vector>

struct Log
{
    int lines = 0;
    std::vector<std::string> failures;

    /// Called on the thread that logs. Nothing may leave it: the caller is C.
    static void Receive(void* context, int level, const char* /*component*/, const char* text) noexcept
    {
        Log& log = *static_cast<Log*>(context);
        ++log.lines;
        if (level == 1)
        {
            log.failures.emplace_back(text);
        }
    }
};

/// Sets the sink for a scope.
struct SinkScope
{
    explicit SinkScope(Log& log) { Zeb_SetLogSink(&Log::Receive, &log); }
    ~SinkScope() { Zeb_SetLogSink(nullptr, nullptr); }
};

int main()
try
{
    Log log; // outlives the sink
    SinkScope scope(log);
    Mapi mapi;
    try
    {
        mapi.OpenInbox().OpenFolderByNameW(ZEBW("Nowhere"));
    }
    catch (CZebException* exception)
    {
        exception->Delete();
    }
    std::printf("any lines: %s\n", log.lines > 0 ? "yes" : "no");
    for (const std::string& each : log.failures)
    {
        std::printf("failure: %s\n", each.substr(0, each.find(", File")).c_str());
    }
}
catch (...)
{
    return ReportFailure();
}
