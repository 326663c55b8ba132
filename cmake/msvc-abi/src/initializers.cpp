// The lists that the compiler writes into sections: the linker sorts them by name, and these are their ends.
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
    if (_initterm_e(__xi_a, __xi_z) != 0)
    {
        return false;
    }
    _initterm(__xc_a, __xc_z);
    return true;
}
