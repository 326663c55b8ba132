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

    /// Runs `body(argument)` on a new thread. REQUIRES: no thread is running. @return false when the system cannot
    /// create a thread
    bool Start(void (*body)(void*), void* argument) noexcept;
    bool IsStarted() const { return m_thread != nullptr; }
    /// Releases the thread; `body` has returned or is about to. After this call the library may be unloaded: on Windows
    /// the thread itself keeps the library loaded until it ends and is not joined, because a thread cannot end while
    /// another one is in the loader; elsewhere it is joined.
    void End() noexcept;

private:
    void* m_thread = nullptr; // of the system
};

/// True when the process is exiting and its other threads have been terminated, possibly while holding locks.
bool IsProcessEnding() noexcept;

} // namespace zeb::platform
