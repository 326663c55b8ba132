#include "platform/arguments.h"

#include "platform/text.h"

#include <shellapi.h>

namespace zeb::platform
{

std::vector<std::string> Arguments(int, char**)
{
    int count = 0;
    WCHAR** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> texts;
    for (int i = 1; arguments != nullptr && i < count; ++i)
    {
        texts.push_back(Utf8FromWide(arguments[i], WideLength(arguments[i])));
    }
    LocalFree(arguments);
    return texts;
}

} // namespace zeb::platform
