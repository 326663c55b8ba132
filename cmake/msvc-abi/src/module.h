// What the start-up of programs and of DLLs share. Every module carries its own copy of all of this.
#pragma once

#include <windows.h>

extern "C"
{
    typedef void(__cdecl* Procedure)();
    typedef int(__cdecl* Initializer)();

    struct OnExitTable
    {
        Procedure* first;
        Procedure* last;
        Procedure* end;
    };

    int __cdecl _initterm_e(Initializer* first, Initializer* last);
    void __cdecl _initterm(Procedure* first, Procedure* last);
    int __cdecl _initialize_onexit_table(OnExitTable*);
    int __cdecl _register_onexit_function(OnExitTable*, Initializer);
    int __cdecl _execute_onexit_table(OnExitTable*);
    int __cdecl _crt_atexit(Procedure);
}

/// Runs the module's initializers of C, then its constructors of namespace scope. False: the module cannot start.
bool RunInitializers();

/// Gives protected stacks their random value, where the system's loader has not.
void InitializeCookie();
