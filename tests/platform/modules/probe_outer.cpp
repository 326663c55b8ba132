#include "platform/export.h"

extern "C" int ProbeAnswer();

extern "C" ZEBAPI_EXPORT int OuterAnswer()
{
    return ProbeAnswer() + 1;
}
