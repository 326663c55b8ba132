// The entry point of a DLL, and its atexit(): what is registered runs when the DLL goes.
#include "module.h"

static OnExitTable s_onExit;

extern "C" int __cdecl atexit(Procedure function)
{
    return _register_onexit_function(&s_onExit, reinterpret_cast<Initializer>(function));
}

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID reserved);

extern "C" BOOL WINAPI _DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID reserved)
{
    if (reason == DLL_PROCESS_ATTACH && (_initialize_onexit_table(&s_onExit) != 0 || !RunInitializers()))
    {
        return FALSE;
    }
    const BOOL result = DllMain(module, reason, reserved);
    if (reason == DLL_PROCESS_DETACH)
    {
        _execute_onexit_table(&s_onExit);
    }
    return result;
}
