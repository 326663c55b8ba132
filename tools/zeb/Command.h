// The commands of zeb. Each group has its own file and adds itself to the command line.
#pragma once

#include "tools/common/CommandLine.h"

#include <string>

namespace zeb::tools
{

void AddDoctor(Command app);
void AddProvider(Command app);
void AddProfile(Command app);
void AddStore(Command app);
void AddStoreInfo(Command store);
void AddStoreIndex(Command store);
void AddFolders(Command app);
void AddInbox(Command app);
void AddLoad(Command app);
void AddAddressBook(Command app);
void AddAttachments(Command app);
void AddSave(Command app);
void AddExport(Command app);
void AddRead(Command app);
void AddShow(Command app);
void AddFind(Command app);
void AddWatch(Command app);
void AddNames(Command app);
void AddFolderCommands(Command app);
void AddMessageCommands(Command app);

/// Adds "--profile NAME".
inline void AddProfileOption(Command command, std::string& profile)
{
    command.AddOption("--profile", profile, "The profile to log on to; without it the default profile").Type("NAME");
}

/// Adds the required folder argument of a command.
inline void AddFolderArgument(Command command, std::string& folder)
{
    command.AddOption("folder", folder, "A folder, by path (\"Inbox/Sub\", \"/\" is the root) or entry identifier")
        .Required()
        .Type("FOLDER");
}

/// Adds the required argument for a message of that folder.
inline void AddMessageArgument(Command command, std::string& message)
{
    command
        .AddOption("message", message,
                   "A message of that folder, by its number (the # of 'zeb find'), its subject or its entry identifier")
        .Required()
        .Type("MESSAGE");
}

/// Adds an option with a count, "--limit N"; 0 when not given.
inline void AddCountOption(Command command, const char* name, ULONG& count, const char* help)
{
    command.AddOption(name, count, help).Type("N").Between(1u, 0x7FFFFFFFu);
}

/// Adds "--sort", the order of a message list.
inline void AddSortOption(Command command, std::string& sort)
{
    command
        .AddOption("--sort", sort, "By date or received (newest first), sender, subject, class or size (largest first)")
        .OneOf({"date", "received", "sender", "subject", "class", "size"})
        .ShowDefault();
}

/// Adds "--utc" to a command that shows or accepts dates.
inline void AddUtcOption(Command command, bool& utc)
{
    command.AddFlag("--utc", utc, "Dates in UTC; without it in local time");
}

/// Adds the option that confirms a destructive command.
inline void AddYesOption(Command command, bool& yes)
{
    command.AddFlag("--yes", yes, "Do not ask; needed when there is no terminal");
}

} // namespace zeb::tools
