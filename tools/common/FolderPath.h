// Folders by path.
#pragma once

#include "zebapi/ZebAPI.h"

#include <map>
#include <string>
#include <vector>

namespace zeb::tools
{

/// The system's code for an element that was not found, which the library's look-ups by name throw.
constexpr long NameNotFound = 1168;

/// The names of a folder path: "Inbox/Sub" below the folder that users see as the top of their mail,
/// "/Finder" below the store's root. A slash or backslash inside a name is written with a backslash before
/// it. Empty: the top itself.
struct FolderPath
{
    bool fromRoot = false;
    std::vector<std::string> names; ///< UTF-8

    /// @throws ToolError for an empty name
    static FolderPath Parse(const std::string& text);
    std::string Text() const;
    FolderPath Below(const std::string& name) const;
    /// The path of the folder above; of a top, itself.
    FolderPath Above() const;
};

/// A path as a sentence names it: "folder 'Inbox/Sub'".
std::string Named(const FolderPath& path);

/// Creates a folder in `parent`; `name` is UTF-8. @throws CZebException* MAPI_E_COLLISION when there is one
CZebFolder CreateSubfolder(CZebFolder& parent, const std::string& name);

/// Opens folders of one store by path, creates what is missing, and keeps them open.
class FolderTree
{
public:
    explicit FolderTree(CZebMsgStore& store);

    /// @throws CZebException*
    CZebFolder& Open(const FolderPath& path) { return Open(path, true); }

    /// Opens a folder that must be there. @throws ToolError naming the path; CZebException*
    CZebFolder& Existing(const FolderPath& path) { return Open(path, false); }

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
