#include "zebapi/frame/LogSink.h"

#include "framework/Memory.h"
#include "qorlog/QorLog.h"

void Zeb_SetLogSink(ZebLogSink sink, void* context)
{
    zeb::framework::WithMemory([&]
    {
        qorlog::Sink wrapped;
        if (sink != nullptr)
        {
            wrapped = [sink, context](int level, const char* component, const char* text)
            { sink(context, level, component, text); };
        }
        qorlog::SetSink(std::move(wrapped));
    });
}
