// A window with a class and a procedure of its own.
#pragma once

#include "platform/mapi.h"

#include <string>

namespace zeb::view
{

/// A window whose messages come to OnMessage. Destroys the window when it is destroyed.
///
/// Nothing that OnMessage throws leaves the window procedure: it is described to OnFailure. Threads: the one that creates it.
class Window
{
public:
    Window() = default;
    virtual ~Window();
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    HWND Handle() const { return m_window; }

protected:
    struct Style
    {
        const WCHAR* className;
        DWORD style, extended;
        int width, height; ///< CW_USEDEFAULT leaves them to the system
    };

    /// @throws ToolError when the system refuses
    void Create(const Style& style, const std::string& title, HWND parent, HMENU menu);
    virtual LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) = 0;
    /// @param failure one line, UTF-8. Must not throw.
    virtual void OnFailure(const std::string& failure) = 0;

private:
    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_window = nullptr;
};

} // namespace zeb::view
