// printf-style formatting, identical on both targets.
#pragma once

#include "framework/TextBuffer.h"
#include "platform/mapi.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace zeb::framework
{

/// Appends `format` with Windows' length modifiers I64 and I32 replaced by the C forms ("%I64d" as "%lld", "%I32u" as
/// "%u").
inline void AppendPortableFormat(TextBuffer<char>& result, const char* format)
{
    for (const char* at = format; *at != '\0'; ++at)
    {
        result.Append(*at);
        if (*at != '%')
        {
            continue;
        }
        if (at[1] == '%')
        {
            result.Append(*++at);
            continue;
        }
        while (at[1] != '\0' && std::strchr("+- #0123456789.*", at[1]) != nullptr)
        {
            result.Append(*++at);
        }
        if (at[1] == 'I' && ((at[2] == '6' && at[3] == '4') || (at[2] == '3' && at[3] == '2')))
        {
            result.Append("ll", at[2] == '6' ? 2 : 0);
            at += 3;
        }
    }
}

/// vsprintf into `text`, which is empty. A format or an argument that the C library rejects gives an empty text.
inline void FormatText(TextBuffer<char>& text, const char* format, va_list args)
{
    TextBuffer<char> portable;
    if (std::strchr(format, 'I') != nullptr)
    {
        AppendPortableFormat(portable, format);
        format = portable.Data();
    }
    char buffer[256];
    va_list again;
    va_copy(again, args);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, args);
    if (length >= 0 && static_cast<size_t>(length) < sizeof buffer)
    {
        text.Assign(buffer, static_cast<size_t>(length));
    }
    else if (length >= 0)
    {
        text.Resize(static_cast<size_t>(length));
        std::vsnprintf(text.Data(), text.Length() + 1, format, again);
    }
    va_end(again);
}

/// One conversion of a 16-bit format, such as "%-8.3I64d".
class WideConversion
{
public:
    using Wide = TextBuffer<WCHAR>;

    /// REQUIRES: `at` points after the '%'. Advances it past the conversion.
    explicit WideConversion(const WCHAR*& at)
    {
        for (; IsOneOf(*at, "+- #0"); ++at)
        {
            AddFlag(static_cast<char>(*at));
        }
        m_width = Number(at);
        if (*at == '.')
        {
            ++at;
            m_precision = Number(at);
            m_precision = m_precision == none ? 0 : m_precision;
        }
        Length(at);
        if (*at != 0)
        {
            m_kind = static_cast<char>(*at < 128 ? *at : '?');
            ++at;
        }
    }

    /// Reads the conversion's arguments and appends its text. `args` points to a va_list, so that it advances.
    void Append(Wide& out, va_list* args)
    {
        m_width = m_width == argument ? va_arg(*args, int) : m_width;
        m_precision = m_precision == argument ? va_arg(*args, int) : m_precision;
        switch (m_kind)
        {
        case '%':
            out.Append(WCHAR('%'));
            break;
        case 'c':
            AppendCharacter(out, static_cast<WCHAR>(va_arg(*args, int)));
            break;
        case 's':
        case 'S':
            AppendString(out, args);
            break;
        case 'e':
        case 'E':
        case 'f':
        case 'F':
        case 'g':
        case 'G':
        case 'a':
        case 'A':
            AppendNarrow(out, "", va_arg(*args, double));
            break;
        case 'p':
            AppendNarrow(out, "", va_arg(*args, void*));
            break;
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
            AppendInteger(out, args);
            break;
        default:
            break;
        }
    }

private:
    static constexpr int none = -1;
    static constexpr int argument = -2;

    static bool IsOneOf(WCHAR c, const char* set)
    {
        while (*set != '\0' && WCHAR(*set) != c)
        {
            ++set;
        }
        return *set != '\0';
    }

    /// Stores each flag once: the array has room for all of them.
    void AddFlag(char flag)
    {
        if (std::strchr(m_flags, flag) == nullptr)
        {
            m_flags[std::strlen(m_flags)] = flag;
        }
    }

    static int Number(const WCHAR*& at)
    {
        if (*at == '*')
        {
            ++at;
            return argument;
        }
        int value = none;
        while (*at >= '0' && *at <= '9')
        {
            value = std::min((value == none ? 0 : value) * 10 + (*at++ - '0'), 100000);
        }
        return value;
    }

