#include "tools/common/CommandLine.h"

#include "platform/environment.h"
#include "tools/common/Color.h"
#include "tools/common/Completion.h"
#include "tools/common/Help.h"
#include "tools/common/ManualPage.h"
#include "tools/common/Output.h"
#include "tools/common/Settings.h"

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
    if (text.empty())
    {
        // CLI11 leaves out the name of a hidden option, of which there is one.
        const std::string what = OneLine(ValidUtf8(error.what()));
        text = (what.compare(0, 2, ": ") == 0 ? "--color" : "") + what;
    }
    return text + "; see '" + chosen.name + " --help'";
}

/// The names of the selected command: "store", "check".
std::vector<std::string> CommandWords(const CLI::App& app)
{
    std::vector<std::string> words;
    const CLI::App* command = &app;
    for (auto inner = command->get_subcommands(); !inner.empty(); inner = command->get_subcommands())
    {
        command = inner.front();
        words.push_back(command->get_name());
    }
    return words;
}

bool HasOption(const CLI::App& app, const std::string& name, bool below)
{
    if (app.get_option_no_throw("--" + name) != nullptr)
    {
        return true;
    }
    const auto commands = app.get_subcommands([](const CLI::App*) { return true; });
    return below && std::any_of(commands.begin(), commands.end(),
                                [&](const CLI::App* each) { return HasOption(*each, name, true); });
}

/// @throws UsageError for a setting of a command or option that does not exist
void RequireKnown(const CLI::App& app, const Setting& setting, const std::string& where)
{
    const CLI::App* command = &app;
    std::string section;
    for (const std::string& word : setting.command)
    {
        section += (section.empty() ? "" : ".") + word;
        const auto inner = command->get_subcommands([&](const CLI::App* each) { return each->get_name() == word; });
        if (inner.empty())
        {
            throw UsageError(where + ": there is no command " + Quoted(section));
        }
        command = inner.front();
    }
    if (!HasOption(*command, setting.name, setting.command.empty()))
    {
        throw UsageError(where + ": " + (section.empty() ? "no command" : "'" + section + "'") + " has " +
                         (section.empty() ? "an" : "no") + " option " + Quoted("--" + setting.name));
    }
}

