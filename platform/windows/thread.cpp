#include "platform/thread.h"

#include <windows.h>

#include <new>

namespace zeb::platform
{
namespace
{

const char HereMark = 0;

struct Work
{
    void (*body)(void*);
    void* argument;
    HMODULE library;
};

DWORD WINAPI RunWork(void* given)
{
    const Work work = *static_cast<Work*>(given);
    delete static_cast<Work*>(given);
    work.body(work.argument);
    FreeLibraryAndExitThread(work.library, 0);
}

} // namespace

bool LibraryThread::Start(void (*body)(void*), void* argument) noexcept
{
    Work* const work = new (std::nothrow) Work{body, argument, nullptr};
    if (work == nullptr)
    {
        return false;
    }
    if (GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS, &HereMark, &work->library))
    {
        m_thread = CreateThread(nullptr, 0, RunWork, work, 0, nullptr);
        if (m_thread != nullptr)
        {
            return true;
        }
        FreeLibrary(work->library);
    }
    delete work;
    return false;
}

void LibraryThread::End() noexcept
{
    if (m_thread != nullptr)
    {
        CloseHandle(m_thread);
    }
    m_thread = nullptr;
}

bool IsProcessEnding() noexcept
{
    using Asked = BOOLEAN(WINAPI*)();
    static const Asked asked = reinterpret_cast<Asked>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("ntdll.dll"), "RtlDllShutdownInProgress")));
    return asked && asked();
}

} // namespace zeb::platform
