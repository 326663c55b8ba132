// The user's settings of a tool: a file in TOML, and environment variables.
#pragma once

#include <string>
#include <vector>

namespace zeb::tools
{

/// One line of the file.
struct Setting
{
    std::vector<std::string> command; ///< the names of the section: [store.check]; empty for all commands
    std::string name;                 ///< an option's name without its dashes
    std::vector<std::string> values;
};

/// The path of a tool's settings file, UTF-8: ZEB_CONFIG, or "zebapi/TOOL.toml" in the folder of the user's settings.
/// Empty when there is none.
std::string SettingsFileOf(const std::string& tool);

/// Reads a settings file. @return no settings when it does not exist @throws UsageError naming the file
std::vector<Setting> ReadSettings(const std::string& file);

} // namespace zeb::tools
