#include "platform/narrow.h"

#include "platform/text.h"

namespace zeb::platform
{

std::string NarrowFromUtf8(const std::string& text)
{
    const WideString wide = WideFromUtf8(text.data(), text.size());
    return NarrowFromWide(wide.data(), wide.size());
}

std::string Utf8FromNarrow(const std::string& text)
{
    const WideString wide = WideFromNarrow(text.data(), text.size());
    return Utf8FromWide(wide.data(), wide.size());
}

std::optional<std::string> NarrowablePath(const std::string& path)
{
    if (Utf8FromNarrow(NarrowFromUtf8(path)) == path)
    {
        return path;
    }
    const WideString whole = WideFromUtf8(path.data(), path.size());
    WideString shorter(whole.size() + 1, L'\0');
    const DWORD length = GetShortPathNameW(whole.c_str(), shorter.data(), static_cast<DWORD>(shorter.size()));
    if (length == 0 || length >= shorter.size())
    {
        return std::nullopt;
    }
    const std::string text = Utf8FromWide(shorter.data(), length);
    return Utf8FromNarrow(NarrowFromUtf8(text)) == text ? std::optional<std::string>(text) : std::nullopt;
}

} // namespace zeb::platform
