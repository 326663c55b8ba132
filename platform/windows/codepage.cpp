#include "platform/codepage.h"

#include "platform/text.h"

#include <climits>
#include <cstring>
#include <stdexcept>

namespace zeb::platform
{
namespace
{

constexpr unsigned Utf16 = 1200, Utf16BigEndian = 1201;

/// The two code pages that MultiByteToWideChar does not convert, because no conversion is needed.
WideString Units(const std::string& bytes, bool isBigEndian)
{
    WideString units(bytes.size() / 2, L'\0');
    for (size_t i = 0; i < units.size(); ++i)
    {
        const auto first = static_cast<unsigned char>(bytes[2 * i]);
        const auto second = static_cast<unsigned char>(bytes[2 * i + 1]);
        units[i] = static_cast<WCHAR>(isBigEndian ? first << 8 | second : second << 8 | first);
    }
    if (bytes.size() % 2 != 0)
    {
        units += static_cast<WCHAR>(0xFFFD);
    }
    return units;
}

} // namespace

bool Utf8FromCodePage(const std::string& bytes, unsigned codePage, std::string& utf8)
{
    if (bytes.size() > INT_MAX)
    {
        throw std::length_error("a text of more than 2^31 - 1 bytes cannot be converted");
    }
    const bool isUtf16 = codePage == Utf16 || codePage == Utf16BigEndian;
    if (!isUtf16 && !IsValidCodePage(codePage))
    {
        return false;
    }
    WideString wide;
    if (isUtf16)
    {
        wide = Units(bytes, codePage == Utf16BigEndian);
    }
    else if (!bytes.empty())
    {
        const int length = static_cast<int>(bytes.size());
        wide.resize(static_cast<size_t>(MultiByteToWideChar(codePage, 0, bytes.data(), length, nullptr, 0)));
        MultiByteToWideChar(codePage, 0, bytes.data(), length, wide.data(), static_cast<int>(wide.size()));
    }
    utf8 = Utf8FromWide(wide.data(), wide.size());
    return true;
}

} // namespace zeb::platform
