#include "tools/zebview/MainWindow.h"

#include "tools/zebview/Ids.h"
#include "tools/zebview/Menu.h"
#include "tools/zebview/WideText.h"

#include <windowsx.h>

namespace zeb::view
{
namespace
{

constexpr WCHAR MainClass[] = L"ZebView";
constexpr int FirstWidth = 1180, FirstHeight = 780;
constexpr UINT DpiChangedMessage = 0x02E0; // WM_DPICHANGED of later headers
constexpr UINT LogMilliseconds = 200;
constexpr DWORD ChildStyle = WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS;

HWND CreateControl(HWND parent, const WCHAR* type, const WCHAR* text, DWORD style, int id, DWORD extended = 0)
{
    return CreateWindowExW(extended, type, text, style, 0, 0, 0, 0, parent,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleW(nullptr), nullptr);
}

int LineHeight(HWND window, HFONT font)
{
    HDC context = GetDC(window);
    HGDIOBJ before = SelectObject(context, font);
    TEXTMETRICW metrics{};
    GetTextMetricsW(context, &metrics);
    SelectObject(context, before);
    ReleaseDC(window, context);
    return metrics.tmHeight;
}

} // namespace

MainWindow::MainWindow(CallLog& log, const std::string& profile)
    : m_log(log)
    , m_scale(nullptr)
    , m_keys(MakeAccelerators())
    , m_profile(profile)
{
    Create({MainClass, WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN, 0, m_scale(FirstWidth), m_scale(FirstHeight)}, "zebview",
           nullptr, MakeMenu());
    m_scale = Scale(Handle());
    CreatePanes();
    CreateDetailPanes();
    SetTheme();
    SetFonts();
    ShowPage(0);
    ShowWindow(Handle(), SW_SHOW);
    UpdateWindow(Handle());
    SetTimer(Handle(), TimerLog, LogMilliseconds, nullptr);
    ListProfiles();
    OpenProfile(profile);
}

MainWindow::~MainWindow()
{
    CloseProfile();
}

void MainWindow::CreatePanes()
{
    m_profileLabel = CreateControl(Handle(), L"STATIC", L"Profile", ChildStyle | SS_NOPREFIX, IdProfileLabel);
    m_profiles =
        CreateControl(Handle(), L"COMBOBOX", L"", ChildStyle | WS_TABSTOP | WS_VSCROLL | CBS_DROPDOWNLIST, IdProfile);
    m_filterLabel = CreateControl(Handle(), L"STATIC", L"Filter", ChildStyle | SS_NOPREFIX, IdFilterLabel);
    m_filter =
        CreateControl(Handle(), L"EDIT", L"", ChildStyle | WS_TABSTOP | ES_AUTOHSCROLL, IdFilter, WS_EX_CLIENTEDGE);
    m_tree.Create(Handle(), IdTree);
    m_list.Create(Handle(), IdList, "Messages",
                  {[this](int row, int column) { return m_rows ? m_rows->Text(static_cast<ULONG>(row), column) : ""; },
                   [this](int row)
    { return m_rows && m_rows->IsUnread(static_cast<ULONG>(row)) ? RowLook::Bold : RowLook::Plain; }});
    ShowWindow(m_list.Handle(), SW_SHOW);
}

void MainWindow::CreateDetailPanes()
{
    const DWORD drawn = m_theme.IsDark() ? TCS_OWNERDRAWFIXED : 0;
    m_tabs = CreateControl(Handle(), WC_TABCONTROLW, L"", ChildStyle | WS_TABSTOP | drawn, IdTabs);
    m_text = CreateControl(Handle(), L"EDIT", L"",
                           WS_CHILD | WS_CLIPSIBLINGS | WS_TABSTOP | WS_VSCROLL | ES_MULTILINE | ES_READONLY, IdText,
                           WS_EX_CLIENTEDGE);
    SendMessageW(m_text, EM_SETLIMITTEXT, 0, 0);
    const auto cells = [this](int page)
    { return [this, page](int row, int column) { return CellOfDetail(page, row, column); }; };
    m_properties.Create(Handle(), IdProperties, "Properties", {cells(1), {}});
    m_properties.SetColumns({{"Property", 260, false}, {"Type", 110, false}, {"Value", 520, false}}, m_scale);
    m_recipients.Create(Handle(), IdRecipients, "Recipients", {cells(2), {}});
    m_recipients.SetColumns({{"Kind", 80, false}, {"Name", 260, false}, {"Address", 360, false}}, m_scale);
    m_attachments.Create(Handle(), IdAttachments, "Attachments", {cells(3), {}});
    m_attachments.SetColumns({{"Name", 380, false}, {"Size", 100, true}, {"Kind", 160, false}}, m_scale);
    m_calls.Create(Handle(), IdLog, "Log of calls",
                   {[this](int row, int column) { return CellOfDetail(4, row, column); }, [this](int row)
    { return m_log.Lines()[static_cast<size_t>(row)].isFailure ? RowLook::Failure : RowLook::Plain; }});
    m_calls.SetColumns({{"#", 70, true}, {"Call", 300, false}, {"Result", 240, false}, {"Text", 500, false}}, m_scale);
    ShowWindow(m_calls.Handle(), SW_SHOW);
    m_status = CreateControl(Handle(), L"STATIC", L"", ChildStyle | SS_NOPREFIX | SS_ENDELLIPSIS, IdStatus);
    ShowTabs();
}

LRESULT MainWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_SIZE:
        ArrangePanes();
        return 0;
    case WM_ACTIVATE:
        if (LOWORD(wParam) == WA_INACTIVE && IsChild(Handle(), GetFocus()))
        {
            m_focus = GetFocus();
        }
        return DefWindowProcW(Handle(), message, wParam, lParam);
    case WM_SETFOCUS:
        TakeFocus();
        return 0;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam), HIWORD(wParam));
        return 0;
    case WM_NOTIFY:
        return OnNotify(*reinterpret_cast<NMHDR*>(lParam));
    case WM_TIMER:
        OnTimer(wParam);
        return 0;
    case WM_ERASEBKGND:
    {
        RECT client{};
        GetClientRect(Handle(), &client);
        // A tree with a theme asks its parent to erase it.
        const bool isTree = WindowFromDC(reinterpret_cast<HDC>(wParam)) == m_tree.Handle();
        FillRect(reinterpret_cast<HDC>(wParam), &client, isTree ? m_theme.WindowBrush() : m_theme.FaceBrush());
        return 1;
    }
    case WM_CTLCOLORSTATIC:
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORLISTBOX:
        return ColourOf(reinterpret_cast<HDC>(wParam), reinterpret_cast<HWND>(lParam));
    case WM_DRAWITEM:
        return DrawTab(*reinterpret_cast<const DRAWITEMSTRUCT*>(lParam));
    case WM_SETCURSOR:
    case WM_LBUTTONDOWN:
    case WM_MOUSEMOVE:
    case WM_LBUTTONUP:
        return OnMouse(message, lParam) ? TRUE : DefWindowProcW(Handle(), message, wParam, lParam);
    case DpiChangedMessage:
        OnDpiChanged(LOWORD(wParam), *reinterpret_cast<const RECT*>(lParam));
        return 0;
    case WM_SETTINGCHANGE:
        SetTheme();
        return 0;
    case WM_DESTROY:
        CloseProfile();
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(Handle(), message, wParam, lParam);
    }
}

