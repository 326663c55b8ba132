#include "platform/console.h"

#include "platform/mapi.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>

namespace zeb::platform
{
namespace
{

HANDLE Handle(OutputStream stream)
{
    return GetStdHandle(stream == OutputStream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

} // namespace

void PrepareConsole()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    if (IsTerminal(OutputStream::Output) || IsTerminal(OutputStream::Error))
        SetConsoleOutputCP(CP_UTF8);
}

bool IsTerminal(OutputStream stream)
{
    DWORD mode = 0;
    return GetConsoleMode(Handle(stream), &mode) != 0;
}

bool InputIsTerminal()
{
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_INPUT_HANDLE), &mode) != 0;
}

int TerminalColumns(OutputStream stream)
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(Handle(stream), &info))
        return 0;
    return info.srWindow.Right - info.srWindow.Left + 1;
}

bool OutputShowsUtf8()
{
    return IsTerminal(OutputStream::Output);
}

} // namespace zeb::platform
