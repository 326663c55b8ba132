// A folder that goes away with the test.
#pragma once

#include <filesystem>
#include <random>
#include <string>

namespace zeb::test
{

/// Makes an empty folder with a name of its own; removes it and what is in it at the end, as far as the system lets it.
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
    /// A file of it; folders on the way are made.
    std::string File(const std::string& name) const
    {
        const std::filesystem::path file = m_path / name;
        std::filesystem::create_directories(file.parent_path());
        return file.string();
    }

private:
    std::filesystem::path m_path;
};

} // namespace zeb::test
