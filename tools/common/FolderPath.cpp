#include "tools/common/FolderPath.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <memory>
#include <utility>

namespace zeb::tools
{
namespace
{

std::string Escaped(const std::string& name)
{
    std::string text;
    for (const char c : name)
    {
        if (c == '/' || c == '\\')
        {
            text += '\\';
        }
        text += c;
    }
    return text;
}

/// A path separated by '\' must not create one folder named after the whole path.
void RefuseLoneBackslash(const std::string& text, size_t after)
{
    if (after >= text.size() || (text[after] != '/' && text[after] != '\\'))
    {
        throw ToolError("the folder path \"" + text +
                        "\" has a lone backslash: '/' separates folders, and a backslash of a name is written '\\\\'");
    }
}

/// Looks up a subfolder by its name. @return false when it does not exist
bool Find(CZebFolder& parent, const std::string& name, CZebFolder& folder)
{
    try
    {
        folder = parent.OpenFolderByNameW(WideFromUtf8(name));
        return true;
    }
    catch (CZebException* exception)
    {
        if (exception->GetResult() != NameNotFound)
        {
            throw;
        }
        exception->Delete();
        return false;
    }
}

} // namespace

FolderPath FolderPath::Parse(const std::string& text)
{
    FolderPath path;
    path.fromRoot = !text.empty() && text.front() == '/';
    std::string name;
    for (size_t i = path.fromRoot ? 1 : 0; i < text.size(); ++i)
    {
        if (text[i] == '/')
        {
            path.names.push_back(std::exchange(name, {}));
            continue;
        }
        if (text[i] == '\\')
        {
            ++i;
            RefuseLoneBackslash(text, i);
        }
        name += text[i];
    }
    if (!name.empty() || !path.names.empty())
    {
        path.names.push_back(name);
    }
    for (const std::string& part : path.names)
    {
        if (part.empty())
        {
            throw ToolError("the folder path \"" + text + "\" has an empty name in it");
        }
    }
    return path;
}

std::string FolderPath::Text() const
{
    std::string text;
    for (const std::string& name : names)
    {
        text += (text.empty() && !fromRoot ? "" : "/") + Escaped(name);
    }
    return text.empty() && fromRoot ? "/" : text;
}

FolderPath FolderPath::Below(const std::string& name) const
{
    FolderPath path = *this;
    path.names.push_back(name);
    return path;
}

FolderPath FolderPath::Above() const
{
    FolderPath path = *this;
    if (!path.names.empty())
    {
        path.names.pop_back();
    }
    return path;
}

std::string Named(const FolderPath& path)
{
    if (path.names.empty())
    {
        return path.fromRoot ? "the root folder" : "the top folder";
    }
    return "folder '" + Shortened(OneLine(path.Text()), 120) + "'";
}

CZebFolder CreateSubfolder(CZebFolder& parent, const std::string& name)
{
    const std::string narrow = NarrowFromUtf8(name);
    if (Utf8FromNarrow(narrow) == name)
    {
        return parent.CreateFolder(narrow.c_str(), false, false, 0, nullptr, FOLDER_GENERIC);
    }
    // Wide only where it must be: some providers support only narrow names.
    return parent.CreateFolderW(WideFromUtf8(name));
}

FolderTree::FolderTree(CZebMsgStore& store)
    : m_store(store)
{
}

CZebFolder FolderTree::Top(bool fromRoot)
{
    try
    {
        return fromRoot ? m_store.OpenRootFolder(MAPI_BEST_ACCESS)
                        : m_store.OpenSpecialFolder(PR_IPM_SUBTREE_ENTRYID, MAPI_BEST_ACCESS);
    }
    catch (...)
    {
        FailWhile(fromRoot ? "opening the store's root folder" : "opening the store's top folder");
    }
}

CZebFolder& FolderTree::Open(const FolderPath& path, bool create)
{
    const std::string key = path.Text();
    const auto known = m_open.find(key);
    if (known != m_open.end())
    {
        return known->second;
    }
    CZebFolder folder(nullptr);
    if (path.names.empty())
    {
        folder = Top(path.fromRoot);
    }
    else if (CZebFolder& above = Open(path.Above(), create); !Find(above, path.names.back(), folder))
    {
        if (!create)
        {
            throw ToolError("there is no " + Named(path));
        }
        folder = CreateSubfolder(above, path.names.back());
        m_created.push_back(path);
    }
    return m_open.emplace(key, folder).first->second;
}

CZebFolder* FolderTree::IfExists(const FolderPath& path)
{
    try
    {
        return std::addressof(Open(path, false));
    }
    catch (const ToolError&)
    {
        return nullptr;
    }
}

void FolderTree::UndoCreated()
{
    for (; !m_created.empty(); m_created.pop_back())
    {
        const FolderPath above = m_created.back().Above();
        const CZebBinary entryId = Open(m_created.back()).GetEntryID();
        m_open.erase(m_created.back().Text());
        Open(above).DeleteFolder(entryId, nullptr, DEL_FOLDERS, nullptr);
    }
}

} // namespace zeb::tools
