#include "tools/zebview/ValueWindow.h"

#include "tools/zebview/WideText.h"

namespace zeb::view
{
namespace
{

constexpr WCHAR ValueClass[] = L"ZebViewValue";
constexpr int Width = 720, Height = 420;

} // namespace

std::wstring EditText(const std::string& text)
{
    std::wstring lines;
    for (const WCHAR character : Wide(text))
    {
        if (character == L'\n' && (lines.empty() || lines.back() != L'\r'))
        {
            lines += L'\r';
        }
        // An edit control ends at a zero.
        lines += character == L'\0' ? L'\uFFFD' : character;
    }
    return lines;
}

ValueWindow::ValueWindow(HWND owner, const std::string& title, const std::string& text)
{
    const Scale scale(owner);
    Create({ValueClass, WS_OVERLAPPEDWINDOW, 0, scale(Width), scale(Height)}, title, owner, nullptr);
    m_edit = CreateWindowExW(
        0, L"EDIT", L"", WS_CHILD | WS_VISIBLE | WS_VSCROLL | WS_HSCROLL | ES_MULTILINE | ES_READONLY | ES_AUTOHSCROLL,
        0, 0, 0, 0, Handle(), reinterpret_cast<HMENU>(1), GetModuleHandleW(nullptr), nullptr);
    SendMessageW(m_edit, EM_SETLIMITTEXT, 0, 0);
    m_theme.ApplyToFrame(Handle());
    m_theme.ApplyToControl(m_edit);
    SetFonts();
    SetWindowTextW(m_edit, EditText(text).c_str());
    ShowWindow(Handle(), SW_SHOW);
    SetFocus(m_edit);
}

void ValueWindow::SetFonts()
{
    m_fonts = Fonts::For(Scale(Handle()));
    SendMessageW(m_edit, WM_SETFONT, reinterpret_cast<WPARAM>(m_fonts.fixed.Get()), TRUE);
}

LRESULT ValueWindow::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message)
    {
    case WM_SIZE:
        MoveWindow(m_edit, 0, 0, LOWORD(lParam), HIWORD(lParam), TRUE);
        return 0;
    case WM_SETFOCUS:
        SetFocus(m_edit);
        return 0;
    case WM_CTLCOLOREDIT:
    case WM_CTLCOLORSTATIC: // of an edit control that is read-only
        SetTextColor(reinterpret_cast<HDC>(wParam), m_theme.Colour().text);
        SetBkColor(reinterpret_cast<HDC>(wParam), m_theme.Colour().window);
        return reinterpret_cast<LRESULT>(m_theme.WindowBrush());
    case 0x02E0: // WM_DPICHANGED
    {
        const RECT& place = *reinterpret_cast<const RECT*>(lParam);
        SetWindowPos(Handle(), nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
        SetFonts();
        return 0;
    }
    default:
        return DefWindowProcW(Handle(), message, wParam, lParam);
    }
}

void ValueWindow::OnFailure(const std::string& failure)
{
    SetWindowTextW(m_edit, EditText(failure).c_str());
}

} // namespace zeb::view
