// Threads of a library that may be unloaded.
#pragma once

namespace zeb::platform
{

/// A thread that runs this library's code. Threads: its owner calls it from one thread at a time.
class LibraryThread
{
public:
    LibraryThread() = default;
    LibraryThread(LibraryThread&& other) noexcept
        : m_thread(other.m_thread)
    {
        other.m_thread = nullptr;
    }
    LibraryThread(const LibraryThread&) = delete;
    LibraryThread& operator=(const LibraryThread&) = delete;

    /// Runs `body(argument)` on a new thread; the object holds none yet.
    /// @return false when the system gives no thread
    bool Start(void (*body)(void*), void* argument) noexcept;
    bool IsStarted() const { return m_thread != nullptr; }
    /// Gives the thread up; `body` has returned or is about to. After it the library may be unloaded: on Windows the
    /// thread itself keeps the library loaded to its end and is not waited for, since a thread cannot end while
    /// another one is inside the loader; elsewhere it is waited for.
    void End() noexcept;

private:
    void* m_thread = nullptr; // of the system
};

/// True when the process is ending and its other threads are gone, perhaps in the middle of what they held.
bool IsProcessEnding() noexcept;

} // namespace zeb::platform
