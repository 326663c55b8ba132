// A library that returns its number and notifies its host when it is unloaded.
#include "platform/export.h"

extern "C" ZEBAPI_EXPORT int ProbeNumber()
{
    return PROBE_NUMBER;
}

namespace
{

struct Watch
{
    void (*report)(int) = nullptr;
    ~Watch()
    {
        if (report != nullptr)
        {
            report(PROBE_NUMBER);
        }
    }
};

Watch watch;

} // namespace

/// `report` is called with this library's number when it is unloaded.
extern "C" ZEBAPI_EXPORT void ProbeWatch(void (*report)(int))
{
    watch.report = report;
}