void MainWindow::OnFailure(const std::string& failure)
{
    SetStatus(failure, true);
}

LRESULT MainWindow::OnNotify(NMHDR& header)
{
    LRESULT result = 0;
    for (ListPane* pane : {&m_list, &m_properties, &m_recipients, &m_attachments, &m_calls})
    {
        if (header.hwndFrom == pane->Handle() && pane->OnNotify(header, result))
        {
            return result;
        }
    }
    if (header.idFrom == IdTree && header.code == NM_CUSTOMDRAW)
    {
        return m_tree.Draw(reinterpret_cast<NMTVCUSTOMDRAW&>(header));
    }
    if (header.idFrom == IdTree)
    {
        OnTreeNotify(header);
    }
    else if (header.idFrom == IdTabs && header.code == TCN_SELCHANGE)
    {
        ShowPage(static_cast<int>(SendMessageW(m_tabs, TCM_GETCURSEL, 0, 0)));
    }
    else
    {
        OnListNotify(header);
    }
    return 0;
}

void MainWindow::OnTreeNotify(const NMHDR& header)
{
    if (header.code == TVN_SELCHANGEDW && !m_tree.IsFilling())
    {
        OnPlaceChosen();
    }
}

void MainWindow::OnListNotify(NMHDR& header)
{
    if (header.idFrom == IdList && header.code == LVN_ITEMCHANGED)
    {
        SetTimer(Handle(), TimerDetails, 40, nullptr);
    }
    else if (header.idFrom == IdList && header.code == LVN_COLUMNCLICK)
    {
        SortBy(reinterpret_cast<NMLISTVIEW&>(header).iSubItem);
    }
    else if (header.idFrom == IdList && header.code == LVN_ITEMACTIVATE)
    {
        SetFocus(PageWindow());
    }
    else if (header.idFrom == IdProperties && header.code == LVN_ITEMACTIVATE)
    {
        OpenChosenValue();
    }
    else if (header.idFrom == IdAttachments && header.code == LVN_ITEMACTIVATE)
    {
        SaveChosenAttachment();
    }
}

