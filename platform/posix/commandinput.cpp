#include "platform/commandinput.h"

#include <csignal>
#include <cstdio>
#include <sys/wait.h>

namespace zeb::platform
{
namespace
{

/// The shell's exit codes for a command that it cannot execute or does not find.
constexpr int NotExecutable = 126, NotFound = 127;

/// Takes a signal and does nothing. Not SIG_IGN, which the command would inherit.
class TakenSignal
{
public:
    explicit TakenSignal(int signal)
        : m_signal(signal)
    {
        struct sigaction action = {};
        action.sa_handler = [](int) {};
        action.sa_flags = SA_RESTART;
        sigaction(m_signal, &action, &m_before);
    }
    ~TakenSignal() { sigaction(m_signal, &m_before, nullptr); }
    TakenSignal(const TakenSignal&) = delete;
    TakenSignal& operator=(const TakenSignal&) = delete;

private:
    const int m_signal;
    struct sigaction m_before = {};
};

} // namespace

bool GiveToCommand(const std::string& command, const std::string& text)
{
    const TakenSignal interrupt(SIGINT);
    const TakenSignal closedPipe(SIGPIPE);
    FILE* pipe = popen(command.c_str(), "we");
    if (pipe == nullptr)
    {
        return false;
    }
    std::fwrite(text.data(), 1, text.size(), pipe);
    const int status = pclose(pipe);
    return !WIFEXITED(status) || (WEXITSTATUS(status) != NotExecutable && WEXITSTATUS(status) != NotFound);
}

} // namespace zeb::platform
