// A folder that is deleted after the test.
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace zeb::test
{

/// Creates an empty folder with a unique name; the destructor deletes it with its content, as far as possible.
class TempFolder
{
public:
    TempFolder()
    {
        std::random_device random;
        do
        {
            m_path = std::filesystem::temp_directory_path() /
                     ("zeb-test-" + std::to_string(random()) + std::to_string(random()));
        } while (!std::filesystem::create_directory(m_path));
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    /// The folder, without a trailing separator.
    std::string Path() const { return m_path.string(); }
    /// The path, in UTF-8, of a file in it, name in UTF-8; creates missing folders.
    std::string File(const std::string& name) const
    {
        const std::filesystem::path file = m_path / std::filesystem::u8path(name);
        std::filesystem::create_directories(file.parent_path());
        return file.u8string();
    }

private:
    std::filesystem::path m_path;
};

} // namespace zeb::test
