// The tree of folders and of the containers of the address book.
#pragma once

#include "tools/zebview/FolderTable.h"
#include "tools/zebview/Theme.h"

#include <commctrl.h>

#include <string>
#include <vector>

namespace zeb::view
{

enum class PlaceKind
{
    None,
    Store,
    Folder,
    Book,
    Container,
};

/// An item of the tree.
struct Place
{
    PlaceKind kind = PlaceKind::None;
    std::string key;  ///< of the folder or container
    std::string name; ///< UTF-8

    bool operator==(const Place& other) const { return kind == other.kind && key == other.key; }
};

class FolderPane
{
public:
    FolderPane() = default;
    FolderPane(const FolderPane&) = delete;
    FolderPane& operator=(const FolderPane&) = delete;

    void Create(HWND parent, int id);
    HWND Handle() const { return m_tree; }
    void SetTheme(const Theme& theme);

    /// What the tree shows. What is unfolded and selected stays so.
    void Show(const std::string& store, const std::vector<FolderNode>& folders,
              const std::vector<FolderNode>& containers);
    void Clear();
    Place Selected() const;
    /// @return false when the tree has no such item
    bool Select(const Place& place) const;
    /// The answer to a notification that an item is drawn.
    LRESULT Draw(NMTVCUSTOMDRAW& draw) const;
    /// While the tree is filled its notifications mean nothing.
    bool IsFilling() const { return m_isFilling; }

private:
    struct Item
    {
        Place place;
        std::string label;
        HTREEITEM handle;
    };

    bool HasSameFolders(const std::vector<FolderNode>& folders, const std::vector<FolderNode>& containers) const;
    HTREEITEM Insert(HTREEITEM parent, const Place& place, const std::string& label);
    void InsertAll(const std::string& store, const std::vector<FolderNode>& folders,
                   const std::vector<FolderNode>& containers);
    void SetLabel(Item& item, const std::string& label) const;
    void Expand(const std::vector<Place>& places) const;
    std::vector<Place> Expanded() const;
    const Item* Find(const Place& place) const;

    HWND m_tree = nullptr;
    const Theme* m_theme = nullptr;
    std::vector<Item> m_items;
    std::vector<FolderNode> m_folders, m_containers;
    bool m_isFilling = false;
};

} // namespace zeb::view
