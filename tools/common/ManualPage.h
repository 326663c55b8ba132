// A manual page made of a tool's help.
#pragma once

#include <string>

namespace CLI
{
class App;
}

namespace zeb::tools
{

/// The page in the language of man: every command with its arguments and options, exit codes, environment, files.
std::string ManualPage(const CLI::App& app, const std::string& version);

} // namespace zeb::tools
