#include "tools/common/Settings.h"

#include "platform/environment.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <CLI/CLI.hpp>

#include <filesystem>
#include <fstream>

namespace zeb::tools
{

std::string SettingsFileOf(const std::string& tool)
{
    if (const std::optional<std::string> named = platform::EnvironmentVariable("ZEB_CONFIG"))
    {
        return *named;
    }
    const std::string folder = platform::SettingsFolder();
    return folder.empty() ? "" : folder + "/zebapi/" + tool + ".toml";
}

std::vector<Setting> ReadSettings(const std::string& file)
{
    const std::filesystem::path path = std::filesystem::u8path(file);
    std::error_code ignored;
    if (file.empty() || !std::filesystem::exists(path, ignored))
    {
        return {};
    }
    std::ifstream stream(path, std::ios::binary);
    if (!stream || std::filesystem::is_directory(path, ignored))
    {
        throw UsageError("settings file '" + ValidUtf8(file) + "' cannot be read");
    }
    std::vector<Setting> settings;
    for (CLI::ConfigItem& item : CLI::ConfigTOML().from_config(stream))
    {
        // Begin and end of a section.
        if (item.name != "++" && item.name != "--")
        {
            settings.push_back({std::move(item.parents), std::move(item.name), std::move(item.inputs)});
        }
    }
    return settings;
}

} // namespace zeb::tools
