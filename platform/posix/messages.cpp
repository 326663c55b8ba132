#include "platform/messages.h"

#include <cstdint>
#include <initializer_list>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace zeb::platform
{
namespace
{

// A queue is a pipe, so every binary of the process can use it. The handle contains both file descriptors and, in the
// upper bits, the pipe's inode number, because descriptors are reused after the window is destroyed.
constexpr unsigned int EndBits = 16;
constexpr int EndLimit = 1 << EndBits;
constexpr unsigned int InodeShift = 2 * EndBits;
constexpr int QueueBytes = 1 << 20;

/// The inode number of a pipe, truncated to the bits of a handle; 0 when the descriptor is not a pipe.
std::uint32_t PipeNumber(int end)
{
    struct stat status = {};
    return fstat(end, &status) == 0 && S_ISFIFO(status.st_mode) ? static_cast<std::uint32_t>(status.st_ino) : 0;
}

HWND Handle(int readEnd, int writeEnd, std::uint32_t number)
{
    return reinterpret_cast<HWND>((static_cast<std::uintptr_t>(number) << InodeShift) |
                                  (static_cast<std::uintptr_t>(readEnd) << EndBits) |
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

/// Whether a descriptor belongs to the window's pipe.
bool IsOwn(HWND window, int end)
{
    const std::uint32_t number = PipeNumber(end);
    return number != 0 && number == static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(window) >> InodeShift);
}

void Close(int end)
{
    if (end >= 0)
    {
        close(end);
    }
}

} // namespace

bool PostWindowMessage(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    // Duplicates for this call: the window's descriptors may be closed and reused between the check and the write.
    // Without a reader the write would raise SIGPIPE.
    const int reader = fcntl(ReadEnd(window), F_DUPFD_CLOEXEC, 0);
    const int writer = fcntl(WriteEnd(window), F_DUPFD_CLOEXEC, 0);
    const WindowMessage posted = {message, wParam, lParam};
    const bool taken = IsOwn(window, reader) && IsOwn(window, writer) &&
                       write(writer, &posted, sizeof(posted)) == static_cast<ssize_t>(sizeof(posted));
    Close(reader);
    Close(writer);
    return taken;
}

HWND CreateMessageWindow()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
    {
        return nullptr;
    }
    const std::uint32_t number = PipeNumber(ends[0]);
    if (ends[0] >= EndLimit || ends[1] >= EndLimit || number == 0)
    {
        close(ends[0]);
        close(ends[1]);
        return nullptr;
    }
    // When the larger queue is refused, the default size is used.
    (void)fcntl(ends[1], F_SETPIPE_SZ, QueueBytes);
    return Handle(ends[0], ends[1], number);
}

void DestroyMessageWindow(HWND window)
{
    for (const int end : {WriteEnd(window), ReadEnd(window)})
    {
        if (IsOwn(window, end))
        {
            close(end);
        }
    }
}

bool WaitWindowMessage(HWND window, unsigned int milliseconds, WindowMessage& message)
{
    pollfd waited = {ReadEnd(window), POLLIN, 0};
    if (!IsOwn(window, waited.fd) || poll(&waited, 1, static_cast<int>(milliseconds)) <= 0)
    {
        return false;
    }
    return read(waited.fd, &message, sizeof(message)) == static_cast<ssize_t>(sizeof(message));
}

} // namespace zeb::platform
