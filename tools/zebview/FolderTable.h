// The folders of a store, and the containers of the address book, as a tree.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>
#include <vector>

namespace zeb::view
{

/// A folder, or a container of the address book.
struct FolderNode
{
    std::string name; ///< UTF-8
    LONG messages = 0, unread = 0;
    std::string key;    ///< KeyOf its entry identifier
    std::string parent; ///< the same of the folder above

    /// Whether the tree looks the same but for counts.
    bool HasPlaceOf(const FolderNode& other) const
    {
        return name == other.name && key == other.key && parent == other.parent;
    }
};

/// "Inbox (2/3)": unread and all messages; the name alone for an empty folder.
std::string LabelOf(const FolderNode& node);

/// All folders below one, with a message to a window when one of them changes.
class FolderTable
{
public:
    /// @param listener gets WM_CACHED_TABLE_CHANGED
    FolderTable(const CZebFolder& top, HWND listener);

    /// Parents before their folders, folders by name. @throws CZebException*
    std::vector<FolderNode> Read();

private:
    CZebFolder m_top;
    CZebCachedTable m_table;
};

/// The containers of an address book, at any depth. @throws CZebException*
std::vector<FolderNode> ReadContainers(CZebAddressBook& book);

} // namespace zeb::view
