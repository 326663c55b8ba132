// The lists that the compiler writes into sections: the linker sorts them by name, and
// these are their ends. Linked into every module.
#include "module.h"

#pragma section(".CRT$XIA", long, read)
#pragma section(".CRT$XIZ", long, read)
#pragma section(".CRT$XCA", long, read)
#pragma section(".CRT$XCZ", long, read)

extern "C"
{
    __declspec(allocate(".CRT$XIA")) Initializer __xi_a[] = {nullptr};
    __declspec(allocate(".CRT$XIZ")) Initializer __xi_z[] = {nullptr};
    __declspec(allocate(".CRT$XCA")) Procedure __xc_a[] = {nullptr};
    __declspec(allocate(".CRT$XCZ")) Procedure __xc_z[] = {nullptr};

    /// Its presence tells the linker that floating point is used.
    int _fltused = 0x9875;
}

bool RunInitializers()
{
    InitializeCookie();
    if (_initterm_e(__xi_a, __xi_z) != 0)
    {
        return false;
    }
    _initterm(__xc_a, __xc_z);
    return true;
}

#pragma comment(linker, "/include:_load_config_used")

// POSIX's names of functions that ucrtbase.dll exports with an underscore.
#pragma comment(linker, "/alternatename:access=_access")
#pragma comment(linker, "/alternatename:chdir=_chdir")
#pragma comment(linker, "/alternatename:close=_close")
#pragma comment(linker, "/alternatename:creat=_creat")
#pragma comment(linker, "/alternatename:dup=_dup")
#pragma comment(linker, "/alternatename:dup2=_dup2")
#pragma comment(linker, "/alternatename:fdopen=_fdopen")
#pragma comment(linker, "/alternatename:fileno=_fileno")
#pragma comment(linker, "/alternatename:getcwd=_getcwd")
#pragma comment(linker, "/alternatename:isatty=_isatty")
#pragma comment(linker, "/alternatename:mkdir=_mkdir")
#pragma comment(linker, "/alternatename:open=_open")
#pragma comment(linker, "/alternatename:putenv=_putenv")
#pragma comment(linker, "/alternatename:read=_read")
#pragma comment(linker, "/alternatename:rmdir=_rmdir")
#pragma comment(linker, "/alternatename:strdup=_strdup")
#pragma comment(linker, "/alternatename:unlink=_unlink")
#pragma comment(linker, "/alternatename:write=_write")
