#include "tools/common/ManualPage.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cctype>

namespace zeb::tools
{
namespace
{

/// Text for man: its own control characters escaped.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text)
    {
        if (c == '\\')
        {
            escaped += "\\e";
        }
        else if (c == '-')
        {
            escaped += "\\-";
        }
        else
        {
            // A line that begins with a dot or an apostrophe would be a request.
            escaped += (c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n') ? "\\&" : "";
            escaped += c;
        }
    }
    return escaped;
}

std::string Bold(const std::string& text)
{
    return "\\fB" + Escaped(text) + "\\fR";
}

std::string Item(const std::string& head, const std::string& text)
{
    return ".TP\n" + head + "\n" + Escaped(text) + "\n";
}

/// "N" of "N:UINT in [1 - 9]", "a|b" of "TEXT:{a,b}"; empty for a flag.
std::string ValueOf(const CLI::Option& option)
{
    const std::string type = option.get_items_expected_max() == 0 ? "" : option.get_type_name();
    const size_t words = type.find('{');
    if (words == std::string::npos)
    {
        return type.substr(0, type.find(':'));
    }
    std::string choice = type.substr(words + 1, type.find('}') - words - 1);
    std::replace(choice.begin(), choice.end(), ',', '|');
    return choice;
}

std::string OptionItem(const CLI::Option& option)
{
    if (option.get_positional())
    {
        return Item("\\fI" + Escaped(ValueOf(option)) + "\\fR", option.get_description());
    }
    const std::string value = ValueOf(option);
    return Item(Bold(option.get_name(false, true)) + (value.empty() ? "" : " \\fI" + Escaped(value) + "\\fR"),
                option.get_description());
}

std::string Usage(const CLI::App& command, const std::string& name)
{
    std::string usage = Bold(name);
    for (const CLI::Option* option :
         command.get_options([](const CLI::Option* each) { return each->get_positional(); }))
    {
        const std::string value = "\\fI" + Escaped(ValueOf(*option)) + "\\fR";
        usage += " " + (option->get_required() ? value : "[" + value + "]");
    }
    return usage + " [options]";
}

void AddCommandItems(std::string& page, const CLI::App& command, const std::string& name)
{
    const auto inner = command.get_subcommands([](const CLI::App* each) { return !each->get_group().empty(); });
    if (inner.empty())
    {
        page += ".SS " + Usage(command, name) + "\n" + Escaped(command.get_description()) + ".\n";
        for (const CLI::Option* option : command.get_options())
        {
            page += option->get_group().empty() || option->check_name("--help") ? "" : OptionItem(*option);
        }
        page += command.get_footer().empty() ? "" : ".PP\n" + Escaped(command.get_footer()) + "\n";
    }
    for (const CLI::App* each : inner)
    {
        AddCommandItems(page, *each, name + " " + each->get_name());
    }
}

/// "imports mail" of "Imports mail."
std::string Purpose(const CLI::App& app)
{
    std::string purpose = app.get_description();
    purpose.pop_back();
    purpose[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(purpose[0])));
    return purpose;
}

} // namespace

std::string ManualPage(const CLI::App& app, const std::string& version,
                       const std::map<std::string, std::string>& environment)
{
    const std::string& name = app.get_name();
    const bool runsAlone = !app.get_options([](const CLI::Option* each) { return each->get_positional(); }).empty();
    std::string upper = name;
    std::transform(upper.begin(), upper.end(), upper.begin(), [](char c) { return c >= 'a' && c <= 'z' ? c - 32 : c; });
    std::string page = ".TH " + upper + " 1 \"\" \"ZebAPI " + version + "\" \"User Commands\"\n";
    page += ".SH NAME\n" + Escaped(name) + " \\- " + Escaped(Purpose(app)) + "\n";
    page += ".SH SYNOPSIS\n" + (runsAlone ? Usage(app, name) + "\n.br\n" : "") + Bold(name) +
            " \\fICOMMAND\\fR [arguments] [options]\n";
    page += ".SH OPTIONS\n";
    for (const CLI::Option* option : app.get_options())
    {
        page += option->get_group().empty() ? "" : OptionItem(*option);
    }
    page += ".SH COMMANDS\n";
    AddCommandItems(page, app, name);
    page += ".SH EXIT STATUS\n" + Item("0", "Done.") + Item("1", "Failed; standard error says why.") +
            Item("2", "Wrong usage.") + Item("3", "Done, but items were left out; standard error names them.");
    page += ".SH ENVIRONMENT\n" + Item("ZEB_PROFILE", "The profile of commands without --profile.") +
            Item("ZEB_CONFIG", "The settings file; an empty value for none.") +
            Item("NO_COLOR", "When it is not empty: no colours, unless --color always is given.") +
            Item("ZEBAPI_REGISTRY", "Linux: the file in place of Windows' registry.") +
            Item("ZEBAPI_LOG", "Where the library logs: stderr, or a file.");
    for (const auto& [variable, meaning] : environment)
    {
        page += Item(variable, meaning);
    }
    page += ".SH FILES\n" +
            Item("~/.config/zebapi/" + name + ".toml",
                 "Settings: an option's name and its value, for all commands (profile = \"demo\") or for one, "
                 "below its name ([find], [store.check]).");
    return page;
}

} // namespace zeb::tools
