#include "tests/support/ChildProcess.h"

#include "platform/mapi.h"
#include "platform/module.h"
#include "platform/text.h"

namespace zeb::test
{

namespace
{

constexpr UINT Killed = 9;

HANDLE HandleOf(long long process)
{
    return reinterpret_cast<HANDLE>(static_cast<std::intptr_t>(process));
}

} // namespace

ChildProcess::ChildProcess(const std::string& program, const std::vector<std::string>& arguments)
{
    std::string line = "\"" + platform::OwnFolder() + program + "\"";
    for (const std::string& each : arguments)
    {
        line += " \"" + each + "\"";
    }
    platform::WideString wide = platform::WideFromUtf8(line.data(), line.size());
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION started{};
    if (CreateProcessW(nullptr, &wide[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &started))
    {
        CloseHandle(started.hThread);
        m_process = static_cast<long long>(reinterpret_cast<std::intptr_t>(started.hProcess));
    }
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
    const HANDLE process = HandleOf(m_process);
    TerminateProcess(process, Killed);
    WaitForSingleObject(process, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    m_process = 0;
    return code == Killed;
}

} // namespace zeb::test
