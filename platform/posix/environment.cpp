#include "platform/environment.h"

#include <cstdlib>

namespace zeb::platform
{

std::optional<std::string> EnvironmentVariable(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::string SettingsFolder()
{
    const std::string folder = EnvironmentVariable("XDG_CONFIG_HOME").value_or("");
    const std::string home = EnvironmentVariable("HOME").value_or("");
    return folder.empty() && !home.empty() ? home + "/.config" : folder;
}

std::FILE* OpenFile(const std::string& path, const char* mode)
{
    return std::fopen(path.c_str(), mode);
}

} // namespace zeb::platform
