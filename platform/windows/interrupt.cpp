#include "platform/interrupt.h"

#include "platform/mapi.h"

#include <atomic>
#include <cstring>

namespace zeb::platform
{
namespace
{

std::atomic<bool> g_interrupted{false};
std::atomic<const char*> g_lastWords{nullptr};

bool IsInterrupt(DWORD event)
{
    return event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
}

// The handlers run on a thread of the system.
BOOL WINAPI Note(DWORD event)
{
    if (!IsInterrupt(event))
    {
        return FALSE;
    }
    g_interrupted = true;
    return TRUE;
}

BOOL WINAPI End(DWORD event)
{
    if (!IsInterrupt(event))
    {
        return FALSE;
    }
    const char* text = g_lastWords;
    DWORD written = 0;
    WriteFile(GetStdHandle(STD_ERROR_HANDLE), text, static_cast<DWORD>(std::strlen(text)), &written, nullptr);
    // Not ExitProcess: the libraries' cleanup would run while the command's thread uses them.
    TerminateProcess(GetCurrentProcess(), 1);
    return TRUE;
}

} // namespace

void EndOnInterrupt(const char* text)
{
    g_lastWords = text;
    SetConsoleCtrlHandler(End, TRUE);
}

void CatchInterrupt()
{
    // The handler added last is called first.
    SetConsoleCtrlHandler(Note, TRUE);
}

bool Interrupted()
{
    return g_interrupted;
}

} // namespace zeb::platform
