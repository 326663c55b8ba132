// The memory that host and library share fails under FailingNew: this program's import of HeapAlloc is replaced here.
#include "platform/mapi.h"
#include "tests/support/FailingNew.h"

namespace
{

using HeapAllocFunction = LPVOID(WINAPI*)(HANDLE, DWORD, SIZE_T);

LPVOID WINAPI FailingHeapAlloc(HANDLE heap, DWORD flags, SIZE_T size)
{
    static const auto real = reinterpret_cast<HeapAllocFunction>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "HeapAlloc")));
    return zeb::test::AllocationFails() ? nullptr : real(heap, flags, size);
}

} // namespace

// The pointer through which an imported function is called; the linker prefers it to the import library's.
extern "C" HeapAllocFunction __imp_HeapAlloc;
HeapAllocFunction __imp_HeapAlloc = FailingHeapAlloc;
