#include "platform/export.h"

extern "C" ZEBAPI_EXPORT int ProbeAnswer()
{
    return 42;
}
