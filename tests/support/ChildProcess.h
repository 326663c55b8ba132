// Another process of a test, which may be killed.
#pragma once

#include <string>
#include <vector>

namespace zeb::test
{

/// Starts a program of the folder of this one. The destructor kills it, if it still runs, and waits for its end.
class ChildProcess
{
public:
    /// @param program its file name @param arguments UTF-8, without quotation marks
    ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Ends it at once, wherever it is, as the system does with SIGKILL or TerminateProcess; returns when it has ended.
    /// @return false when it had ended by itself
    bool Kill();
    bool IsStarted() const { return m_process != 0; }

private:
    /// A process identifier on Linux, a handle on Windows; 0 when it was not started or has been waited for.
    long long m_process = 0;
};

} // namespace zeb::test