void MainWindow::OnTimer(UINT_PTR timer)
{
    if (timer == TimerLog)
    {
        UpdateLog();
        return;
    }
    KillTimer(Handle(), timer);
    if (timer == TimerFilter)
    {
        ApplyFilter();
    }
    else if (timer == TimerDetails)
    {
        ShowChosenRow();
    }
}

/// The pane that had the keyboard before another window was active has it again, or the list.
void MainWindow::TakeFocus()
{
    const HWND pane = m_focus != nullptr && IsWindowVisible(m_focus) ? m_focus : m_list.Handle();
    SetFocus(pane != nullptr ? pane : Handle());
}

void MainWindow::MovePane(HWND pane, const RECT& place)
{
    MoveWindow(pane, place.left, place.top, place.right - place.left, place.bottom - place.top, TRUE);
}

void MainWindow::ArrangePanes()
{
    if (m_status == nullptr)
    {
        return; // not created yet
    }
    RECT client{};
    GetClientRect(Handle(), &client);
    m_layout.Arrange(client, m_scale, LineHeight(Handle(), m_fonts.plain.Get()));
    MovePane(m_profileLabel, m_layout.profileLabel);
    RECT list = m_layout.profile; // with what it unfolds to
    list.bottom += m_scale(240);
    MovePane(m_profiles, list);
    MovePane(m_filterLabel, m_layout.filterLabel);
    MovePane(m_filter, m_layout.filter);
    MovePane(m_tree.Handle(), m_layout.tree);
    MovePane(m_list.Handle(), m_layout.list);
    MovePane(m_tabs, m_layout.tabs);
    for (HWND page : {m_text, m_properties.Handle(), m_recipients.Handle(), m_attachments.Handle()})
    {
        MovePane(page, m_layout.page);
    }
    MovePane(m_calls.Handle(), m_layout.log);
    ShowWindow(m_calls.Handle(), m_layout.hasLog ? SW_SHOW : SW_HIDE);
    MovePane(m_status, m_layout.status);
    InvalidateRect(Handle(), nullptr, TRUE);
}

void MainWindow::SetFonts()
{
    Fonts fonts = Fonts::For(m_scale);
    for (HWND control :
         {m_profileLabel, m_profiles, m_filterLabel, m_filter, m_tree.Handle(), m_tabs, m_text, m_status})
    {
        SendMessageW(control, WM_SETFONT, reinterpret_cast<WPARAM>(fonts.plain.Get()), TRUE);
    }
    for (ListPane* pane : {&m_list, &m_properties, &m_recipients, &m_attachments, &m_calls})
    {
        pane->Rescale(m_scale, m_scale, fonts);
    }
    // Headers of a message are aligned by tabs, in quarters of a character's width.
    const UINT tab = 40;
    SendMessageW(m_text, EM_SETTABSTOPS, 1, reinterpret_cast<LPARAM>(&tab));
    const int margin = m_scale(6);
    SendMessageW(m_text, EM_SETMARGINS, EC_LEFTMARGIN | EC_RIGHTMARGIN, MAKELPARAM(margin, margin));
    m_fonts = std::move(fonts); // the former ones end with `fonts`
    ArrangePanes();
}

void MainWindow::SetTheme()
{
    m_theme = Theme();
    m_theme.ApplyToFrame(Handle());
    Theme::FillBackground(m_tabs, m_theme.FaceBrush());
    for (HWND control : {m_profiles, m_filter, m_text})
    {
        m_theme.ApplyToControl(control);
    }
    m_tree.SetTheme(m_theme);
    for (ListPane* pane : {&m_list, &m_properties, &m_recipients, &m_attachments, &m_calls})
    {
        pane->SetTheme(m_theme);
    }
    RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
}

