#include "platform/thread.h"

#include <new>
#include <thread>

namespace zeb::platform
{

bool LibraryThread::Start(void (*body)(void*), void* argument) noexcept
try
{
    m_thread = new std::thread(body, argument);
    return true;
}
catch (...)
{
    return false;
}

void LibraryThread::End() noexcept
{
    auto* const thread = static_cast<std::thread*>(m_thread);
    m_thread = nullptr;
    if (thread == nullptr)
    {
        return;
    }
    thread->join();
    delete thread;
}

bool IsProcessEnding() noexcept
{
    // Exit functions run while other threads are still running.
    return false;
}

} // namespace zeb::platform
