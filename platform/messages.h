// Window messages: posted by any thread, read by the thread that owns the window.
//
// On Linux a "window" is only its queue. Its handle identifies the queue in the whole process, for all binaries.
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

/// Appends a message to the window's queue and returns immediately (PostMessageA on Windows). @return false when the
/// window does not exist or its queue is full (thousands of messages)
bool PostWindowMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

/// A message-only window, read by the calling thread. @return null on failure
HWND CreateMessageWindow();
void DestroyMessageWindow(HWND window);

/// Removes the next message from the queue of a window created by CreateMessageWindow, on the thread that created it;
/// waits up to `milliseconds` for one. @return whether there was one
bool WaitWindowMessage(HWND window, unsigned int milliseconds, WindowMessage& message);

} // namespace zeb::platform
