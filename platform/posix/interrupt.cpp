#include "platform/interrupt.h"

#include <atomic>
#include <csignal>
#include <cstring>
#include <initializer_list>

#include <unistd.h>

namespace zeb::platform
{
namespace
{

std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler writes it");

void Note(int)
{
    g_interrupted = true;
}

std::atomic<const char*> g_lastWords{nullptr};
static_assert(std::atomic<const char*>::is_always_lock_free, "a signal handler reads it");

/// Only async-signal-safe calls.
void End(int)
{
    const char* text = g_lastWords;
    if (write(STDERR_FILENO, text, std::strlen(text)) < 0)
    {
        // The process ends without the message.
    }
    _exit(1);
}

void Handle(void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    for (const int signal : {SIGINT, SIGTERM})
    {
        sigaction(signal, &action, nullptr);
    }
}

} // namespace

void EndOnInterrupt(const char* text)
{
    g_lastWords = text;
    Handle(End);
}

void CatchInterrupt()
{
    Handle(Note);
}

bool Interrupted()
{
    return g_interrupted;
}

} // namespace zeb::platform
