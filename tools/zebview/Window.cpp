#include "tools/zebview/Window.h"

#include "tools/common/Failure.h"
#include "tools/zebview/WideText.h"

namespace zeb::view
{
namespace
{

void RegisterWindowClass(const WCHAR* name, WNDPROC procedure)
{
    WNDCLASSEXW description{};
    description.cbSize = sizeof description;
    description.lpfnWndProc = procedure;
    description.hInstance = GetModuleHandleW(nullptr);
    description.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)); // the arrow
    description.hIcon = LoadIconW(nullptr, MAKEINTRESOURCEW(32512));     // that of an application
    description.lpszClassName = name;
    RegisterClassExW(&description); // fails when the class is there already
}

} // namespace

Window::~Window()
{
    if (m_window != nullptr)
    {
        SetWindowLongPtrW(m_window, GWLP_USERDATA, 0);
        DestroyWindow(m_window);
    }
}

void Window::Create(const Style& style, const std::string& title, HWND parent, HMENU menu)
{
    RegisterWindowClass(style.className, &Procedure);
    if (CreateWindowExW(style.extended, style.className, Wide(title).c_str(), style.style, CW_USEDEFAULT, CW_USEDEFAULT,
                        style.width, style.height, parent, menu, GetModuleHandleW(nullptr), this) == nullptr)
    {
        throw tools::ToolError("the window cannot be created: error " + std::to_string(GetLastError()));
    }
}

LRESULT CALLBACK Window::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* self = reinterpret_cast<Window*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_NCCREATE)
    {
        self = static_cast<Window*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        self->m_window = window;
        SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
    }
    if (self == nullptr)
    {
        return DefWindowProcW(window, message, wParam, lParam);
    }
    if (message == WM_NCDESTROY)
    {
        SetWindowLongPtrW(window, GWLP_USERDATA, 0);
        self->m_window = nullptr;
        return DefWindowProcW(window, message, wParam, lParam);
    }
    try
    {
        return self->OnMessage(message, wParam, lParam);
    }
    catch (...)
    {
        self->OnFailure(tools::CurrentFailure());
        return 0;
    }
}

} // namespace zeb::view
