#include "tools/zebview/Theme.h"

#include <commctrl.h>

namespace zeb::view
{
namespace
{

constexpr DWORD DarkFrameAttribute = 20; // DWMWA_USE_IMMERSIVE_DARK_MODE of later headers
constexpr WCHAR PersonalizeKey[] = L"Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";

/// A function that older systems do not have; null there.
template <class Function>
Function* FunctionOf(const WCHAR* library, const char* name)
{
    // The libraries stay loaded: the system's controls use them anyway.
    HMODULE module = LoadLibraryExW(library, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (module == nullptr)
    {
        return nullptr;
    }
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

UINT DpiOf(HWND window)
{
    static auto* const ofWindow = FunctionOf<UINT WINAPI(HWND)>(L"user32.dll", "GetDpiForWindow");
    const UINT dpi = ofWindow != nullptr && window != nullptr ? ofWindow(window) : 0;
    if (dpi != 0)
    {
        return dpi;
    }
    HDC screen = GetDC(nullptr);
    const int ofScreen = GetDeviceCaps(screen, LOGPIXELSY);
    ReleaseDC(nullptr, screen);
    return ofScreen > 0 ? static_cast<UINT>(ofScreen) : 96;
}

bool WantsDark()
{
    DWORD isLight = 1, size = sizeof isLight;
    RegGetValueW(HKEY_CURRENT_USER, PersonalizeKey, L"AppsUseLightTheme", RRF_RT_REG_DWORD, nullptr, &isLight, &size);
    return isLight == 0;
}

LOGFONTW MessageFont(const Scale& scale)
{
    static auto* const forDpi =
        FunctionOf<BOOL WINAPI(UINT, UINT, PVOID, UINT, UINT)>(L"user32.dll", "SystemParametersInfoForDpi");
    NONCLIENTMETRICSW metrics{};
    metrics.cbSize = sizeof metrics;
    if (forDpi != nullptr && forDpi(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0, scale.Dpi()))
    {
        return metrics.lfMessageFont;
    }
    SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, metrics.cbSize, &metrics, 0);
    metrics.lfMessageFont.lfHeight =
        MulDiv(metrics.lfMessageFont.lfHeight, static_cast<int>(scale.Dpi()), static_cast<int>(DpiOf(nullptr)));
    return metrics.lfMessageFont;
}

constexpr UINT_PTR BackgroundId = 2;

LRESULT CALLBACK Background(HWND window, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id, DWORD_PTR brush)
{
    if (message == WM_ERASEBKGND)
    {
        RECT client{};
        GetClientRect(window, &client);
        FillRect(reinterpret_cast<HDC>(wParam), &client, reinterpret_cast<HBRUSH>(brush));
        return 1;
    }
    if (message == WM_NCDESTROY)
    {
        RemoveWindowSubclass(window, &Background, id);
    }
    return DefSubclassProc(window, message, wParam, lParam);
}

} // namespace

Scale::Scale(HWND window)
    : m_dpi(DpiOf(window))
{
}

Fonts Fonts::For(const Scale& scale)
{
    LOGFONTW font = MessageFont(scale);
    Fonts fonts;
    fonts.plain = Font(CreateFontIndirectW(&font));
    font.lfWeight = FW_BOLD;
    fonts.bold = Font(CreateFontIndirectW(&font));
    LOGFONTW fixed{};
    fixed.lfHeight = font.lfHeight;
    fixed.lfPitchAndFamily = FIXED_PITCH | FF_MODERN;
    lstrcpynW(fixed.lfFaceName, L"Consolas", LF_FACESIZE);
    fonts.fixed = Font(CreateFontIndirectW(&fixed));
    return fonts;
}

const Colours& Colours::Light()
{
    static const Colours Light = {GetSysColor(COLOR_WINDOW),   GetSysColor(COLOR_WINDOWTEXT),
                                  GetSysColor(COLOR_BTNFACE),  GetSysColor(COLOR_BTNSHADOW),
                                  GetSysColor(COLOR_GRAYTEXT), RGB(176, 0, 32)};
    return Light;
}

const Colours& Colours::Dark()
{
    static const Colours Dark = {RGB(30, 30, 30), RGB(230, 230, 230), RGB(45, 45, 45),
                                 RGB(80, 80, 80), RGB(160, 160, 160), RGB(255, 130, 130)};
    return Dark;
}

Theme::Theme()
    : m_isDark(WantsDark())
    , m_window(CreateSolidBrush(Colour().window))
    , m_face(CreateSolidBrush(Colour().face))
{
}

void Theme::ApplyToFrame(HWND window) const
{
    static auto* const setAttribute =
        FunctionOf<HRESULT WINAPI(HWND, DWORD, LPCVOID, DWORD)>(L"dwmapi.dll", "DwmSetWindowAttribute");
    if (setAttribute != nullptr)
    {
        const BOOL isDark = m_isDark;
        setAttribute(window, DarkFrameAttribute, &isDark, sizeof isDark);
    }
}

void Theme::ApplyToControl(HWND control) const
{
    static auto* const setTheme = FunctionOf<HRESULT WINAPI(HWND, LPCWSTR, LPCWSTR)>(L"uxtheme.dll", "SetWindowTheme");
    if (setTheme != nullptr)
    {
        setTheme(control, m_isDark ? L"DarkMode_Explorer" : L"Explorer", nullptr);
    }
}

void Theme::FillBackground(HWND control, HBRUSH brush)
{
    SetWindowSubclass(control, &Background, BackgroundId, reinterpret_cast<DWORD_PTR>(brush));
}

} // namespace zeb::view
