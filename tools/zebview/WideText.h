// UTF-8, which the models use, as the UTF-16 of windows.
#pragma once

#include "platform/text.h"

#include <string>

namespace zeb::view
{

inline std::wstring Wide(const std::string& text)
{
    return platform::WideFromUtf8(text.data(), text.size());
}

inline std::string Utf8Of(const std::wstring& text)
{
    return platform::Utf8FromWide(text.data(), text.size());
}

/// The text of a window.
inline std::string TextOfWindow(HWND window)
{
    std::wstring text(static_cast<size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
    text.resize(static_cast<size_t>(GetWindowTextW(window, text.data(), static_cast<int>(text.size()))));
    return Utf8Of(text);
}

} // namespace zeb::view
