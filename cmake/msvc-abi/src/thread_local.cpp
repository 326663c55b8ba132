// Thread-local storage: the directory that the loader reads, constructors at a thread's start, destructors at its end.
#include "module.h"

#include <stdlib.h>

#pragma section(".CRT$XDA", long, read)
#pragma section(".CRT$XDZ", long, read)
#pragma section(".CRT$XLA", long, read)
#pragma section(".CRT$XLC", long, read)
#pragma section(".CRT$XLZ", long, read)
#pragma section(".tls", long, read, write)
#pragma section(".tls$ZZZ", long, read, write)
#pragma section(".rdata$T", long, read)

extern "C"
{
    __declspec(allocate(".CRT$XDA")) Procedure __xd_a = nullptr;
    __declspec(allocate(".CRT$XDZ")) Procedure __xd_z = nullptr;
    __declspec(allocate(".CRT$XLA")) PIMAGE_TLS_CALLBACK __xl_a = nullptr;
    __declspec(allocate(".CRT$XLZ")) PIMAGE_TLS_CALLBACK __xl_z = nullptr;
    __declspec(allocate(".tls")) char _tls_start = 0;
    __declspec(allocate(".tls$ZZZ")) char _tls_end = 0;
    ULONG _tls_index = 0;
    __declspec(allocate(".rdata$T")) extern const IMAGE_TLS_DIRECTORY64 _tls_used = {
        reinterpret_cast<ULONGLONG>(&_tls_start),
        reinterpret_cast<ULONGLONG>(&_tls_end),
        reinterpret_cast<ULONGLONG>(&_tls_index),
        reinterpret_cast<ULONGLONG>(&__xl_a + 1),
        0,
        {0}};
}

struct Destructor
{
    Destructor* next;
    Procedure run;
};
static __declspec(thread) Destructor* t_destructors;
extern "C" __declspec(thread) bool __tls_guard = false;

/// Registers what the calling thread runs at its end, the last first. -1: no memory.
extern "C" int __cdecl __tlregdtor(Procedure run)
{
    auto* destructor = static_cast<Destructor*>(malloc(sizeof(Destructor)));
    if (destructor == nullptr)
    {
        return -1;
    }
    *destructor = {t_destructors, run};
    t_destructors = destructor;
    return 0;
}

static void RunDestructors()
{
    while (Destructor* destructor = t_destructors)
    {
        t_destructors = destructor->next;
        destructor->run();
        free(destructor);
    }
}

/// Constructs the calling thread's objects, once; threads older than the module come here at their first use.
extern "C" void __cdecl __dyn_tls_on_demand_init()
{
    if (__tls_guard)
    {
        return;
    }
    __tls_guard = true;
    for (Procedure* construct = &__xd_a + 1; construct < &__xd_z; ++construct)
    {
        if (*construct != nullptr)
        {
            (*construct)();
        }
    }
}

extern "C" void NTAPI __dyn_tls_init(void*, DWORD reason, void*)
{
    if (reason == DLL_PROCESS_ATTACH || reason == DLL_THREAD_ATTACH)
    {
        __dyn_tls_on_demand_init();
    }
    else
    {
        RunDestructors();
    }
}

extern "C" __declspec(allocate(".CRT$XLC")) PIMAGE_TLS_CALLBACK __xl_c = __dyn_tls_init;
