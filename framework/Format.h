// printf-style formatting by the C library, the same on both targets.
#pragma once

#include "framework/TextBuffer.h"
#include "platform/mapi.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace zeb::framework
{

/// Whether character is one of set's.
template <class CHAR_TYPE>
bool IsOneOf(CHAR_TYPE character, const char* set)
{
    const auto code = static_cast<std::make_unsigned_t<CHAR_TYPE>>(character);
    return code != 0 && code < 128 && std::strchr(set, static_cast<char>(code)) != nullptr;
}

/// A format with Windows' length modifiers I64 and I32 replaced by the C forms ("%I64d" as "%lld", "%I32u" as "%u").
template <class CHAR_TYPE>
TextBuffer<CHAR_TYPE> PortableFormat(const CHAR_TYPE* format)
{
    TextBuffer<CHAR_TYPE> result;
    for (const CHAR_TYPE* at = format; *at != 0; ++at)
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
        while (IsOneOf(at[1], "+- #0123456789.*"))
        {
            result.Append(*++at);
        }
        if (at[1] == 'I' && ((at[2] == '6' && at[3] == '4') || (at[2] == '3' && at[3] == '2')))
        {
            result.Append(at[2] == '6' ? 2 : 0, CHAR_TYPE('l'));
            at += 3;
        }
    }
    return result;
}

