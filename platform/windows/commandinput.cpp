#include "platform/commandinput.h"

#include "platform/text.h"

#include <cstdio>

namespace zeb::platform
{
namespace
{

/// The exit codes of cmd.exe for a command that it does not find.
constexpr int Failed = 1, NotFound = 9009;

BOOL WINAPI TakeInterrupt(DWORD event)
{
    return event == CTRL_C_EVENT;
}

} // namespace

bool GiveToCommand(const std::string& command, const std::string& text)
{
    SetConsoleCtrlHandler(TakeInterrupt, TRUE);
    int status = Failed;
    if (FILE* pipe = _wpopen(WideFromUtf8(command.data(), command.size()).c_str(), L"wb"))
    {
        std::fwrite(text.data(), 1, text.size(), pipe);
        status = _pclose(pipe);
    }
    SetConsoleCtrlHandler(TakeInterrupt, FALSE);
    return status != Failed && status != NotFound;
}

} // namespace zeb::platform
