// What the command lines of all tools have in common.
#pragma once

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace zeb::tools
{

/// Gives a command line the help and the --version that every tool has, and lets paths begin with a slash.
void PrepareCommandLine(CLI::App& app);

/// Reads UTF-8 arguments. Prints the help or the version when they ask for it, and on standard error one sentence about
/// what is wrong with them.
/// @return the exit code to end with, or nothing when the chosen command is to run
std::optional<int> ReadCommandLine(CLI::App& app, std::vector<std::string> arguments);

} // namespace zeb::tools
