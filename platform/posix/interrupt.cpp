#include "platform/interrupt.h"

#include <atomic>
#include <csignal>
#include <initializer_list>

namespace zeb::platform
{
namespace
{

std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

void Note(int)
{
    interrupted = true;
}

} // namespace

void CatchInterrupt()
{
    struct sigaction action = {};
    action.sa_handler = Note;
    for (const int signal : {SIGINT, SIGTERM})
        sigaction(signal, &action, nullptr);
}

bool Interrupted()
{
    return interrupted;
}

} // namespace zeb::platform
