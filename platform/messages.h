// Window messages: posted by any thread, read by the thread that owns the window.
//
// On Linux a "window" is no more than its queue. Its handle names the queue in the whole process, whichever binary
// made it.
#pragma once

#include "platform/mapi.h"

namespace zeb::platform
{

struct WindowMessage
{
    UINT message;
    WPARAM wParam;
    LPARAM lParam;
};

/// Appends a message to the window's queue and returns at once; nothing waits for it to be read (PostMessageA on
/// Windows). @return false when there is no such window or its queue is full (thousands of messages)
bool PostWindowMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// A window that shows nothing and only receives messages, read by the calling thread. @return null on failure
HWND CreateMessageWindow();
void DestroyMessageWindow(HWND window);

/// Takes the next message out of the queue of a window made by CreateMessageWindow, on the thread that made it;
/// waits for one up to `milliseconds`. @return whether there was one
bool WaitWindowMessage(HWND window, unsigned int milliseconds, WindowMessage& message);

} // namespace zeb::platform
