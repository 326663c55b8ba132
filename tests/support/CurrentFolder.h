// The current folder of this process.
#pragma once

#include <filesystem>

namespace zeb::test
{

/// Makes a folder the current one for its lifetime.
class CurrentFolder
{
public:
    explicit CurrentFolder(const std::filesystem::path& folder)
        : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder);
    }
    ~CurrentFolder() { std::filesystem::current_path(m_before); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    std::filesystem::path m_before;
};

} // namespace zeb::test
