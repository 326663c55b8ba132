// The environment of the process, and files, in UTF-8 on both targets.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

namespace zeb::platform
{

/// A variable of the environment; empty when it is not set.
std::optional<std::string> EnvironmentVariable(const char* name);

/// Opens a file like std::fopen. @return null on failure; errno has the reason
std::FILE* OpenFile(const std::string& path, const char* mode);

} // namespace zeb::platform
