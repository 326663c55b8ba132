#include "platform/environment.h"

#include <cstdlib>

namespace zeb::platform
{

std::optional<std::string> EnvironmentVariable(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::FILE* OpenFile(const std::string& path, const char* mode)
{
    return std::fopen(path.c_str(), mode);
}

} // namespace zeb::platform
