#include "tools/common/Output.h"

#include "platform/utf8.h"

#include <utf8proc.h>

#include <cstdio>
#include <stdexcept>

namespace zeb::tools
{
namespace
{

constexpr const char* Ellipsis = "\xE2\x80\xA6";

} // namespace

std::string Utf8(const CStringW& text)
{
    return platform::Utf8FromWide(static_cast<const WCHAR*>(text), static_cast<size_t>(text.GetLength()));
}

std::string Utf8FromNarrow(const std::string& text)
{
    const platform::WideString wide = platform::WideFromNarrow(text.data(), text.size());
    return platform::Utf8FromWide(wide.data(), wide.size());
}

std::string ValidUtf8(const std::string& text)
{
    const platform::WideString wide = platform::WideFromUtf8(text.data(), text.size());
    return platform::Utf8FromWide(wide.data(), wide.size());
}

CStringW WideFromUtf8(const std::string& text)
{
    return CStringW(platform::WideFromUtf8(text.data(), text.size()).c_str());
}

std::string NarrowFromUtf8(const std::string& text)
{
    const platform::WideString wide = platform::WideFromUtf8(text.data(), text.size());
    return platform::NarrowFromWide(wide.data(), wide.size());
}

std::string OneLine(std::string text)
{
    for (size_t i = 0; i < text.size(); ++i)
    {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7F)
        {
            text[i] = ' ';
        }
        // U+0080 to U+009F control a terminal too.
        else if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0)
        {
            text.replace(i, 2, " ");
        }
    }
    return text;
}

size_t NextColumns(std::string_view text, size_t& at)
{
    const char32_t code = platform::NextCodePoint(text, at, platform::LoneSurrogate::Replaced);
    return static_cast<size_t>(utf8proc_charwidth(static_cast<utf8proc_int32_t>(code)));
}

size_t DisplayWidth(std::string_view text)
{
    size_t width = 0;
    for (size_t at = 0; at < text.size();)
    {
        width += NextColumns(text, at);
    }
    return width;
}

std::string Shortened(const std::string& text, size_t width)
{
    if (width == 0 || DisplayWidth(text) <= width)
    {
        return text;
    }
    size_t used = 0, end = 0;
    for (size_t at = 0; at < text.size(); end = at)
    {
        used += NextColumns(text, at);
        if (used > width - 1)
        {
            break;
        }
    }
    return text.substr(0, end) + Ellipsis;
}

std::string Fitted(const std::string& text, size_t width)
{
    std::string fitted = Shortened(text, width);
    const size_t used = DisplayWidth(fitted);
    fitted.append(used < width ? width - used : 0, ' ');
    return fitted;
}

std::string RightAligned(const std::string& text, size_t width)
{
    const size_t used = DisplayWidth(text);
    return std::string(used < width ? width - used : 0, ' ') + text;
}

std::string Grouped(unsigned long long number)
{
    std::string text = std::to_string(number);
    for (size_t at = text.size(); at > 3;)
    {
        at -= 3;
        text.insert(at, ",");
    }
    return text;
}

std::string Counted(unsigned long long count, const char* one, const char* many)
{
    return Grouped(count) + " " + (count == 1 ? one : many);
}

void Print(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size())
    {
        throw std::runtime_error("standard output cannot be written");
    }
}

void FlushOutput()
{
    if (std::fflush(stdout) != 0 || std::ferror(stdout))
    {
        throw std::runtime_error("standard output cannot be written");
    }
}

} // namespace zeb::tools
