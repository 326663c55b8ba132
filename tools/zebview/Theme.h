// Sizes, fonts and colours as the system has them: its scale of the screen, its font, its light or dark mode.
#pragma once

#include "tools/zebview/Handles.h"

namespace zeb::view
{

/// Pixels of a screen with a number of dots per inch.
class Scale
{
public:
    explicit Scale(HWND window);
    explicit Scale(UINT dpi)
        : m_dpi(dpi)
    {
    }

    UINT Dpi() const { return m_dpi; }
    /// Pixels of a screen with 96 dots per inch, in pixels of this one.
    int operator()(int pixels) const { return MulDiv(pixels, static_cast<int>(m_dpi), 96); }
    /// The inverse.
    int Unscaled(int pixels) const { return MulDiv(pixels, 96, static_cast<int>(m_dpi)); }

private:
    UINT m_dpi;
};

/// The fonts of a window.
struct Fonts
{
    Font plain, bold, fixed;

    /// The system's font for messages, and one of equal width.
    static Fonts For(const Scale& scale);
};

struct Colours
{
    COLORREF window, text, face, line, grey, failure;

    static const Colours& Light();
    static const Colours& Dark();
};

/// Light or dark. What the system does not offer is left as it is.
class Theme
{
public:
    Theme();

    bool IsDark() const { return m_isDark; }
    const Colours& Colour() const { return m_isDark ? Colours::Dark() : Colours::Light(); }
    HBRUSH WindowBrush() const { return m_window.Get(); }
    HBRUSH FaceBrush() const { return m_face.Get(); }
    /// The frame of a window.
    void ApplyToFrame(HWND window) const;
    /// Scroll bars and the like of a control.
    void ApplyToControl(HWND control) const;
    /// Fills what a control leaves free, from now on with `brush`, which must outlive the control or the next call: the system has
    /// a colour of its own for some.
    static void FillBackground(HWND control, HBRUSH brush);

private:
    bool m_isDark;
    Brush m_window, m_face;
};

} // namespace zeb::view
