// FGetComponentPath of the stub: returns the file that the variable ZEB_TEST_COMPONENT names.
#include "platform/export.h"
#include "platform/mapi.h"

#include <cstdlib>
#include <cstring>

extern "C" ZEBAPI_EXPORT BOOL WINAPI FGetComponentPath(LPSTR, LPSTR, LPSTR path, DWORD size, BOOL)
{
    const char* file = std::getenv("ZEB_TEST_COMPONENT");
    if (file == nullptr || std::strlen(file) >= size)
    {
        return FALSE;
    }
    std::memcpy(path, file, std::strlen(file) + 1);
    return TRUE;
}
