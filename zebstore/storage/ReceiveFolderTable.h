// The table `receive`: the receive folders of message classes.
#pragma once

#include "zebstore/storage/FolderTable.h"

#include <string>
#include <vector>

namespace zebstore
{

struct ReceiveFolder
{
    std::string messageClass; ///< ASCII; "" is the default
    FolderId folder = 0;
};

/// Message classes compare without case. Threads: any; the connection's lock is taken inside.
class ReceiveFolderTable
{
public:
    ReceiveFolderTable(StoreConnection& connection, FolderTable& folders)
        : m_connection(connection)
        , m_folders(folders)
    {
    }

    /// The folder of the longest class that is `messageClass` or one of its super-classes.
    ReceiveFolder Of(const std::string& messageClass);
    /// @param folder 0 removes the entry. @throws Error MAPI_E_INVALID_PARAMETER for removing the default
    void Set(const std::string& messageClass, FolderId folder);
    std::vector<ReceiveFolder> All();

private:
    StoreConnection& m_connection;
    FolderTable& m_folders;
};

} // namespace zebstore
