#include "zebstore/base/LastError.h"

#include "zebstore/base/Locks.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <thread>

namespace zebstore
{

namespace
{

// Kept in a ring and not in thread-local storage: a library with thread-local objects cannot be unloaded
// safely while the threads that called it live on.
struct LastError
{
    std::thread::id thread;
    HRESULT code = S_OK;
    std::string text;
};

struct Errors
{
    MutexOf<lockorder::Errors> lock;
    std::array<LastError, 64> ring;
    size_t next = 0;
};

// Calls may come after the library's own objects were destroyed; they find no texts then.
std::atomic<bool> g_errorsGone{false};

struct ErrorsHolder
{
    Errors errors;
    ~ErrorsHolder() { g_errorsGone = true; }
};
ErrorsHolder g_errors;

LastError* FindErrorOfThisThread()
{
    const std::thread::id self = std::this_thread::get_id();
    std::array<LastError, 64>& ring = g_errors.errors.ring;
    const auto found =
        std::find_if(ring.begin(), ring.end(), [&](const LastError& each) { return each.thread == self; });
    return found == ring.end() ? nullptr : &*found;
}

} // namespace

void RememberError(HRESULT code, const char* text) noexcept
{
    if (g_errorsGone)
    {
        return;
    }
    try
    {
        std::string copy(text);
        Errors& errors = g_errors.errors;
        const std::lock_guard hold(errors.lock);
        LastError* error = FindErrorOfThisThread();
        if (error == nullptr)
        {
            error = &errors.ring[errors.next];
            errors.next = (errors.next + 1) % errors.ring.size();
            error->thread = std::this_thread::get_id();
        }
        error->code = code;
        error->text.swap(copy);
    }
    catch (...)
    {
        // Without memory for the text only the code is given.
    }
}

void ForgetErrorText(HRESULT code) noexcept
{
    if (g_errorsGone)
    {
        return;
    }
    const std::lock_guard hold(g_errors.errors.lock);
    LastError* error = FindErrorOfThisThread();
    if (error != nullptr && error->code == code)
    {
        error->code = S_OK;
    }
}

std::string LastErrorText(HRESULT code)
{
    if (g_errorsGone)
    {
        return {};
    }
    const std::lock_guard hold(g_errors.errors.lock);
    const LastError* error = FindErrorOfThisThread();
    return error != nullptr && error->code == code ? error->text : std::string();
}

} // namespace zebstore
