// The environment of the process, and files, in UTF-8 on both targets.
#pragma once

#include <cstdio>
#include <optional>
#include <string>

namespace zeb::platform
{

/// A variable of the environment; empty when it is not set.
std::optional<std::string> EnvironmentVariable(const char* name);

/// The folder of the user's settings, in which each program has a folder of its own; empty when there is none.
std::string SettingsFolder();

/// Opens a file like std::fopen. @return null on failure; errno has the reason
std::FILE* OpenFile(const std::string& path, const char* mode);

} // namespace zeb::platform
