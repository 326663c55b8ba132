#include "platform/console.h"

#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <strings.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace zeb::platform
{
namespace
{

int Descriptor(OutputStream stream)
{
    return stream == OutputStream::Output ? STDOUT_FILENO : STDERR_FILENO;
}

} // namespace

void PrepareConsole() {}

bool IsTerminal(OutputStream stream)
{
    return isatty(Descriptor(stream)) != 0;
}

bool InputIsTerminal()
{
    return isatty(STDIN_FILENO) != 0;
}

bool EnableColors(OutputStream stream)
{
    const char* terminal = std::getenv("TERM");
    return IsTerminal(stream) && terminal != nullptr && *terminal != '\0';
}

int TerminalColumns(OutputStream stream)
{
    winsize size{};
    if (!IsTerminal(stream) || ioctl(Descriptor(stream), TIOCGWINSZ, &size) != 0)
    {
        return 0;
    }
    return size.ws_col;
}

bool OutputShowsUtf8()
{
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"})
    {
        const char* value = std::getenv(name);
        if (value == nullptr || !*value)
        {
            continue;
        }
        const char* dot = std::strchr(value, '.');
        return dot != nullptr && (strncasecmp(dot, ".utf-8", 6) == 0 || strncasecmp(dot, ".utf8", 5) == 0);
    }
    return false;
}

} // namespace zeb::platform
