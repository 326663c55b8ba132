// A manual page made of a tool's help.
#pragma once

#include <map>
#include <string>

namespace CLI
{
class App;
}

namespace zeb::tools
{

/// The page in the language of man: every command with its arguments and options, exit codes, environment, files.
/// @param environment variables that this tool alone reads, and their meanings
std::string ManualPage(const CLI::App& app, const std::string& version,
                       const std::map<std::string, std::string>& environment);

} // namespace zeb::tools
