// The command line of a tool: its commands, their options, and what runs. Commands need no header of the parser.
#pragma once

#include "platform/mapi.h"
#include "tools/common/Failure.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace CLI
{
class App;
class Option;
} // namespace CLI

namespace zeb::tools
{

/// An option or argument of a command. A handle: valid as long as its command line.
class Option
{
public:
    explicit Option(CLI::Option* option)
        : m_option(option)
    {
    }

    Option Required() const;
    /// The word for its value in the help.
    Option Type(const char* word) const;
    /// The heading above it in the help.
    Option Group(const char* heading) const;
    Option OneOf(std::initializer_list<const char*> words) const;
    Option Between(std::uint64_t least, std::uint64_t most) const;
    /// How many values it takes.
    Option Expect(int count) const;
    Option Expect(int least, int most) const;
    /// Given several times, it has the values of all.
    Option TakeAll() const;
    /// Each time it is given it takes one value.
    Option OneValueEach() const;
    /// The help shows the value that the variable has now.
    Option ShowDefault() const;
    Option Excludes(const Option& other) const;
    Option Excludes(const char* other) const;

private:
    CLI::Option* m_option;
};

/// A command, or the tool itself. A handle: valid as long as its command line.
class Command
{
public:
    /// @param chosen where the action of the selected command is put
    Command(CLI::App* app, std::function<int()>* chosen)
        : m_app(app)
        , m_chosen(chosen)
    {
    }

    Command AddCommand(const char* name, const char* help) const;
    /// An option ("--name", "-n,--name") or an argument ("name"); its value is put into the variable.
    Option AddOption(const char* name, std::string& value, const char* help) const;
    Option AddOption(const char* name, std::vector<std::string>& values, const char* help) const;
    Option AddOption(const char* name, ULONG& value, const char* help) const;
    Option AddOption(const char* name, std::uint64_t& value, const char* help) const;
    Option AddFlag(const char* name, bool& value, const char* help) const;
    /// One of its commands must be given.
    void NeedsCommand() const;
    /// It also runs without one of its commands; the tool itself otherwise needs one.
    void RunsAlone() const;
    /// Text below the help.
    void Footer(const char* text) const;
    /// What the command does when none of its commands is given; returns the exit code.
    void Runs(std::function<int()> action) const;

private:
    CLI::App* m_app;
    std::function<int()>* m_chosen;
};

/// The whole command line of a tool, with --help and --version. Paths may begin with a slash.
class CommandLine
{
public:
    CommandLine(const char* name, const char* help);
    ~CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    Command Root();

    /// How failures are printed; without it as "tool: failure" on standard error.
    /// @param report called with the failure and whether the command has the option --json
    void OnFailure(std::function<void(const ToolFailure& failure, bool json)> report);

    /// What --version prints below the first line, each line with its line end.
    void DescribeVersion(std::function<std::string()> details);

    /// Adds the hidden command "man", which prints the manual page.
    /// @param environment variables that this tool alone reads, and their meanings
    void AddManualPage(std::map<std::string, std::string> environment = {});

    /// Adds the command "completion" (a shell's script), and the hidden one "complete" (which the scripts call).
    /// @param candidates returns values for a kind of argument, "FOLDER", "PROFILE" ..., in a profile (empty: the default
    /// one)
    void AddShellCommands(
        std::function<std::vector<std::string>(const std::string& kind, const std::string& profile)> candidates);

    /// Reads UTF-8 arguments, then the settings (see Settings.h) for options that are not given, and runs the selected
    /// command. Prints the help or the version on request; on a usage error
    /// prints one sentence to standard error. @return the exit code
    int Run(std::vector<std::string> arguments);

private:
    void AddColorOption(CLI::App& app);
    void ApplySettings();

    std::unique_ptr<CLI::App> m_app;
    std::function<int()> m_chosen;
    std::function<std::string()> m_versionDetails;
    std::string m_color;
    std::function<void(const ToolFailure& failure, bool json)> m_report;
};

} // namespace zeb::tools
