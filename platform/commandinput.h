// Gives a text to another program.
#pragma once

#include <string>

namespace zeb::platform
{

/// Runs a command of the system's shell with the text as its standard input and waits for its end. The command may end
/// before it has read everything. An interrupt (Ctrl-C) during that time is the command's own.
/// @return false when the command cannot be started, or does not exist
bool GiveToCommand(const std::string& command, const std::string& text);

} // namespace zeb::platform
