// Completion of command lines in shells.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace CLI
{
class App;
}

namespace zeb::tools
{

/// A candidate for the last word of a command line.
struct Completion
{
    std::string text; ///< FileMark: names of files, which the shell knows
    std::string help;
};

constexpr const char* FileMark = ":files";

/// Returns values for a kind of argument ("FOLDER", "PROFILE") in a profile. An exception means none.
using Candidates = std::function<std::vector<std::string>(const std::string& kind, const std::string& profile)>;

/// What may be in place of the last word, which may be empty.
std::vector<Completion> CompletionsOf(const CLI::App& app, const std::vector<std::string>& words,
                                      const Candidates& candidates);

/// The script for a shell: "bash", "zsh" or "powershell".
std::string CompletionScript(const std::string& tool, const std::string& shell);

} // namespace zeb::tools
