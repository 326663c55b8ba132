// The repair of the folder tree.
#pragma once

#include "zebstore/storage/RepairSql.h"
#include "zebstore/storage/StoreFile.h"

#include <string>
#include <vector>

namespace zebstore
{

/// The tree of folders and the rows of their contents. In the caller's transaction.
class FolderRepair : private RepairSql
{
public:
    FolderRepair(StoreFile& store, const WorkReport& report);

    /// Puts the standard folders where they belong, makes missing ones and missing rows of `contents`, and moves folders that
    /// are not reached from the root to the top of the subtree.
    void Mend();

private:
    void MakeStandardFolders();
    bool HasContents(ContentsKey contents);
    void MakeMissingContents();
    std::vector<FolderId> Unreached();
    std::string FreeName(const std::string& name, FolderId folder, FolderId parent);
    std::string Place(FolderId folder, FolderId parent);

    StoreFile& m_store;
    Database& m_database;
    const WorkReport& m_report;
};

} // namespace zebstore
