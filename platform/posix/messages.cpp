#include "platform/messages.h"

#include <cstdint>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zeb::platform
{
namespace
{

// A queue is a pipe, so that every binary of the process reaches it; the handle holds both its ends.
constexpr unsigned int EndBits = 16;
constexpr int EndLimit = 1 << EndBits;
constexpr int QueueBytes = 1 << 20;

HWND Handle(int readEnd, int writeEnd)
{
    return reinterpret_cast<HWND>((static_cast<std::uintptr_t>(readEnd) << EndBits) |
                                  static_cast<std::uintptr_t>(writeEnd));
}

int ReadEnd(HWND window)
{
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(window) >> EndBits) & (EndLimit - 1);
}

int WriteEnd(HWND window)
{
    return static_cast<int>(reinterpret_cast<std::uintptr_t>(window) & (EndLimit - 1));
}

bool IsPipe(int end)
{
    struct stat status;
    return fstat(end, &status) == 0 && S_ISFIFO(status.st_mode);
}

} // namespace

bool PostWindowMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    const int end = WriteEnd(window);
    if (window == nullptr || !IsPipe(end))
    {
        return false;
    }
    const WindowMessage posted = {message, wParam, lParam};
    return write(end, &posted, sizeof(posted)) == static_cast<ssize_t>(sizeof(posted));
}

HWND CreateMessageWindow()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
    {
        return nullptr;
    }
    if (ends[0] >= EndLimit || ends[1] >= EndLimit)
    {
        close(ends[0]);
        close(ends[1]);
        return nullptr;
    }
    // Where the larger queue is refused, the usual one does.
    (void)fcntl(ends[1], F_SETPIPE_SZ, QueueBytes);
    return Handle(ends[0], ends[1]);
}

void DestroyMessageWindow(HWND window)
{
    if (window != nullptr)
    {
        close(WriteEnd(window));
        close(ReadEnd(window));
    }
}

bool WaitWindowMessage(HWND window, unsigned int milliseconds, WindowMessage& message)
{
    pollfd waited = {ReadEnd(window), POLLIN, 0};
    if (window == nullptr || poll(&waited, 1, static_cast<int>(milliseconds)) <= 0)
    {
        return false;
    }
    return read(waited.fd, &message, sizeof(message)) == static_cast<ssize_t>(sizeof(message));
}

} // namespace zeb::platform
