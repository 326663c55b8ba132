#include "platform/console.h"

#include "platform/mapi.h"

#include <cstdio>
#include <cstdlib>
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

/// The console's code pages at program start; 0 without a console.
UINT outputBefore = 0, inputBefore = 0;

void RestoreConsole()
{
    if (outputBefore != 0)
    {
        SetConsoleOutputCP(outputBefore);
    }
    if (inputBefore != 0)
    {
        SetConsoleCP(inputBefore);
    }
}

} // namespace

void PrepareConsole()
{
    _setmode(_fileno(stdout), _O_BINARY);
    _setmode(_fileno(stderr), _O_BINARY);
    _setmode(_fileno(stdin), _O_BINARY);
    // The code pages belong to the console and outlive the program, so they are restored.
    outputBefore = GetConsoleOutputCP();
    inputBefore = GetConsoleCP();
    if (outputBefore == 0 && inputBefore == 0)
    {
        return;
    }
    SetConsoleOutputCP(CP_UTF8);
    SetConsoleCP(CP_UTF8);
    std::atexit(RestoreConsole);
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

bool EnableColors(OutputStream stream)
{
    DWORD mode = 0;
    return GetConsoleMode(Handle(stream), &mode) &&
           SetConsoleMode(Handle(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

int TerminalColumns(OutputStream stream)
{
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (!GetConsoleScreenBufferInfo(Handle(stream), &info))
    {
        return 0;
    }
    return info.srWindow.Right - info.srWindow.Left + 1;
}

bool OutputShowsUtf8()
{
    return IsTerminal(OutputStream::Output);
}

} // namespace zeb::platform
