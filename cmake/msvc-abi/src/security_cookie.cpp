// The value that stands between a protected function's buffers and its return address. The system's loader replaces the
// default, which the image's load configuration names; an older one leaves that to the image's start.
#include "module.h"

extern "C"
{
    constexpr ULONG_PTR DefaultCookie = 0x00002B992DDFA232;
    ULONG_PTR __security_cookie = DefaultCookie;
}

void InitializeCookie()
{
    if (__security_cookie != DefaultCookie)
    {
        return;
    }
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    LARGE_INTEGER counter{};
    QueryPerformanceCounter(&counter);
    ULONG_PTR cookie = (ULONG_PTR(now.dwHighDateTime) << 32 | now.dwLowDateTime) ^ ULONG_PTR(counter.QuadPart) << 17;
    cookie ^= ULONG_PTR(GetCurrentThreadId()) << 24 ^ GetCurrentProcessId() ^ reinterpret_cast<ULONG_PTR>(&cookie);
    // Without the two highest bytes, no text that is copied over it as a whole can have its value.
    __security_cookie = cookie & 0x0000FFFFFFFFFFFF;
}
