// Mail in mbox files, .eml files, folders of them and Maildirs.
#pragma once

#include "tools/zeb-import/Importer.h"
#include "tools/zeb-import/MailState.h"
#include "tools/zeb-import/MboxReader.h"

#include <filesystem>

namespace zeb::tools
{

/// One mbox file. It is one folder, named after the file without its extension.
class MboxSource : public MailSource
{
public:
    /// @throws ToolError naming the file when it cannot be read or is not an mbox file
    explicit MboxSource(const std::string& file);

    std::vector<FolderPath> Folders() override { return {m_folder}; }
    uint64_t MessageCount() override { return 0; }
    void Run(Importer& importer) override;

private:
    const std::string m_file;
    FolderPath m_folder;
    MboxReader m_reader;
};

/// A folder of .eml files with its subfolders, including Maildirs, or one file. The top folder is named after the
/// folder, the others are below it; one file goes to the place that it would have with its whole folder.
class EmlSource : public MailSource
{
public:
    /// @throws ToolError naming the folder when it cannot be read
    explicit EmlSource(const std::string& input);

    std::vector<FolderPath> Folders() override;
    uint64_t MessageCount() override { return m_count; }
    void Run(Importer& importer) override;
    /// Whether there is a message or a Maildir.
    bool IsMail() const { return m_count > 0 || m_hasMaildir; }

private:
    struct File
    {
        std::filesystem::path path;
        std::optional<MailState> state; ///< the state from the location and the name of the file
    };
    struct Folder
    {
        FolderPath path;
        std::vector<File> files;
    };
    struct Listing
    {
        std::vector<std::filesystem::path> folders, files;
    };

    Listing List(const std::filesystem::path& directory, bool isTop);
    void Walk(const std::filesystem::path& directory, const FolderPath& path, bool isTop);
    void TakeMaildir(const std::filesystem::path& directory, Folder& folder);
    void TakeFile(const std::filesystem::path& file, Folder& folder);
    void PassOver(const std::filesystem::path& path, const std::string& reason);

    std::vector<Folder> m_folders;
    std::vector<std::pair<std::string, std::string>> m_passedOver, m_unreadable; ///< path and reason
    uint64_t m_count = 0;
    bool m_hasMaildir = false;
};

} // namespace zeb::tools
