#include "tools/zebview/FolderPane.h"

#include "tools/common/Output.h"
#include "tools/zebview/WideText.h"

#include <algorithm>
#include <map>

namespace zeb::view
{
namespace
{

constexpr DWORD TreeStyle = WS_CHILD | WS_VISIBLE | WS_TABSTOP | WS_CLIPSIBLINGS | TVS_HASBUTTONS | TVS_HASLINES |
                            TVS_LINESATROOT | TVS_SHOWSELALWAYS | WS_BORDER;
constexpr const char* BookName = "Address book";

bool HaveSamePlaces(const std::vector<FolderNode>& a, const std::vector<FolderNode>& b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const FolderNode& x, const FolderNode& y) { return x.HasPlaceOf(y); });
}

} // namespace

void FolderPane::Create(HWND parent, int id)
{
    m_tree = CreateWindowExW(0, WC_TREEVIEWW, L"Folders", TreeStyle, 0, 0, 0, 0, parent,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
}

void FolderPane::SetTheme(const Theme& theme)
{
    m_theme = &theme;
    theme.ApplyToControl(m_tree);
    SendMessageW(m_tree, TVM_SETBKCOLOR, 0, static_cast<LPARAM>(theme.Colour().window));
    SendMessageW(m_tree, TVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(theme.Colour().text));
    SendMessageW(m_tree, TVM_SETLINECOLOR, 0, static_cast<LPARAM>(theme.Colour().grey));
    InvalidateRect(m_tree, nullptr, TRUE);
}

/// A selected item without the focus is drawn light by the system, also in a dark tree.
LRESULT FolderPane::Draw(NMTVCUSTOMDRAW& draw) const
{
    if (m_theme == nullptr || !m_theme->IsDark())
    {
        return CDRF_DODEFAULT;
    }
    if (draw.nmcd.dwDrawStage == CDDS_ITEMPREPAINT && (draw.nmcd.uItemState & CDIS_SELECTED) != 0 &&
        GetFocus() != m_tree)
    {
        draw.clrText = m_theme->Colour().text;
        draw.clrTextBk = m_theme->Colour().line;
    }
    return draw.nmcd.dwDrawStage == CDDS_PREPAINT ? CDRF_NOTIFYITEMDRAW : CDRF_DODEFAULT;
}

HTREEITEM FolderPane::Insert(HTREEITEM parent, const Place& place, const std::string& label)
{
    std::wstring text = Wide(label);
    TVINSERTSTRUCTW insert{};
    insert.hParent = parent;
    insert.hInsertAfter = TVI_LAST;
    insert.item.mask = TVIF_TEXT | TVIF_PARAM;
    insert.item.pszText = text.data();
    insert.item.lParam = static_cast<LPARAM>(m_items.size());
    auto* handle =
        reinterpret_cast<HTREEITEM>(SendMessageW(m_tree, TVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&insert)));
    m_items.push_back({place, label, handle});
    return handle;
}

void FolderPane::InsertAll(const std::string& store, const std::vector<FolderNode>& folders,
                           const std::vector<FolderNode>& containers)
{
    const HTREEITEM root = Insert(TVI_ROOT, {PlaceKind::Store, "", store}, tools::OneLine(store));
    std::map<std::string, HTREEITEM> parents;
    for (const FolderNode& folder : folders)
    {
        const auto above = parents.find(folder.parent);
        parents[folder.key] = Insert(above == parents.end() ? root : above->second,
                                     {PlaceKind::Folder, folder.key, folder.name}, LabelOf(folder));
    }
    if (!containers.empty())
    {
        const HTREEITEM book = Insert(TVI_ROOT, {PlaceKind::Book, "", BookName}, BookName);
        for (const FolderNode& container : containers)
        {
            Insert(book, {PlaceKind::Container, container.key, container.name}, LabelOf(container));
        }
    }
}

void FolderPane::SetLabel(Item& item, const std::string& label) const
{
    if (item.label == label)
    {
        return;
    }
    item.label = label;
    std::wstring text = Wide(label);
    TVITEMW change{};
    change.mask = TVIF_TEXT | TVIF_HANDLE;
    change.hItem = item.handle;
    change.pszText = text.data();
    SendMessageW(m_tree, TVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&change));
}

bool FolderPane::HasSameFolders(const std::vector<FolderNode>& folders, const std::vector<FolderNode>& containers) const
{
    return !m_items.empty() && HaveSamePlaces(m_folders, folders) && HaveSamePlaces(m_containers, containers);
}

std::vector<Place> FolderPane::Expanded() const
{
    std::vector<Place> places;
    for (const Item& item : m_items)
    {
        const LRESULT state =
            SendMessageW(m_tree, TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item.handle), TVIS_EXPANDED);
        if ((state & TVIS_EXPANDED) != 0)
        {
            places.push_back(item.place);
        }
    }
    return places;
}

void FolderPane::Expand(const std::vector<Place>& places) const
{
    for (const Place& place : places)
    {
        if (const Item* item = Find(place))
        {
            SendMessageW(m_tree, TVM_EXPAND, TVE_EXPAND, reinterpret_cast<LPARAM>(item->handle));
        }
    }
}

void FolderPane::Show(const std::string& store, const std::vector<FolderNode>& folders,
                      const std::vector<FolderNode>& containers)
{
    const bool isSame = HasSameFolders(folders, containers);
    m_folders = folders;
    m_containers = containers;
    if (isSame)
    {
        for (size_t i = 0; i < folders.size(); ++i)
        {
            SetLabel(m_items[i + 1], LabelOf(folders[i])); // the store is before them
        }
        return;
    }
    std::vector<Place> expanded = Expanded();
    if (m_items.empty())
    {
        expanded = {{PlaceKind::Store, "", ""}, {PlaceKind::Book, "", ""}};
    }
    const Place selected = Selected();
    m_isFilling = true;
    SendMessageW(m_tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    m_items.clear();
    InsertAll(store, folders, containers);
    Expand(expanded);
    Select(selected);
    InvalidateRect(m_tree, nullptr, TRUE);
    m_isFilling = false;
}

void FolderPane::Clear()
{
    m_isFilling = true;
    SendMessageW(m_tree, TVM_DELETEITEM, 0, reinterpret_cast<LPARAM>(TVI_ROOT));
    m_isFilling = false;
    m_items.clear();
}

Place FolderPane::Selected() const
{
    TVITEMW item{};
    item.mask = TVIF_PARAM | TVIF_HANDLE;
    item.hItem = reinterpret_cast<HTREEITEM>(SendMessageW(m_tree, TVM_GETNEXTITEM, TVGN_CARET, 0));
    if (item.hItem == nullptr || SendMessageW(m_tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item)) == 0 ||
        static_cast<size_t>(item.lParam) >= m_items.size())
    {
        return {};
    }
    return m_items[static_cast<size_t>(item.lParam)].place;
}

const FolderPane::Item* FolderPane::Find(const Place& place) const
{
    const auto found =
        std::find_if(m_items.begin(), m_items.end(), [&](const Item& item) { return item.place == place; });
    return found == m_items.end() ? nullptr : &*found;
}

bool FolderPane::Select(const Place& place) const
{
    const Item* item = Find(place);
    if (item == nullptr)
    {
        return false;
    }
    SendMessageW(m_tree, TVM_SELECTITEM, TVGN_CARET, reinterpret_cast<LPARAM>(item->handle));
    return true;
}

} // namespace zeb::view
