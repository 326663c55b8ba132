// Termination. MinGW-w64's file under this name declares it with std::type_info, which <typeinfo> declares later.
#pragma once
#include <corecrt.h>
#ifdef __cplusplus
struct _EXCEPTION_POINTERS;
extern "C"
{
    typedef void(__cdecl* terminate_handler)();
    typedef void(__cdecl* _se_translator_function)(unsigned int, struct _EXCEPTION_POINTERS*);
    __declspec(noreturn) void __cdecl terminate();
    terminate_handler __cdecl set_terminate(terminate_handler);
    terminate_handler __cdecl _get_terminate();
    _se_translator_function __cdecl _set_se_translator(_se_translator_function);
    int __cdecl __uncaught_exceptions();
}
#endif
