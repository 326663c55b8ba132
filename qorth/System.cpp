#include "qorth/System.h"

#include <cstring>

namespace
{

bool IsSeparator(char character)
{
    return character == '\\' || character == '/';
}

} // namespace

#ifdef _WIN32

#include "platform/mapi.h"

bool QorIsNTRunning()
{
    return (GetVersion() & 0x80000000u) == 0;
}

bool QorIsWinVistaorHigher()
{
    return QorIsNTRunning() && (GetVersion() & 0xFFu) >= 6;
}

#else

bool QorIsNTRunning()
{
    return true;
}

bool QorIsWinVistaorHigher()
{
    return true;
}

#endif

CStringA QorGetFilePath(const char* path)
{
    size_t length = path == nullptr ? 0 : std::strlen(path);
    while (length > 0 && !IsSeparator(path[length - 1]))
    {
        --length;
    }
    return CStringA(path, static_cast<int>(length) - (length > 0 ? 1 : 0));
}

CStringA QorCheckLastSlash(const char* path)
{
    size_t length = path == nullptr ? 0 : std::strlen(path);
    if (length == 0)
    {
        return CStringA();
    }
    while (length > 0 && IsSeparator(path[length - 1]))
    {
        --length;
    }
    return CStringA(path, static_cast<int>(length)) + "\\";
}
