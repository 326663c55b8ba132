#include "platform/environment.h"

#include "platform/text.h"

namespace zeb::platform
{
namespace
{

WideString Wide(const std::string& text)
{
    return WideFromUtf8(text.data(), text.size());
}

} // namespace

std::optional<std::string> EnvironmentVariable(const char* name)
{
    const WideString wideName = Wide(name);
    WideString value(256, L'\0');
    for (;;)
    {
        // The result is 0 for an empty value and for a missing variable.
        SetLastError(ERROR_SUCCESS);
        const DWORD length = GetEnvironmentVariableW(wideName.c_str(), value.data(), static_cast<DWORD>(value.size()));
        if (length == 0 && GetLastError() != ERROR_SUCCESS)
        {
            return std::nullopt;
        }
        if (length < value.size())
        {
            return Utf8FromWide(value.data(), length);
        }
        value.resize(length);
    }
}

std::string SettingsFolder()
{
    return EnvironmentVariable("APPDATA").value_or("");
}

std::FILE* OpenFile(const std::string& path, const char* mode)
{
    return _wfopen(Wide(path).c_str(), Wide(mode).c_str());
}

} // namespace zeb::platform
