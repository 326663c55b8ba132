// The commands of zeb. Each group stands in a file of its own and adds itself to the command line.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace zeb::tools
{

/// What the chosen command does; set when the command line has been read.
using Action = std::function<int()>;

void AddDoctor(CLI::App& app, Action& action);
void AddProvider(CLI::App& app, Action& action);
void AddProfile(CLI::App& app, Action& action);
void AddStore(CLI::App& app, Action& action);
void AddFolders(CLI::App& app, Action& action);
void AddInbox(CLI::App& app, Action& action);
void AddLoad(CLI::App& app, Action& action);
void AddAddressBook(CLI::App& app, Action& action);

/// Adds "--profile NAME".
inline void AddProfileOption(CLI::App& command, std::string& profile)
{
    command.add_option("--profile", profile, "The profile to log on to; without it the default profile")
        ->type_name("NAME");
}

} // namespace zeb::tools
