#include "platform/messages.h"

namespace zeb::platform
{

bool PostWindowMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    return PostMessageA(window, message, wParam, lParam) != FALSE;
}

HWND CreateMessageWindow()
{
    return CreateWindowExA(0, "STATIC", nullptr, 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
}

void DestroyMessageWindow(HWND window)
{
    DestroyWindow(window);
}

bool WaitWindowMessage(HWND window, unsigned int milliseconds, WindowMessage& message)
{
    const ULONGLONG end = GetTickCount64() + milliseconds;
    for (;;)
    {
        MSG received;
        if (PeekMessageA(&received, window, 0, 0, PM_REMOVE))
        {
            message = {received.message, received.wParam, received.lParam};
            return true;
        }
        const ULONGLONG now = GetTickCount64();
        if (now >= end)
        {
            return false;
        }
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
    }
}

} // namespace zeb::platform
