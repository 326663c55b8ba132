// A window with one text.
#pragma once

#include "tools/zebview/Theme.h"
#include "tools/zebview/Window.h"

namespace zeb::view
{

/// Shows a text that can be selected and copied; Escape closes it. It stays until it is closed, and ends with its owner.
class ValueWindow : public Window
{
public:
    /// @param text UTF-8, lines end with "\n" or "\r\n"
    ValueWindow(HWND owner, const std::string& title, const std::string& text);

    bool IsOpen() const { return Handle() != nullptr; }

private:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnFailure(const std::string& failure) override;
    void SetFonts();

    HWND m_edit = nullptr;
    Theme m_theme;
    Fonts m_fonts;
};

/// A text with "\r\n" at the end of each line, as edit controls need it.
std::wstring EditText(const std::string& text);

} // namespace zeb::view
