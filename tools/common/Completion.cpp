#include "tools/common/Completion.h"

#include "tools/common/Failure.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <utility>

namespace zeb::tools
{
namespace
{

constexpr const char* BashScript = R"script(# Completes TOOL in bash: eval "$(TOOL completion bash)"
_TOOL_complete() {
    local line
    COMPREPLY=()
    while IFS= read -r line; do
        if [ "$line" = ":files" ]; then
            compopt -o filenames 2>/dev/null
            while IFS= read -r line; do COMPREPLY+=("$line"); done < <(compgen -f -- "${COMP_WORDS[COMP_CWORD]}")
        else
            COMPREPLY+=("$(printf '%q' "${line%%$'\t'*}")")
        fi
    done < <(TOOL complete -- "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
}
complete -F _TOOL_complete TOOL
)script";

constexpr const char* ZshScript = R"script(#compdef TOOL
# Completes TOOL in zsh: eval "$(TOOL completion zsh)"
_TOOL_complete() {
    local line
    local -a names shown
    while IFS= read -r line; do
        if [[ "$line" == ":files" ]]; then
            _files
        else
            names+=("${line%%$'\t'*}")
            shown+=("${line//$'\t'/  -- }")
        fi
    done < <(TOOL complete -- "${(@Q)words[2,CURRENT]}" 2>/dev/null)
    (( ${#names} )) && compadd -d shown -a names
}
compdef _TOOL_complete TOOL
)script";

constexpr const char* PowerShellScript =
    R"script(# Completes TOOL in PowerShell: TOOL completion powershell | Out-String | Invoke-Expression
Register-ArgumentCompleter -Native -CommandName TOOL -ScriptBlock {
    param($wordToComplete, $commandAst, $cursorPosition)
    $words = @($commandAst.CommandElements | Select-Object -Skip 1 | ForEach-Object { $_.Extent.Text.Trim('"', "'") })
    if ($wordToComplete -eq '') { $words += '' }
    TOOL complete -- @words 2>$null | Where-Object { $_ -ne ':files' } | ForEach-Object {
        $text, $help = $_ -split "`t", 2
        $quoted = if ($text -match '\s') { "'" + $text.Replace("'", "''") + "'" } else { $text }
        [System.Management.Automation.CompletionResult]::new(
            $quoted, $text, 'ParameterValue', $(if ($help) { $help } else { $text }))
    }
}
)script";

bool IsFlag(const CLI::Option& option)
{
    return option.get_items_expected_max() == 0;
}

bool BeginsWith(const std::string& text, const std::string& beginning)
{
    return text.compare(0, beginning.size(), beginning) == 0;
}

/// What the words before the last one selected.
struct Selected
{
    const CLI::App* command = nullptr;
    const CLI::Option* waiting = nullptr; ///< an option whose value is missing
    size_t positionals = 0;               ///< arguments given so far
    std::string profile;                  ///< the value of --profile
};

Selected Follow(const CLI::App& app, const std::vector<std::string>& words)
{
    Selected selected;
    selected.command = &app;
    for (size_t i = 0; i + 1 < words.size(); ++i)
    {
        const std::string& word = words[i];
        if (selected.waiting != nullptr)
        {
            selected.profile = selected.waiting->check_name("--profile") ? word : selected.profile;
            selected.waiting = nullptr;
            continue;
        }
        if (word.size() > 1 && word.front() == '-')
        {
            const CLI::Option* option = selected.command->get_option_no_throw(word);
            selected.waiting = option != nullptr && !IsFlag(*option) ? option : nullptr;
            continue;
        }
        const auto inner =
            selected.command->get_subcommands([&](const CLI::App* each) { return each->get_name() == word; });
        if (inner.empty())
        {
            ++selected.positionals;
        }
        else
        {
            selected.command = inner.front();
        }
    }
    return selected;
}

/// The values of an option or argument by its type: "TEXT:{a,b}", "FOLDER", "FILE".
void AddValues(std::vector<Completion>& found, const CLI::Option& option, const std::string& profile,
               const Candidates& candidates)
{
    const std::string type = option.get_type_name();
    const size_t words = type.find('{');
    if (words != std::string::npos)
    {
        for (size_t at = words + 1; at < type.size() && type[at - 1] != '}';)
        {
            const size_t end = type.find_first_of(",}", at);
            found.push_back({type.substr(at, end - at), ""});
            at = end + 1;
        }
        return;
    }
    if (BeginsWith(type, "FILE") || BeginsWith(type, "DIR") || BeginsWith(type, "PATH"))
    {
        found.push_back({FileMark, ""});
        return;
    }
    try
    {
        for (const std::string& each : candidates(option.check_name("--profile") ? "PROFILE" : type, profile))
        {
            found.push_back({each, ""});
        }
    }
    catch (...)
    {
        CurrentFailure(); // a completion that cannot be made is none
    }
}

void AddOptions(std::vector<Completion>& found, const CLI::App& command)
{
    for (const CLI::Option* option : command.get_options())
    {
        if (!option->get_positional() && !option->get_group().empty() && !option->get_lnames().empty())
        {
            found.push_back({"--" + option->get_lnames().front(), option->get_description()});
        }
    }
}

/// The argument that the next word is; the last one takes all that follow.
const CLI::Option* PositionalAt(const CLI::App& command, size_t index)
{
    const CLI::Option* last = nullptr;
    for (const CLI::Option* option :
         command.get_options([](const CLI::Option* each) { return each->get_positional(); }))
    {
        last = option;
        const auto most = static_cast<size_t>(option->get_items_expected_max());
        if (index < most)
        {
            return option;
        }
        index -= most;
    }
    return last;
}

} // namespace

std::vector<Completion> CompletionsOf(const CLI::App& app, const std::vector<std::string>& words,
                                      const Candidates& candidates)
{
    const std::string last = words.empty() ? "" : words.back();
    const Selected selected = Follow(app, words);
    std::vector<Completion> found;
    if (selected.waiting != nullptr)
    {
        AddValues(found, *selected.waiting, selected.profile, candidates);
    }
    else if (BeginsWith(last, "-"))
    {
        AddOptions(found, *selected.command);
    }
    else if (selected.command->get_require_subcommand_min() > 0)
    {
        for (const CLI::App* each : selected.command->get_subcommands([](const CLI::App*) { return true; }))
        {
            if (!each->get_group().empty())
            {
                found.push_back({each->get_name(), each->get_description()});
            }
        }
    }
    else if (const CLI::Option* argument = PositionalAt(*selected.command, selected.positionals))
    {
        AddValues(found, *argument, selected.profile, candidates);
    }
    found.erase(std::remove_if(found.begin(), found.end(), [&](const Completion& each)
    { return each.text != FileMark && !BeginsWith(each.text, last); }),
                found.end());
    return found;
}

std::string CompletionScript(const std::string& tool, const std::string& shell)
{
    std::string script = shell == "bash" ? BashScript : shell == "zsh" ? ZshScript : PowerShellScript;
    const std::string mark = "TOOL";
    for (size_t at = 0; (at = script.find(mark, at)) != std::string::npos; at += tool.size())
    {
        script.replace(at, mark.size(), tool);
    }
    return script;
}

} // namespace zeb::tools
