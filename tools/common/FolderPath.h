// Folders by path.
#pragma once

#include "zebapi/ZebAPI.h"

#include <map>
#include <string>
#include <vector>

namespace zeb::tools
{

/// Windows' code for "element not found", which the library's look-ups by name throw.
constexpr long NameNotFound = 1168;

/// The names of a folder path: "Inbox/Sub" below the top of the IPM subtree, "/Finder" below the store's root. A slash
/// or backslash inside a name is escaped with a backslash. Empty: the top itself.
struct FolderPath
{
    bool fromRoot = false;
    std::vector<std::string> names; ///< UTF-8

    /// @throws ToolError for an empty name
    static FolderPath Parse(const std::string& text);
    std::string Text() const;
    FolderPath Below(const std::string& name) const;
    /// The path of the parent folder; a top folder returns itself.
    FolderPath Above() const;
};

/// A path as shown in messages: "folder 'Inbox/Sub'".
std::string Named(const FolderPath& path);

/// Creates a folder in `parent`; `name` is UTF-8. @throws CZebException* MAPI_E_COLLISION when the name is taken
CZebFolder CreateSubfolder(CZebFolder& parent, const std::string& name);

/// Opens folders of one store by path, creates what is missing, and keeps them open.
class FolderTree
{
public:
    explicit FolderTree(CZebMsgStore& store);

    /// @throws CZebException*
    CZebFolder& Open(const FolderPath& path) { return Open(path, true); }

    /// Opens an existing folder. @throws ToolError naming the path; CZebException*
    CZebFolder& Existing(const FolderPath& path) { return Open(path, false); }

    /// Opens a folder; null when it does not exist. @throws CZebException*
    CZebFolder* IfExists(const FolderPath& path);

    /// Deletes the folders that Open created since the last Keep, deepest first.
    void UndoCreated();
    void Keep() { m_created.clear(); }

private:
    CZebFolder Top(bool fromRoot);
    CZebFolder& Open(const FolderPath& path, bool create);

    CZebMsgStore& m_store;
    std::map<std::string, CZebFolder> m_open;
    std::vector<FolderPath> m_created;
};

} // namespace zeb::tools