/// vsprintf into `text`, which is empty. A format or an argument that the C library rejects gives an empty text.
inline void FormatText(TextBuffer<char>& text, const char* format, va_list args)
{
    TextBuffer<char> portable;
    if (std::strchr(format, 'I') != nullptr)
    {
        portable = PortableFormat(format);
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

/// One conversion of a 16-bit format, written by the C library as narrow text: the conversion of a number as it is, that
/// of a text with one mark for each of its characters, which then take the places of the marks.
class WideConversion
{
public:
    /// `args` points to a va_list, so that it advances.
    WideConversion(TextBuffer<WCHAR>& out, va_list* args)
        : m_out(out)
        , m_args(args)
    {
    }

    /// Appends the conversion whose text begins at `at`, after the '%'. @return the position after it
    const WCHAR* Append(const WCHAR* at)
    {
        m_conversion.Append('%');
        for (; IsOneOf(*at, "+- #0123456789.*"); ++at)
        {
            AppendOption(static_cast<char>(*at));
        }
        for (; IsOneOf(*at, "hlzjt"); ++at)
        {
            m_length.Append(static_cast<char>(*at));
        }
        if (*at == 0)
        {
            return at;
        }
        Convert(static_cast<char>(*at < 128 ? *at : '?'));
        return at + 1;
    }

private:
    void AppendOption(char option)
    {
        if (option != '*')
        {
            m_conversion.Append(option);
            return;
        }
        const int value = va_arg(*m_args, int);
        const bool isPrecision = m_conversion.Data()[m_conversion.Length() - 1] == '.';
        if (value < 0 && isPrecision)
        {
            m_conversion.Resize(m_conversion.Length() - 1); // as if there were none
            return;
        }
        char digits[16];
        m_conversion.Append(digits, static_cast<size_t>(std::snprintf(digits, sizeof digits, "%d", value)));
    }

    void Convert(char kind)
    {
        if (kind == '%')
        {
            m_out.Append(WCHAR('%'));
        }
        else if (kind == 'c')
        {
            const auto character = static_cast<WCHAR>(va_arg(*m_args, int));
            AppendText(&character, 1);
        }
        else if (kind == 'S' || kind == 's')
        {
            AppendString((kind == 'S' || HasLength("h")) && !HasLength("l"));
        }
        else if (IsOneOf(kind, "eEfFgGaA"))
        {
            AppendNumber(kind, va_arg(*m_args, double));
        }
        else if (kind == 'p')
        {
            AppendNumber(kind, va_arg(*m_args, void*));
        }
        else if (IsOneOf(kind, "diuxXo"))
        {
            AppendInteger(kind);
        }
    }

    bool HasLength(const char* length) const { return std::strstr(m_length.Data(), length) != nullptr; }

    void AppendInteger(char kind)
    {
        m_conversion.Append(m_length.Data(), m_length.Length());
        if (HasLength("ll") || HasLength("z") || HasLength("j") || HasLength("t"))
        {
            AppendNumber(kind, va_arg(*m_args, long long));
        }
        else if (HasLength("l"))
        {
            AppendNumber(kind, va_arg(*m_args, long));
        }
        else
        {
            AppendNumber(kind, va_arg(*m_args, int));
        }
    }

    template <class NUMBER>
    void AppendNumber(char kind, NUMBER number)
    {
        const TextBuffer<char> text = Print(kind, number);
        for (size_t i = 0; i < text.Length(); ++i)
        {
            m_out.Append(static_cast<WCHAR>(text.Data()[i]));
        }
    }

    void AppendString(bool isNarrow)
    {
        if (isNarrow)
        {
            AppendNarrow(va_arg(*m_args, const char*));
        }
        else
        {
            AppendWide(va_arg(*m_args, const WCHAR*));
        }
    }

    void AppendNarrow(const char* text)
    {
        text = text == nullptr ? "(null)" : text;
        const size_t limit = Limit();
        TextBuffer<WCHAR> wide;
        for (size_t i = 0; i < limit && text[i] != '\0'; ++i)
        {
            wide.Append(static_cast<WCHAR>(static_cast<unsigned char>(text[i]) < 128 ? text[i] : '?'));
        }
        AppendText(wide.Data(), wide.Length());
    }

    void AppendWide(const WCHAR* text)
    {
        text = text == nullptr ? ZEBW("(null)") : text;
        const size_t limit = Limit();
        size_t length = 0;
        while (length < limit && text[length] != 0)
        {
            ++length;
        }
        AppendText(text, length);
    }

    /// The precision: no more characters of a text are read.
    size_t Limit() const
    {
        const char* const precision = std::strchr(m_conversion.Data(), '.');
        return precision == nullptr ? size_t(-1) : std::strtoul(precision + 1, nullptr, 10);
    }

    void AppendText(const WCHAR* text, size_t length)
    {
        constexpr char Mark = 'x';
        TextBuffer<char> marks;
        marks.Append(length, Mark);
        const TextBuffer<char> padded = Print('s', static_cast<const char*>(marks.Data()));
        for (size_t i = 0; i < padded.Length(); ++i)
        {
            m_out.Append(padded.Data()[i] == Mark ? *text++ : static_cast<WCHAR>(padded.Data()[i]));
        }
    }

    template <class VALUE>
    TextBuffer<char> Print(char kind, VALUE value)
    {
        m_conversion.Append(kind);
        TextBuffer<char> text;
        text.Resize(static_cast<size_t>(std::max(std::snprintf(nullptr, 0, m_conversion.Data(), value), 0)));
        std::snprintf(text.Data(), text.Length() + 1, m_conversion.Data(), value);
        return text;
    }

    TextBuffer<WCHAR>& m_out;
    va_list* m_args;
    TextBuffer<char> m_conversion; ///< '%', flags, width and precision; the kind when it is printed
    TextBuffer<char> m_length;     ///< the length modifiers
};

/// Appends printf's 16-bit text to `text`: %s takes 16-bit text, %S and %hs narrow text of which only ASCII is kept ('?'
/// otherwise). No C library does all of it on both targets: wchar_t has 32 bits on Linux, and on Windows the meaning of
/// %s differs between C libraries. So the arguments are taken one by one.
inline void FormatText(TextBuffer<WCHAR>& text, const WCHAR* format, va_list args)
{
    const TextBuffer<WCHAR> portable = PortableFormat(format);
    va_list walk;
    va_copy(walk, args);
    for (const WCHAR* at = portable.Data(); *at != 0;)
    {
        if (*at != '%')
        {
            text.Append(*at++);
            continue;
        }
        at = WideConversion(text, &walk).Append(at + 1);
    }
    va_end(walk);
}

} // namespace zeb::framework
