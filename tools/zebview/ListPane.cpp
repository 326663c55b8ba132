#include "tools/zebview/ListPane.h"

#include "tools/zebview/WideText.h"

#include <windowsx.h>

#include <algorithm>
#include <utility>

namespace zeb::view
{
namespace
{

constexpr DWORD ListStyle = WS_CHILD | WS_TABSTOP | WS_CLIPSIBLINGS | LVS_REPORT | LVS_OWNERDATA | LVS_SINGLESEL |
                            LVS_SHOWSELALWAYS | LVS_SHAREIMAGELISTS;
/// Rows that a control may look at for one key.
constexpr int ManyRows = 5000;
constexpr DWORD ListExtendedStyle = LVS_EX_FULLROWSELECT | LVS_EX_DOUBLEBUFFER | LVS_EX_LABELTIP;

HWND HeaderOf(HWND list)
{
    return reinterpret_cast<HWND>(SendMessageW(list, LVM_GETHEADER, 0, 0));
}

} // namespace

void ListPane::Create(HWND parent, int id, const char* name, Source source)
{
    m_source = std::move(source);
    m_list = CreateWindowExW(WS_EX_CLIENTEDGE, WC_LISTVIEWW, Wide(name).c_str(), ListStyle, 0, 0, 0, 0, parent,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(m_list, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, ListExtendedStyle);
    SetWindowSubclass(m_list, &ListPane::Subclass, 1, reinterpret_cast<DWORD_PTR>(this));
}

void ListPane::SetColumns(std::vector<PaneColumn> columns, const Scale& scale)
{
    while (SendMessageW(m_list, LVM_DELETECOLUMN, 0, 0) != 0)
    {
    }
    m_columns = std::move(columns);
    for (size_t i = 0; i < m_columns.size(); ++i)
    {
        std::wstring title = Wide(m_columns[i].title);
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT | LVCF_WIDTH | LVCF_FMT | LVCF_SUBITEM;
        column.fmt = m_columns[i].isRight ? LVCFMT_RIGHT : LVCFMT_LEFT;
        column.cx = scale(m_columns[i].width);
        column.pszText = title.data();
        column.iSubItem = static_cast<int>(i);
        SendMessageW(m_list, LVM_INSERTCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
}

void ListPane::Rescale(const Scale& before, const Scale& now, const Fonts& fonts)
{
    m_plain = fonts.plain.Get();
    m_bold = fonts.bold.Get();
    SendMessageW(m_list, WM_SETFONT, reinterpret_cast<WPARAM>(m_plain), TRUE);
    for (size_t i = 0; i < m_columns.size(); ++i)
    {
        const auto width = static_cast<int>(SendMessageW(m_list, LVM_GETCOLUMNWIDTH, i, 0));
        SendMessageW(m_list, LVM_SETCOLUMNWIDTH, i, now(before.Unscaled(width)));
    }
}

void ListPane::SetTheme(const Theme& theme)
{
    m_theme = &theme;
    theme.ApplyToControl(m_list);
    const Colours& colours = theme.Colour();
    SendMessageW(m_list, LVM_SETBKCOLOR, 0, static_cast<LPARAM>(colours.window));
    SendMessageW(m_list, LVM_SETTEXTBKCOLOR, 0, static_cast<LPARAM>(colours.window));
    SendMessageW(m_list, LVM_SETTEXTCOLOR, 0, static_cast<LPARAM>(colours.text));
}

void ListPane::MarkSorted(int column, bool isDescending) const
{
    for (int i = 0; i < static_cast<int>(m_columns.size()); ++i)
    {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        SendMessageW(HeaderOf(m_list), HDM_GETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        item.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        item.fmt |= i != column ? 0 : isDescending ? HDF_SORTDOWN : HDF_SORTUP;
        SendMessageW(HeaderOf(m_list), HDM_SETITEMW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
    }
}

void ListPane::SetCount(int count, bool keepPlace) const
{
    const LPARAM flags = keepPlace ? LVSICF_NOSCROLL | LVSICF_NOINVALIDATEALL : 0;
    SendMessageW(m_list, LVM_SETITEMCOUNT, static_cast<WPARAM>(count), flags);
    if (!keepPlace && count > 0)
    {
        SendMessageW(m_list, LVM_ENSUREVISIBLE, 0, FALSE);
    }
    InvalidateRect(m_list, nullptr, FALSE);
}

int ListPane::Count() const
{
    return static_cast<int>(SendMessageW(m_list, LVM_GETITEMCOUNT, 0, 0));
}

int ListPane::Selected() const
{
    // The selected row nearly always has the focus; a control may look at a million rows for any other.
    const auto next = [&](LPARAM which)
    { return static_cast<int>(SendMessageW(m_list, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), which)); };
    const int focused = next(LVNI_SELECTED | LVNI_FOCUSED);
    return focused >= 0 || SendMessageW(m_list, LVM_GETSELECTEDCOUNT, 0, 0) == 0 ? focused : next(LVNI_SELECTED);
}

void ListPane::Select(int row, bool show) const
{
    LVITEMW item{};
    if (row < 0)
    {
        // Not -1 for all rows: a control may then go through each of a million.
        item.stateMask = LVIS_SELECTED;
        if (const int old = Selected(); old >= 0)
        {
            SendMessageW(m_list, LVM_SETITEMSTATE, static_cast<WPARAM>(old), reinterpret_cast<LPARAM>(&item));
        }
        return;
    }
    // A list with one selection takes it from the other row itself.
    item.stateMask = item.state = LVIS_SELECTED | LVIS_FOCUSED;
    SendMessageW(m_list, LVM_SETITEMSTATE, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(&item));
    SendMessageW(m_list, LVM_SETSELECTIONMARK, 0, row);
    if (show)
    {
        SendMessageW(m_list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    }
}

void ListPane::ShowLast() const
{
    if (const int count = Count())
    {
        SendMessageW(m_list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(count - 1), FALSE);
    }
}

std::string ListPane::RowText(int row) const
{
    std::string text;
    for (int column = 0; column < static_cast<int>(m_columns.size()); ++column)
    {
        text += (column == 0 ? "" : "\t") + m_source.text(row, column);
    }
    return text;
}

void ListPane::GiveText(LVITEMW& item)
{
    if ((item.mask & LVIF_TEXT) != 0 && item.cchTextMax > 0)
    {
        const std::wstring text = Wide(m_source.text(item.iItem, item.iSubItem));
        lstrcpynW(item.pszText, text.c_str(), item.cchTextMax);
    }
}

bool ListPane::OnNotify(NMHDR& header, LRESULT& result)
{
    if (header.code == LVN_GETDISPINFOW)
    {
        LVITEMW& item = reinterpret_cast<NMLVDISPINFOW&>(header).item;
        if ((item.mask & LVIF_TEXT) != 0 && item.cchTextMax > 0)
        {
            item.pszText[0] = L'\0'; // what is shown when the text cannot be read
        }
        result = 0;
        GiveText(item);
        return true;
    }
    if (header.code == NM_CUSTOMDRAW)
    {
        result = DrawRow(reinterpret_cast<NMLVCUSTOMDRAW&>(header));
        return true;
    }
    return false;
}

LRESULT ListPane::DrawRow(NMLVCUSTOMDRAW& draw) const
{
    if (draw.nmcd.dwDrawStage == CDDS_PREPAINT)
    {
        return m_source.look ? CDRF_NOTIFYITEMDRAW : CDRF_DODEFAULT;
    }
    if (draw.nmcd.dwDrawStage != CDDS_ITEMPREPAINT || !m_source.look)
    {
        return CDRF_DODEFAULT;
    }
    const RowLook look = m_source.look(static_cast<int>(draw.nmcd.dwItemSpec));
    if (look == RowLook::Failure && m_theme != nullptr)
    {
        draw.clrText = m_theme->Colour().failure;
        return CDRF_DODEFAULT;
    }
    if (look == RowLook::Bold && m_bold != nullptr)
    {
        SelectObject(draw.nmcd.hdc, m_bold);
        return CDRF_NEWFONT;
    }
    return CDRF_DODEFAULT;
}

void ListPane::FillAfterTitles(HWND header, HDC context) const
{
    RECT free{};
    GetClientRect(header, &free);
    const LRESULT titles = SendMessageW(header, HDM_GETITEMCOUNT, 0, 0);
    RECT last{};
    if (titles > 0 &&
        SendMessageW(header, HDM_GETITEMRECT, static_cast<WPARAM>(titles - 1), reinterpret_cast<LPARAM>(&last)))
    {
        free.left = last.right;
    }
    FillRect(context, &free, m_theme->FaceBrush());
}

/// The system draws the header of a dark list light.
LRESULT ListPane::DrawHeader(NMCUSTOMDRAW& draw) const
{
    if (draw.dwDrawStage == CDDS_PREPAINT)
    {
        return CDRF_NOTIFYITEMDRAW | CDRF_NOTIFYPOSTPAINT;
    }
    if (draw.dwDrawStage == CDDS_POSTPAINT)
    {
        FillAfterTitles(draw.hdr.hwndFrom, draw.hdc);
        return CDRF_DODEFAULT;
    }
    if (draw.dwDrawStage != CDDS_ITEMPREPAINT)
    {
        return CDRF_DODEFAULT;
    }
    WCHAR title[64] = L"";
    HDITEMW item{};
    item.mask = HDI_TEXT | HDI_FORMAT;
    item.pszText = title;
    item.cchTextMax = 64;
    SendMessageW(draw.hdr.hwndFrom, HDM_GETITEMW, draw.dwItemSpec, reinterpret_cast<LPARAM>(&item));
    const std::wstring mark = (item.fmt & HDF_SORTUP) != 0     ? L" \u25B4"
                              : (item.fmt & HDF_SORTDOWN) != 0 ? L" \u25BE"
                                                               : L"";
    const std::wstring text = title + mark;
    FillRect(draw.hdc, &draw.rc, m_theme->FaceBrush());
    SetBkMode(draw.hdc, TRANSPARENT);
    SetTextColor(draw.hdc, m_theme->Colour().text);
    RECT place = draw.rc;
    InflateRect(&place, -6, 0);
    const UINT side = (item.fmt & HDF_RIGHT) != 0 ? DT_RIGHT : DT_LEFT;
    DrawTextW(draw.hdc, text.c_str(), -1, &place, side | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS | DT_NOPREFIX);
    return CDRF_SKIPDEFAULT;
}

/// Whether the control will select another row than the selected one for this message.
bool ListPane::IsSelecting(UINT message, WPARAM wParam, LPARAM lParam) const
{
    if (message == WM_KEYDOWN)
    {
        constexpr WPARAM Keys[] = {VK_UP, VK_DOWN, VK_PRIOR, VK_NEXT, VK_HOME, VK_END};
        return std::find(std::begin(Keys), std::end(Keys), wParam) != std::end(Keys);
    }
    if (message != WM_LBUTTONDOWN && message != WM_RBUTTONDOWN)
    {
        return false;
    }
    LVHITTESTINFO hit{};
    hit.pt = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    SendMessageW(m_list, LVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
    return hit.iItem >= 0 && hit.iItem != Selected();
}

/// A control may look at each row to find the selected one that it takes the selection from, which takes it a second for
/// a million rows. So that is done here, and undone when the message selected no row.
LRESULT ListPane::SelectOther(UINT message, WPARAM wParam, LPARAM lParam) const
{
    const int before = Selected();
    Select(-1, false);
    const LRESULT result = DefSubclassProc(m_list, message, wParam, lParam);
    if (before >= 0 && SendMessageW(m_list, LVM_GETSELECTEDCOUNT, 0, 0) == 0)
    {
        LVITEMW item{};
        item.stateMask = item.state = LVIS_SELECTED;
        SendMessageW(m_list, LVM_SETITEMSTATE, static_cast<WPARAM>(before), reinterpret_cast<LPARAM>(&item));
    }
    return result;
}

LRESULT CALLBACK ListPane::Subclass(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR, DWORD_PTR self)
{
    auto* pane = reinterpret_cast<ListPane*>(self);
    if (message == WM_NOTIFY && pane->m_theme != nullptr && pane->m_theme->IsDark())
    {
        auto* header = reinterpret_cast<NMHDR*>(lParam);
        if (header->code == NM_CUSTOMDRAW && header->hwndFrom == HeaderOf(window))
        {
            return pane->DrawHeader(*reinterpret_cast<NMCUSTOMDRAW*>(header));
        }
    }
    if (pane->IsSelecting(message, wParam, lParam) && pane->Count() > ManyRows)
    {
        return pane->SelectOther(message, wParam, lParam);
    }
    if (message == WM_NCDESTROY)
    {
        RemoveWindowSubclass(window, &ListPane::Subclass, 1);
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace zeb::view
