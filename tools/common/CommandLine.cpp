#include "tools/common/CommandLine.h"

#include "tools/common/Failure.h"
#include "tools/common/Help.h"
#include "tools/common/Output.h"

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
    if (!unknown.empty() && (needsCommand || dynamic_cast<const CLI::ExtrasError*>(&error)))
    {
        text = UnknownWord(chosen, unknown.front());
    }
    else if (needsCommand)
    {
        text = "'" + chosen.name + "' needs a command";
    }
    else if (dynamic_cast<const CLI::RequiredError*>(&error))
    {
        text = MissingArgument(chosen);
    }
    else if (dynamic_cast<const CLI::ArgumentMismatch*>(&error))
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

void PrepareCommandLine(CLI::App& app)
{
    app.require_subcommand(1);
    app.formatter(std::make_shared<HelpFormatter>());
    app.allow_windows_style_options(false); // "/Inbox" is a folder on either system
    app.set_version_flag("--version", app.get_name() + " " + ZEB_VERSION);
}

std::optional<int> ReadCommandLine(CLI::App& app, std::vector<std::string> arguments)
{
    try
    {
        std::reverse(arguments.begin(), arguments.end()); // as CLI11 takes them
        app.parse(std::move(arguments));
        return std::nullopt;
    }
    catch (const CLI::Success& success)
    {
        app.exit(success);
        return ExitDone;
    }
    catch (const CLI::ParseError& error)
    {
        Complain(app.get_name().c_str(), UsageText(app, error));
        return ExitUsage;
    }
}

} // namespace zeb::tools
