#include "platform/interrupt.h"

#include "platform/mapi.h"

#include <atomic>

namespace zeb::platform
{
namespace
{

std::atomic<bool> interrupted{false};

// Runs on a thread of the system's own.
BOOL WINAPI Note(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT)
        return FALSE;
    interrupted = true;
    return TRUE;
}

} // namespace

void CatchInterrupt()
{
    SetConsoleCtrlHandler(Note, TRUE);
}

bool Interrupted()
{
    return interrupted;
}

} // namespace zeb::platform
