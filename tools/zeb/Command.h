// The commands of zeb. Each group has its own file and adds itself to the command line.
#pragma once

#include "zebapi/ZebAPI.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace zeb::tools
{

/// The action of the selected command; set when the command line has been parsed.
using Action = std::function<int()>;

void AddDoctor(CLI::App& app, Action& action);
void AddProvider(CLI::App& app, Action& action);
void AddProfile(CLI::App& app, Action& action);
void AddStore(CLI::App& app, Action& action);
void AddFolders(CLI::App& app, Action& action);
void AddInbox(CLI::App& app, Action& action);
void AddLoad(CLI::App& app, Action& action);
void AddAddressBook(CLI::App& app, Action& action);
void AddSave(CLI::App& app, Action& action);
void AddShow(CLI::App& app, Action& action);
void AddFind(CLI::App& app, Action& action);
void AddWatch(CLI::App& app, Action& action);
void AddNames(CLI::App& app, Action& action);
void AddFolderCommands(CLI::App& app, Action& action);
void AddMessageCommands(CLI::App& app, Action& action);

/// Adds "--profile NAME".
inline void AddProfileOption(CLI::App& command, std::string& profile)
{
    command.add_option("--profile", profile, "The profile to log on to; without it the default profile")
        ->type_name("NAME");
}

/// Adds the required folder argument of a command.
inline void AddFolderArgument(CLI::App& command, std::string& folder)
{
    command.add_option("folder", folder, "A folder, by path (\"Inbox/Sub\", \"/\" is the root) or entry identifier")
        ->required()
        ->type_name("FOLDER");
}

/// Adds an option with a count, "--limit N"; 0 when not given.
inline void AddCountOption(CLI::App& command, const char* name, ULONG& count, const char* help)
{
    command.add_option(name, count, help)->type_name("N")->check(CLI::Range(1u, 0x7FFFFFFFu));
}

/// Adds "--sort", the order of a message list.
inline void AddSortOption(CLI::App& command, std::string& sort)
{
    command.add_option("--sort", sort, "By date (newest first), subject or size (largest first)")
        ->check(CLI::IsMember({"date", "subject", "size"}))
        ->capture_default_str();
}

/// Adds "--utc" to a command that shows or accepts dates.
inline void AddUtcOption(CLI::App& command, bool& utc)
{
    command.add_flag("--utc", utc, "Dates in UTC; without it in local time");
}

/// Adds the option that confirms a destructive command.
inline void AddYesOption(CLI::App& command, bool& yes)
{
    command.add_flag("--yes", yes, "Do not ask; needed when there is no terminal");
}

} // namespace zeb::tools
