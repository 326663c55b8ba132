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
    // Wine does not count them, but gives out the lowest number that is free.
    const HANDLE next = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    CloseHandle(next);
    return reinterpret_cast<std::uintptr_t>(next);
}

} // namespace zeb::test