void MainWindow::OnDpiChanged(UINT dpi, const RECT& place)
{
    const Scale before = m_scale;
    m_scale = Scale(dpi);
    for (ListPane* pane : {&m_list, &m_properties, &m_recipients, &m_attachments, &m_calls})
    {
        pane->Rescale(before, m_scale, m_fonts);
    }
    SetFonts();
    SetWindowPos(Handle(), nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                 SWP_NOZORDER | SWP_NOACTIVATE);
}

LRESULT MainWindow::ColourOf(HDC context, HWND control) const
{
    const bool isFace = control == m_status || control == m_profileLabel || control == m_filterLabel;
    const Colours& colours = m_theme.Colour();
    SetTextColor(context, control == m_status && m_statusIsFailure ? colours.failure : colours.text);
    SetBkColor(context, isFace ? colours.face : colours.window);
    return reinterpret_cast<LRESULT>(isFace ? m_theme.FaceBrush() : m_theme.WindowBrush());
}

bool MainWindow::OnMouse(UINT message, LPARAM lParam)
{
    POINT point{};
    GetCursorPos(&point);
    ScreenToClient(Handle(), &point);
    const Border at = m_moving != Border::None ? m_moving : m_layout.BorderAt(point);
    if (message == WM_SETCURSOR)
    {
        if (LOWORD(lParam) != HTCLIENT || at == Border::None)
        {
            return false;
        }
        SetCursor(LoadCursorW(nullptr, MAKEINTRESOURCEW(at == Border::Tree ? 32644 : 32645))); // the arrows of sizing
        return true;
    }
    point = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    if (message == WM_LBUTTONDOWN && m_layout.BorderAt(point) != Border::None)
    {
        m_moving = m_layout.BorderAt(point);
        SetCapture(Handle());
    }
    else if (message == WM_MOUSEMOVE && m_moving != Border::None)
    {
        RECT client{};
        GetClientRect(Handle(), &client);
        m_layout.Move(m_moving, point, client, m_scale);
        ArrangePanes();
    }
    else if (message == WM_LBUTTONUP && m_moving != Border::None)
    {
        m_moving = Border::None;
        ReleaseCapture();
    }
    return false;
}

/// Tabs are drawn here when the system would draw them light in a dark window.
LRESULT MainWindow::DrawTab(const DRAWITEMSTRUCT& draw) const
{
    WCHAR title[64] = L"";
    TCITEMW item{};
    item.mask = TCIF_TEXT;
    item.pszText = title;
    item.cchTextMax = 64;
    SendMessageW(m_tabs, TCM_GETITEMW, draw.itemID, reinterpret_cast<LPARAM>(&item));
    const bool isChosen = (draw.itemState & ODS_SELECTED) != 0;
    RECT place = draw.rcItem;
    FillRect(draw.hDC, &place, isChosen ? m_theme.WindowBrush() : m_theme.FaceBrush());
    SetBkMode(draw.hDC, TRANSPARENT);
    SetTextColor(draw.hDC, isChosen ? m_theme.Colour().text : m_theme.Colour().grey);
    DrawTextW(draw.hDC, title, -1, &place, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
    return TRUE;
}

bool MainWindow::Translate(MSG& message)
{
    if (GetAncestor(message.hwnd, GA_ROOT) != Handle())
    {
        const bool closes = message.message == WM_KEYDOWN && message.wParam == VK_ESCAPE;
        return closes && PostMessageW(GetAncestor(message.hwnd, GA_ROOT), WM_CLOSE, 0, 0);
    }
    if (TranslateAcceleratorW(Handle(), m_keys.Get(), &message) != 0)
    {
        return true;
    }
    if (message.message != WM_KEYDOWN)
    {
        return false;
    }
    if (message.wParam == VK_TAB && GetKeyState(VK_CONTROL) >= 0)
    {
        return OnTab(GetKeyState(VK_SHIFT) < 0);
    }
    if (message.hwnd == m_filter && message.wParam == VK_ESCAPE)
    {
        SetWindowTextW(m_filter, L"");
    }
    if (message.hwnd == m_filter &&
        (message.wParam == VK_ESCAPE || message.wParam == VK_DOWN || message.wParam == VK_RETURN))
    {
        SetFocus(m_list.Handle());
        return true;
    }
    return false;
}

} // namespace zeb::view
