#include "platform/windows/text.h"

#include <climits>
#include <stdexcept>

namespace zeb::platform
{
namespace
{

int CheckedLength(size_t length)
{
    if (length > INT_MAX)
    {
        throw std::length_error("a text of more than 2^31 - 1 characters cannot be converted");
    }
    return static_cast<int>(length);
}

} // namespace

std::string NarrowFromWide(const WCHAR* text, size_t length)
{
    const int count = CheckedLength(length);
    const int size = count == 0 ? 0 : WideCharToMultiByte(CP_ACP, 0, text, count, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(size), '\0');
    if (size > 0)
    {
        WideCharToMultiByte(CP_ACP, 0, text, count, out.data(), size, nullptr, nullptr);
    }
    return out;
}

WideString WideFromNarrow(const char* text, size_t length)
{
    const int count = CheckedLength(length);
    const int size = count == 0 ? 0 : MultiByteToWideChar(CP_ACP, 0, text, count, nullptr, 0);
    WideString out(static_cast<size_t>(size), L'\0');
    if (size > 0)
    {
        MultiByteToWideChar(CP_ACP, 0, text, count, out.data(), size);
    }
    return out;
}

size_t PrefixInCodePage(UINT codePage, const char* text, size_t length, size_t limit)
{
    if (codePage == CP_UTF8)
    {
        return Utf8Prefix(text, length, limit);
    }
    size_t end = 0;
    while (end < length)
    {
        const size_t next = end + (IsDBCSLeadByteEx(codePage, static_cast<BYTE>(text[end])) ? 2 : 1);
        if (next > limit)
        {
            break;
        }
        end = next;
    }
    return end < length ? end : length;
}

size_t NarrowPrefix(const char* text, size_t length, size_t limit)
{
    return PrefixInCodePage(GetACP(), text, length, limit);
}

WCHAR UpperWide(WCHAR unit)
{
    WCHAR upper = unit;
    LCMapStringW(LOCALE_INVARIANT, LCMAP_UPPERCASE, &unit, 1, &upper, 1);
    return upper;
}

} // namespace zeb::platform