    void Length(const WCHAR*& at)
    {
        if (at[0] == 'I' && at[1] == '6' && at[2] == '4')
        {
            m_bits = 64;
            at += 3;
        }
        else if (at[0] == 'I' && at[1] == '3' && at[2] == '2')
        {
            at += 3;
        }
        else if (at[0] == 'l' && at[1] == 'l')
        {
            m_bits = 64;
            at += 2;
        }
        else if (*at == 'z' || *at == 't' || *at == 'j')
        {
            m_bits = 64;
            ++at;
        }
        else if (*at == 'l')
        {
            m_bits = sizeof(long) * 8;
            m_wide = true;
            ++at;
        }
        while (*at == 'h')
        {
            m_bits = m_bits == 16 ? 8 : 16;
            m_narrow = true;
            ++at;
        }
    }

    void AppendCharacter(Wide& out, WCHAR character) { AppendPadded(out, Wide(&character, 1)); }

    void AppendString(Wide& out, va_list* args)
    {
        const size_t limit = m_precision < 0 ? size_t(-1) : size_t(m_precision);
        Wide text;
        if ((m_kind == 'S' || m_narrow) && !m_wide)
        {
            const char* from = va_arg(*args, const char*);
            for (from = from == nullptr ? "(null)" : from; *from != '\0' && text.Length() < limit; ++from)
            {
                text.Append(static_cast<WCHAR>(static_cast<unsigned char>(*from) < 128 ? *from : '?'));
            }
        }
        else
        {
            const WCHAR* from = va_arg(*args, const WCHAR*);
            for (from = from == nullptr ? ZEBW("(null)") : from; *from != 0 && text.Length() < limit; ++from)
            {
                text.Append(*from);
            }
        }
        AppendPadded(out, text);
    }

    void AppendPadded(Wide& out, const Wide& text)
    {
        const bool left = m_width < -1 || std::strchr(m_flags, '-') != nullptr;
        const size_t width = m_width < -1 ? size_t(-m_width) : m_width < 0 ? 0 : size_t(m_width);
        const size_t padding = text.Length() < width ? width - text.Length() : 0;
        out.Append(left ? 0 : padding, WCHAR(' '));
        out.Append(text.Data(), text.Length());
        out.Append(left ? padding : 0, WCHAR(' '));
    }

    void AppendInteger(Wide& out, va_list* args)
    {
        const bool isSigned = m_kind == 'd' || m_kind == 'i';
        if (m_bits == 64 && isSigned)
        {
            AppendNarrow(out, "ll", static_cast<long long>(va_arg(*args, int64_t)));
        }
        else if (m_bits == 64)
        {
            AppendNarrow(out, "ll", static_cast<unsigned long long>(va_arg(*args, uint64_t)));
        }
        else
        {
            AppendNarrow(out, m_bits == 8 ? "hh" : m_bits == 16 ? "h" : "", va_arg(*args, int));
        }
    }

    /// Formats a number as narrow text, which is ASCII, and appends it.
    template <class T>
    void AppendNarrow(Wide& out, const char* length, T value)
    {
        char precision[16] = "";
        if (m_precision >= 0)
        {
            std::snprintf(precision, sizeof precision, ".%d", m_precision);
        }
        char format[40];
        std::snprintf(format, sizeof format, "%%%s%s%s%s%c", m_flags, m_width == none ? "" : "*", precision, length,
                      m_kind);
        const auto print = [&](char* to, size_t size)
        {
            return m_width == none ? std::snprintf(to, size, format, value)
                                   : std::snprintf(to, size, format, m_width, value);
        };
        TextBuffer<char> text;
        const int size = print(nullptr, 0);
        text.Resize(static_cast<size_t>(std::max(size, 0)));
        print(text.Data(), text.Length() + 1);
        out.Reserve(text.Length());
        for (size_t i = 0; i < text.Length(); ++i)
        {
            out.Append(static_cast<WCHAR>(text.Data()[i]));
        }
    }

    char m_flags[8] = {}; ///< the five flags, terminated
    int m_width = none;
    int m_precision = none;
    int m_bits = 32;
    bool m_wide = false;
    bool m_narrow = false;
    char m_kind = '\0';
};

/// Appends printf's 16-bit text to `text`: %s takes 16-bit text, %S and %hs narrow
/// text of which only ASCII is kept ('?' otherwise).
inline void FormatText(TextBuffer<WCHAR>& text, const WCHAR* format, va_list args)
{
    va_list walk;
    va_copy(walk, args);
    for (const WCHAR* at = format; *at != 0;)
    {
        if (*at != '%')
        {
            text.Append(*at++);
            continue;
        }
        ++at;
        WideConversion(at).Append(text, &walk);
    }
    va_end(walk);
}

} // namespace zeb::framework
