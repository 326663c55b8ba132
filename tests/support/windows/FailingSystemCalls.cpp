// This program's imports of system functions are replaced here, so that FailingSystem can make them fail.
#include "platform/mapi.h"
#include "tests/support/FailingSystem.h"

#include <winternl.h>

extern "C" NTSTATUS NTAPI LdrGetProcedureAddress(HMODULE library, PANSI_STRING name, ULONG ordinal, PVOID* address);
extern "C" NTSTATUS NTAPI LdrGetDllHandle(PWSTR path, PVOID unused, PUNICODE_STRING name, HMODULE* library);

namespace
{

/// The system's own function, found past the imports that are replaced here.
void* Real(const WCHAR* library, const char* name)
{
    UNICODE_STRING libraryName = {};
    libraryName.Buffer = const_cast<WCHAR*>(library);
    while (library[libraryName.Length / sizeof(WCHAR)] != 0)
    {
        libraryName.Length += sizeof(WCHAR);
    }
    libraryName.MaximumLength = static_cast<USHORT>(libraryName.Length + sizeof(WCHAR));
    ANSI_STRING functionName = {};
    functionName.Buffer = const_cast<char*>(name);
    while (name[functionName.Length] != '\0')
    {
        ++functionName.Length;
    }
    functionName.MaximumLength = static_cast<USHORT>(functionName.Length + 1);
    HMODULE handle = nullptr;
    void* address = nullptr;
    LdrGetDllHandle(nullptr, nullptr, &libraryName, &handle);
    LdrGetProcedureAddress(handle, &functionName, 0, &address);
    return address;
}

/// Sets the thread's last error when the next call is to fail.
int Failure(DWORD everyday)
{
    const int error = zeb::test::SystemFailure(static_cast<int>(everyday));
    if (error != 0)
    {
        SetLastError(static_cast<DWORD>(error));
    }
    return error;
}

} // namespace

// Defines the pointer that an imported function is called through; the linker prefers it to the import library's.
// `error` is the code of the failure inside `failed`.
#define ZEB_FAILING(library, result, name, parameters, arguments, everyday, failed)                                    \
    extern "C" result(WINAPI* __imp_##name) parameters;                                                                \
    static result WINAPI Failing##name parameters                                                                      \
    {                                                                                                                  \
        static const auto real = reinterpret_cast<result(WINAPI*) parameters>(Real(library, #name));                   \
        const int error = Failure(everyday);                                                                           \
        static_cast<void>(error);                                                                                      \
        return error != 0 ? failed : real arguments;                                                                   \
    }                                                                                                                  \
    result(WINAPI* __imp_##name) parameters = Failing##name

ZEB_FAILING(L"advapi32.dll", LSTATUS, RegOpenKeyExW,
            (HKEY key, LPCWSTR path, DWORD options, REGSAM access, PHKEY opened), (key, path, options, access, opened),
            ERROR_BADDB, error);
ZEB_FAILING(L"advapi32.dll", LSTATUS, RegQueryValueExW,
            (HKEY key, LPCWSTR name, LPDWORD reserved, LPDWORD type, LPBYTE bytes, LPDWORD size),
            (key, name, reserved, type, bytes, size), ERROR_BADKEY, error);
ZEB_FAILING(L"advapi32.dll", LSTATUS, RegEnumKeyExW,
            (HKEY key, DWORD index, LPWSTR name, LPDWORD size, LPDWORD reserved, LPWSTR className, LPDWORD classSize,
             PFILETIME written),
            (key, index, name, size, reserved, className, classSize, written), ERROR_BADKEY, error);
ZEB_FAILING(L"kernel32.dll", HMODULE, LoadLibraryExA, (LPCSTR path, HANDLE file, DWORD flags), (path, file, flags),
            ERROR_NOT_ENOUGH_MEMORY, nullptr);
ZEB_FAILING(L"kernel32.dll", FARPROC, GetProcAddress, (HMODULE library, LPCSTR name), (library, name),
            ERROR_PROC_NOT_FOUND, nullptr);
ZEB_FAILING(L"kernel32.dll", DWORD, GetModuleFileNameA, (HMODULE library, LPSTR path, DWORD size),
            (library, path, size), ERROR_MOD_NOT_FOUND, 0);
ZEB_FAILING(L"kernel32.dll", UINT, GetSystemDirectoryA, (LPSTR path, UINT size), (path, size), ERROR_NOT_ENOUGH_MEMORY,
            0);
ZEB_FAILING(L"kernel32.dll", DWORD, GetFileAttributesA, (LPCSTR path), (path), ERROR_ACCESS_DENIED,
            INVALID_FILE_ATTRIBUTES);
ZEB_FAILING(L"kernel32.dll", DWORD, ExpandEnvironmentStringsW, (LPCWSTR text, LPWSTR expanded, DWORD size),
            (text, expanded, size), ERROR_NOT_ENOUGH_MEMORY, 0);
ZEB_FAILING(L"kernel32.dll", BOOL, FileTimeToLocalFileTime, (const FILETIME* utc, LPFILETIME local), (utc, local),
            ERROR_INVALID_PARAMETER, FALSE);
ZEB_FAILING(L"kernel32.dll", BOOL, FileTimeToSystemTime, (const FILETIME* time, LPSYSTEMTIME parts), (time, parts),
            ERROR_INVALID_PARAMETER, FALSE);
ZEB_FAILING(L"user32.dll", BOOL, PostMessageA, (HWND window, UINT message, WPARAM wParam, LPARAM lParam),
            (window, message, wParam, lParam), ERROR_NOT_ENOUGH_QUOTA, FALSE);
ZEB_FAILING(L"oleaut32.dll", INT, SystemTimeToVariantTime, (LPSYSTEMTIME parts, double* date), (parts, date),
            ERROR_INVALID_PARAMETER, FALSE);
ZEB_FAILING(L"oleaut32.dll", INT, VariantTimeToSystemTime, (double date, LPSYSTEMTIME parts), (date, parts),
            ERROR_INVALID_PARAMETER, FALSE);
ZEB_FAILING(L"oleaut32.dll", HRESULT, VarBstrFromDate, (DATE date, LCID locale, ULONG flags, BSTR* text),
            (date, locale, flags, text), ERROR_OUTOFMEMORY, E_OUTOFMEMORY);
