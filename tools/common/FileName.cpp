#include "tools/common/FileName.h"

#include "platform/text.h"
#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <algorithm>
#include <cstring>
#include <filesystem>

namespace zeb::tools
{
namespace
{

/// In bytes: file systems take 255, of which a number and the mark of a partial file need some.
constexpr size_t LongestName = 200;
constexpr size_t LongestExtension = 20;

/// The position of the extension with its dot; the end when there is none.
size_t ExtensionOf(const std::string& name)
{
    const size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 || name.size() - dot > LongestExtension ? name.size() : dot;
}

/// Whether Windows takes the name for a device, with any extension.
bool IsDevice(const std::string& name)
{
    std::string stem = name.substr(0, name.find('.'));
    std::transform(stem.begin(), stem.end(), stem.begin(), [](char letter)
    { return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter; });
    for (const char* device : {"CON", "PRN", "AUX", "NUL"})
    {
        if (stem == device)
        {
            return true;
        }
    }
    return stem.size() == 4 && (stem.compare(0, 3, "COM") == 0 || stem.compare(0, 3, "LPT") == 0) && stem[3] >= '1' &&
           stem[3] <= '9';
}

std::string Joined(const std::string& directory, const std::string& name)
{
    return (std::filesystem::u8path(directory) / std::filesystem::u8path(name)).u8string();
}

bool Exists(const std::string& path)
{
    std::error_code ignored;
    return std::filesystem::symlink_status(std::filesystem::u8path(path), ignored).type() !=
           std::filesystem::file_type::not_found;
}

} // namespace

std::string SafeFileName(const std::string& name, const std::string& otherwise)
{
    std::string safe = OneLine(ValidUtf8(name));
    for (char& character : safe)
    {
        if (std::strchr("/\\:*?\"<>|", character) != nullptr)
        {
            character = '_';
        }
    }
    if (safe.size() > LongestName)
    {
        const std::string extension = safe.substr(ExtensionOf(safe));
        safe.erase(platform::Utf8Prefix(safe.data(), safe.size(), LongestName - extension.size()));
        safe += extension;
    }
    // Windows drops blanks and dots at the end; a dot at the beginning hides a file, or names a directory.
    const size_t last = safe.find_last_not_of(" .");
    safe.erase(last == std::string::npos ? 0 : last + 1);
    safe.erase(0, std::min(safe.find_first_not_of(" ."), safe.size()));
    if (IsDevice(safe))
    {
        safe.insert(0, 1, '_');
    }
    return safe.empty() ? otherwise : safe;
}

std::string FreeFile(const std::string& directory, const std::string& name)
{
    const size_t extension = ExtensionOf(name);
    std::string path = Joined(directory, name);
    for (int number = 2; Exists(path); ++number)
    {
        path =
            Joined(directory, name.substr(0, extension) + " (" + std::to_string(number) + ")" + name.substr(extension));
    }
    return path;
}

void MakeDirectory(const std::string& directory)
{
    std::error_code failure;
    const auto path = std::filesystem::u8path(directory);
    std::filesystem::create_directories(path, failure);
    if (!std::filesystem::is_directory(path, failure))
    {
        throw ToolError("the directory '" + ValidUtf8(directory) + "' cannot be created");
    }
}

} // namespace zeb::tools
