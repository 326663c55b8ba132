// Mail in mbox files and folders of .eml files.
#pragma once

#include "tools/zeb-import/Importer.h"

namespace zeb::tools
{

/// One mbox file. It is one folder, named after the file without its extension.
class MboxSource : public MailSource
{
public:
    /// @throws ToolError naming the file when it can not be read or is none
    explicit MboxSource(const std::string& file);

    std::vector<FolderPath> Folders() override { return {m_folder}; }
    uint64_t MessageCount() override { return 0; }
    void Run(Importer& importer) override;

private:
    const std::string m_file;
    FolderPath m_folder;
};

/// A folder of .eml files with its subfolders. The top one is named after the folder, the others lie below it.
class EmlSource : public MailSource
{
public:
    /// @throws ToolError naming the folder when it can not be read
    explicit EmlSource(const std::string& folder);

    std::vector<FolderPath> Folders() override;
    uint64_t MessageCount() override { return m_count; }
    void Run(Importer& importer) override;

private:
    struct Folder
    {
        FolderPath path;
        std::vector<std::string> files;
    };
    void Walk(const std::string& directory, const FolderPath& path);

    std::vector<Folder> m_folders;
    uint64_t m_count = 0;
};

} // namespace zeb::tools
