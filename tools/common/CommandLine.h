// The common part of all tools' command lines.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// Adds --help and --version, and allows paths that begin with a slash.
void PrepareCommandLine(CLI::App& app);

/// Reads UTF-8 arguments. Prints the help or the version on request; on a usage error prints one sentence to standard
/// error. @return the exit code; empty when the selected command should run
std::optional<int> ReadCommandLine(CLI::App& app, std::vector<std::string> arguments);

} // namespace zeb::tools
