#include "tests/support/ChildProcess.h"

#include "platform/module.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace zeb::test
{

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
{
    const std::string path = platform::OwnFolder() + program;
    std::vector<char*> list = {const_cast<char*>(path.c_str())};
    for (const std::string& each : arguments)
    {
        list.push_back(const_cast<char*>(each.c_str()));
    }
    list.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0)
    {
        execv(path.c_str(), list.data());
        _exit(127);
    }
    m_process = child > 0 ? child : 0;
}

ChildProcess::~ChildProcess()
{
    Kill();
}

bool ChildProcess::Kill()
{
    if (m_process == 0)
    {
        return false;
    }
    kill(static_cast<pid_t>(m_process), SIGKILL);
    int status = 0;
    waitpid(static_cast<pid_t>(m_process), &status, 0);
    m_process = 0;
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL;
}

} // namespace zeb::test
