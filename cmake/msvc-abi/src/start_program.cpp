// The entry point of a console program, and its atexit(): what is registered runs in exit().
#include "module.h"

#include <stdio.h>
#include <stdlib.h>

extern "C"
{
    int __cdecl _seh_filter_exe(unsigned long, EXCEPTION_POINTERS*);
    void __cdecl _set_app_type(int);
    int __cdecl _configure_narrow_argv(int);
    int __cdecl _initialize_narrow_environment();
    int* __cdecl __p___argc();
    char*** __cdecl __p___argv();
    char** __cdecl _get_initial_narrow_environment();
    int __cdecl main(int, char**, char**);

    int __cdecl atexit(Procedure function)
    {
        return _crt_atexit(function);
    }
}

static int RunMain()
{
    return RunInitializers() ? main(*__p___argc(), *__p___argv(), _get_initial_narrow_environment()) : 255;
}

extern "C" int __cdecl mainCRTStartup()
{
    _set_app_type(1); // a console program
    _configure_narrow_argv(1);
    _initialize_narrow_environment();
    // As on Windows; Wine's ucrtbase.dll buffers it when it is a file.
    setvbuf(stderr, nullptr, _IONBF, 0);
    __try
    {
        exit(RunMain());
    }
    __except (_seh_filter_exe(_exception_code(), static_cast<EXCEPTION_POINTERS*>(_exception_info())))
    {
        _exit(_exception_code());
    }
    return 0;
}
