#include "tests/support/OpenHandles.h"

#include "platform/mapi.h"

#include <cstdint>

namespace zeb::test
{

size_t OpenHandles()
{
    DWORD count = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &count) && count != 0)
    {
        return count;
    }
    // Wine does not count them, but returns the lowest free number.
    const HANDLE next = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(next);
    return reinterpret_cast<std::uintptr_t>(next);
}

} // namespace zeb::test
