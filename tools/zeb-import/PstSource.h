// PST and OST files.
#pragma once

#include "tools/zeb-import/Importer.h"
#include "tools/zeb-import/Pff.h"

namespace zeb::tools
{

/// Reads a PST or OST file. Folder paths begin below the file's top of user-visible folders; folders outside it have
/// paths from the root.
class PstSource : public MailSource
{
public:
    /// @throws ToolError naming the file when it is missing, not such a file, or truncated
    explicit PstSource(const std::string& file);
    ~PstSource() override;
    PstSource(const PstSource&) = delete;
    PstSource& operator=(const PstSource&) = delete;

    std::vector<FolderPath> Folders() override;
    uint64_t MessageCount() override { return m_count; }
    void Run(Importer& importer) override;

private:
    void Open();
    void Walk(libpff_item_t* folder, const FolderPath& path);
    void ImportFolder(Importer& importer, libpff_item_t* folder, const FolderPath& path);
    void ImportMessages(Importer& importer, libpff_item_t* folder, const FolderPath& path, bool associated);
    FolderPath PathOf(libpff_item_t* folder, const FolderPath& above, int index) const;
    uint32_t IdentifierOfTop() const;

    const std::string m_name; ///< the file, UTF-8, for messages
    libpff_file_t* m_file = nullptr;
    pff::Item m_root;
    uint32_t m_top = 0;
    std::vector<FolderPath> m_folders;
    uint64_t m_count = 0;
};

} // namespace zeb::tools
