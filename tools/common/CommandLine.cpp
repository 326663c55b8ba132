#include "tools/common/CommandLine.h"

#include "tools/common/Failure.h"
#include "tools/common/Help.h"
#include "tools/common/Output.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

namespace zeb::tools
{
namespace
{

/// The innermost command selected by the arguments, as the user typed it.
struct ChosenCommand
{
    explicit ChosenCommand(const CLI::App& app)
        : command(&app)
        , name(app.get_name())
    {
        for (auto inner = app.get_subcommands(); !inner.empty(); inner = command->get_subcommands())
        {
            command = inner.front();
            name += " " + command->get_name();
        }
    }

    const CLI::App* command;
    std::string name;
};

std::string Quoted(const std::string& word)
{
    return "'" + Shortened(OneLine(ValidUtf8(word)), 60) + "'";
}

bool IsOption(const std::string& word)
{
    return word.size() > 1 && word.front() == '-';
}

/// The error text for the first superfluous argument.
std::string UnknownWord(const ChosenCommand& chosen, const std::string& word)
{
    const std::string command = "'" + chosen.name + "'";
    if (IsOption(word))
    {
        return command + " has no option " + Quoted(word);
    }
    if (chosen.command->get_require_subcommand_min() > 0)
    {
        return command + " has no command " + Quoted(word);
    }
    return command + " takes no further argument, such as " + Quoted(word);
}

/// The error text for missing required arguments; empty when none is missing.
std::string MissingArgument(const ChosenCommand& chosen)
{
    for (const CLI::Option* option : chosen.command->get_options())
    {
        if (option->get_required() && static_cast<int>(option->count()) < option->get_items_expected_min())
        {
            return "'" + chosen.name + "' needs " +
                   (option->get_positional() ? option->get_type_name() : option->get_name());
        }
    }
    return {};
}

/// "--limit: 1 required N missing": an option without its value.
std::string MissingValue(const std::string& text)
{
    const std::string option = text.substr(0, text.find(':'));
    return IsOption(option) && option.size() < text.size() ? option + " needs a value" : text;
}

std::string UsageText(const CLI::App& app, const CLI::ParseError& error)
{
    const ChosenCommand chosen(app);
    const std::vector<std::string> unknown = chosen.command->remaining();
    const bool needsCommand =
        chosen.command->get_require_subcommand_min() > 0 && chosen.command->get_subcommands().empty();
    std::string text;
    if (!unknown.empty() && (needsCommand || dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr))
    {
        text = UnknownWord(chosen, unknown.front());
    }
    else if (needsCommand)
    {
        text = "'" + chosen.name + "' needs a command";
    }
    else if (dynamic_cast<const CLI::RequiredError*>(&error) != nullptr)
    {
        text = MissingArgument(chosen);
    }
    else if (dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr)
    {
        text = MissingArgument(chosen);
        if (text.empty())
        {
            text = MissingValue(error.what());
        }
    }
    return (text.empty() ? OneLine(ValidUtf8(error.what())) : text) + "; see '" + chosen.name + " --help'";
}

} // namespace

Option Option::Required() const
{
    return Option(m_option->required());
}

Option Option::Type(const char* word) const
{
    return Option(m_option->type_name(word));
}

Option Option::Group(const char* heading) const
{
    return Option(m_option->group(heading));
}

Option Option::OneOf(std::initializer_list<const char*> words) const
{
    return Option(m_option->check(CLI::IsMember(std::vector<std::string>(words.begin(), words.end()))));
}

Option Option::Between(std::uint64_t least, std::uint64_t most) const
{
    return Option(m_option->check(CLI::Range(least, most)));
}

Option Option::Expect(int count) const
{
    return Option(m_option->expected(count));
}

Option Option::Expect(int least, int most) const
{
    return Option(m_option->expected(least, most));
}

Option Option::TakeAll() const
{
    return Option(m_option->take_all());
}

Option Option::OneValueEach() const
{
    return Option(m_option->allow_extra_args(false));
}

Option Option::ShowDefault() const
{
    return Option(m_option->capture_default_str());
}

Option Option::Excludes(const Option& other) const
{
    return Option(m_option->excludes(other.m_option));
}

Option Option::Excludes(const char* other) const
{
    return Option(m_option->excludes(other));
}

Command Command::AddCommand(const char* name, const char* help) const
{
    return {m_app->add_subcommand(name, help), m_chosen};
}

Option Command::AddOption(const char* name, std::string& value, const char* help) const
{
    return Option(m_app->add_option(name, value, help));
}

Option Command::AddOption(const char* name, std::vector<std::string>& values, const char* help) const
{
    return Option(m_app->add_option(name, values, help));
}

Option Command::AddOption(const char* name, ULONG& value, const char* help) const
{
    return Option(m_app->add_option(name, value, help));
}

Option Command::AddOption(const char* name, std::uint64_t& value, const char* help) const
{
    return Option(m_app->add_option(name, value, help));
}

Option Command::AddFlag(const char* name, bool& value, const char* help) const
{
    return Option(m_app->add_flag(name, value, help));
}

void Command::NeedsCommand() const
{
    m_app->require_subcommand(1);
}

void Command::Footer(const char* text) const
{
    m_app->footer(text);
}

void Command::Runs(std::function<int()> action) const
{
    m_app->callback([chosen = m_chosen, action = std::move(action)] { *chosen = action; });
}

CommandLine::CommandLine(const char* name, const char* help)
    : m_app(std::make_unique<CLI::App>(help, name))
{
    m_app->require_subcommand(1);
    m_app->formatter(std::make_shared<HelpFormatter>());
    m_app->allow_windows_style_options(false); // "/Inbox" is a folder on either system
    m_app->set_version_flag("--version", std::string(name) + " " + ZEB_VERSION);
}

CommandLine::~CommandLine() = default;

Command CommandLine::Root()
{
    return {m_app.get(), &m_chosen};
}

int CommandLine::Run(std::vector<std::string> arguments)
{
    try
    {
        std::reverse(arguments.begin(), arguments.end()); // as CLI11 takes them
        m_app->parse(std::move(arguments));
    }
    catch (const CLI::Success& success)
    {
        m_app->exit(success);
        return ExitDone;
    }
    catch (const CLI::ParseError& error)
    {
        Complain(m_app->get_name().c_str(), UsageText(*m_app, error));
        return ExitUsage;
    }
    return RunTool(m_app->get_name().c_str(), m_chosen);
}

} // namespace zeb::tools