/// Gives an option its value unless the command line did, or one that excludes it.
/// @throws UsageError for a value that it does not take
void ApplySetting(CLI::App& command, const Setting& setting, const std::string& where)
{
    CLI::Option* option = command.get_option_no_throw("--" + setting.name);
    if (option == nullptr || option->count() != 0)
    {
        return;
    }
    for (const CLI::Option* other : option->get_excludes())
    {
        if (other->count() != 0)
        {
            return;
        }
    }
    try
    {
        option->add_result(setting.values);
        option->run_callback();
    }
    catch (const CLI::ParseError& error)
    {
        throw UsageError(where + ": " + setting.name + ": " + OneLine(ValidUtf8(error.what())));
    }
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

void Command::RunsAlone() const
{
    m_app->require_subcommand(0, 1);
}

void Command::Footer(const char* text) const
{
    m_app->footer(text);
}

void Command::Runs(std::function<int()> action) const
{
    m_app->require_subcommand(0); // a tool that does one thing has no commands
    m_app->callback([app = m_app, chosen = m_chosen, action = std::move(action)]
    {
        if (app->get_subcommands().empty())
        {
            *chosen = action;
        }
    });
}

CommandLine::CommandLine(const char* name, const char* help)
    : m_app(std::make_unique<CLI::App>(help, name))
{
    m_app->require_subcommand(1);
    m_app->formatter(std::make_shared<HelpFormatter>());
    m_app->allow_windows_style_options(false); // "/Inbox" is a folder on either system
    m_report = [name](const ToolFailure& failure, bool) { ComplainOf(name, failure); };
    m_app->set_version_flag("--version", [this, name]
    { return std::string(name) + " " + ZEB_VERSION + (m_versionDetails ? "\n" + m_versionDetails() : ""); });
}

CommandLine::~CommandLine() = default;

Command CommandLine::Root()
{
    return {m_app.get(), &m_chosen};
}

void CommandLine::OnFailure(std::function<void(const ToolFailure& failure, bool json)> report)
{
    m_report = std::move(report);
}

void CommandLine::DescribeVersion(std::function<std::string()> details)
{
    m_versionDetails = std::move(details);
}

void CommandLine::AddShellCommands(
    std::function<std::vector<std::string>(const std::string& kind, const std::string& profile)> candidates)
{
    const auto shell = std::make_shared<std::string>();
    Command script = Root().AddCommand("completion", "Prints a script that completes command lines in a shell");
    script.AddOption("shell", *shell, "bash, zsh or powershell")
        .Required()
        .OneOf({"bash", "zsh", "powershell"})
        .Type("SHELL");
    script.Runs([this, shell]
    {
        Print(CompletionScript(m_app->get_name(), *shell));
        return ExitDone;
    });

    const auto words = std::make_shared<std::vector<std::string>>();
    CLI::App* complete = m_app->add_subcommand("complete", "Prints the completions of a command line, for the shells");
    complete->group("");
    Command(complete, &m_chosen).AddOption("words", *words, "The words; the last one is completed");
    Command(complete, &m_chosen)
        .Runs([this, words, candidates = std::move(candidates)]
    {
        for (const Completion& each : CompletionsOf(*m_app, *words, candidates))
        {
            Print(each.text + (each.help.empty() ? "" : "\t" + each.help) + "\n");
        }
        return ExitDone;
    });
}

void CommandLine::AddManualPage(std::map<std::string, std::string> environment)
{
    CLI::App* page = m_app->add_subcommand("man", "Prints the manual page");
    page->group("");
    Command(page, &m_chosen)
        .Runs([this, environment = std::move(environment)]
    {
        Print(ManualPage(*m_app, ZEB_VERSION, environment));
        return ExitDone;
    });
}

/// Adds --color, hidden but for the tool itself.
void CommandLine::AddColorOption(CLI::App& app)
{
    const bool isTool = &app == m_app.get();
    for (CLI::App* command : app.get_subcommands([](CLI::App*) { return true; }))
    {
        AddColorOption(*command);
    }
    if (isTool || app.get_subcommands([](CLI::App*) { return true; }).empty())
    {
        app.add_option("--color", m_color, "Colours: auto (on a terminal, unless NO_COLOR is set), always or never")
            ->check(CLI::IsMember({"auto", "always", "never"}))
            ->type_name("WHEN")
            ->group(isTool ? "Options" : "");
    }
}

void CommandLine::ApplySettings()
{
    const ChosenCommand chosen(*m_app);
    const std::string name = m_app->get_name();
    CLI::App* command = const_cast<CLI::App*>(chosen.command);
    if (const std::string profile = platform::EnvironmentVariable("ZEB_PROFILE").value_or(""); !profile.empty())
    {
        ApplySetting(*command, {{}, "profile", {profile}}, "ZEB_PROFILE");
    }
    const std::string file = SettingsFileOf(name);
    const std::vector<std::string> words = CommandWords(*m_app);
    std::vector<Setting> settings = ReadSettings(file);
    // Those of the command itself before those of all.
    std::stable_partition(settings.begin(), settings.end(), [](const Setting& each) { return !each.command.empty(); });
    for (const Setting& setting : settings)
    {
        const std::string where = "settings file '" + ValidUtf8(file) + "'";
        RequireKnown(*m_app, setting, where);
        if (setting.command.empty() || setting.command == words)
        {
            ApplySetting(*command, setting, where);
        }
    }
}

int CommandLine::Run(std::vector<std::string> arguments)
{
    const bool json = std::find(arguments.begin(), arguments.end(), "--json") != arguments.end();
    const auto report = [&](const ToolFailure& failure) { m_report(failure, json); };
    AddColorOption(*m_app);
    try
    {
        std::reverse(arguments.begin(), arguments.end()); // as CLI11 takes them
        m_app->parse(std::move(arguments));
        ApplySettings();
        ChooseColors(m_color);
    }
    catch (const CLI::Success& success)
    {
        m_app->exit(success);
        return ExitDone;
    }
    catch (const CLI::ParseError& error)
    {
        report({UsageText(*m_app, error), ExitUsage, 0});
        return ExitUsage;
    }
    catch (const UsageError& error)
    {
        report({error.what(), ExitUsage, 0});
        return ExitUsage;
    }
    return RunTool(report, m_chosen);
}

} // namespace zeb::tools
