// Text: CStringA of 8-bit characters (the ANSI code page; UTF-8 on Linux), CStringW of 16-bit ones.
#pragma once

#include "framework/Format.h"
#include "platform/mapi.h"

#include <algorithm>
#include <cstdarg>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

/// A string that converts to its terminated character pointer. A null pointer given as text means the empty
/// text.
///
/// Positions and lengths are in characters. Through an argument list (Format) pass the pointer, not the
/// string: `static_cast<const char*>(text)`.
template <class CHAR_TYPE>
class CStringT
{
public:
    using XCHAR = CHAR_TYPE;

    CStringT() = default;
    CStringT(const XCHAR* text)
        : m_text(OrEmpty(text))
    {
    }
    CStringT(const XCHAR* text, int length)
        : m_text(OrEmpty(text), text == nullptr || length < 0 ? 0 : static_cast<size_t>(length))
    {
    }
    CStringT(XCHAR character, int count)
        : m_text(count < 0 ? 0 : static_cast<size_t>(count), character)
    {
    }
    explicit CStringT(std::basic_string<XCHAR> text)
        : m_text(std::move(text))
    {
    }

    CStringT& operator=(const XCHAR* text)
    {
        // Through a copy: `text` may point into this string.
        m_text = std::basic_string<XCHAR>(OrEmpty(text));
        return *this;
    }

    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }

    operator const XCHAR*() const { return m_text.c_str(); }
    const XCHAR* GetString() const { return m_text.c_str(); }
    XCHAR GetAt(int index) const { return m_text.at(static_cast<size_t>(index)); }
    void SetAt(int index, XCHAR character) { m_text.at(static_cast<size_t>(index)) = character; }
    XCHAR operator[](int index) const { return GetAt(index); }

    /// A buffer of `length` characters and a terminator that may be written; until ReleaseBuffer nothing else
    /// may be done with the string. What the string held stands at its start.
    XCHAR* GetBuffer(int length)
    {
        const size_t wanted = length < 0 ? 0 : static_cast<size_t>(length);
        if (m_text.size() < wanted)
        {
            m_text.resize(wanted);
        }
        return m_text.data();
    }
    XCHAR* GetBuffer() { return GetBuffer(0); }
    /// Ends GetBuffer: the text is the buffer's first `length` characters, or reaches to its terminator when
    /// -1.
    void ReleaseBuffer(int length = -1)
    {
        m_text.resize(length < 0 ? std::char_traits<XCHAR>::length(m_text.c_str())
                                 : static_cast<size_t>(length));
    }

    /// Replaces the text: printf, with Windows' %I64 as well. The arguments may be of this string.
    void Format(const XCHAR* format, ...)
    {
        va_list args;
        va_start(args, format);
        FormatV(format, args);
        va_end(args);
    }
    void FormatV(const XCHAR* format, va_list args) { m_text = framework::FormatText(format, args); }
    void AppendFormat(const XCHAR* format, ...)
    {
        va_list args;
        va_start(args, format);
        m_text += framework::FormatText(format, args);
        va_end(args);
    }

    /// Negative, 0 or positive, by character code.
    int Compare(const XCHAR* other) const { return m_text.compare(OrEmpty(other)); }
    /// As Compare, with the ASCII letters taken as equal to their other case.
    int CompareNoCase(const XCHAR* other) const
    {
        CStringT left(*this);
        CStringT right(other);
        return left.MakeLower().Compare(right.MakeLower());
    }

    /// @return the position of the first occurrence at or behind `start`, or -1.
    int Find(XCHAR character, int start = 0) const { return Position(m_text.find(character, Start(start))); }
    int Find(const XCHAR* text, int start = 0) const
    {
        return Position(m_text.find(OrEmpty(text), Start(start)));
    }
    int ReverseFind(XCHAR character) const { return Position(m_text.rfind(character)); }

    /// Parts of the text; what lies outside it is left out.
    CStringT Mid(int first, int count) const
    {
        const size_t from = std::min(Start(first), m_text.size());
        return CStringT(m_text.substr(from, count < 0 ? 0 : static_cast<size_t>(count)));
    }
    CStringT Mid(int first) const { return Mid(first, GetLength()); }
    CStringT Left(int count) const { return Mid(0, count); }
    CStringT Right(int count) const
    {
        return count >= GetLength() ? *this : Mid(GetLength() - Start0(count));
    }

    /// ASCII letters only.
    CStringT& MakeUpper() { return ShiftCase('a', 'z', 'A'); }
    CStringT& MakeLower() { return ShiftCase('A', 'Z', 'a'); }

    /// @return how many were replaced.
    int Replace(XCHAR from, XCHAR to)
    {
        int count = 0;
        for (XCHAR& character : m_text)
        {
            if (character == from)
            {
                character = to;
                ++count;
            }
        }
        return count;
    }

    CStringT& Append(const XCHAR* text, int length)
    {
        m_text.append(text, length < 0 ? 0 : static_cast<size_t>(length));
        return *this;
    }
    CStringT& operator+=(const CStringT& text)
    {
        m_text += text.m_text;
        return *this;
    }
    CStringT& operator+=(const XCHAR* text)
    {
        m_text += OrEmpty(text);
        return *this;
    }
    CStringT& operator+=(XCHAR character)
    {
        m_text += character;
        return *this;
    }

    friend CStringT operator+(const CStringT& a, const CStringT& b) { return CStringT(a.m_text + b.m_text); }
    friend CStringT operator+(const CStringT& a, const XCHAR* b) { return CStringT(a.m_text + OrEmpty(b)); }
    friend CStringT operator+(const XCHAR* a, const CStringT& b) { return CStringT(OrEmpty(a) + b.m_text); }
    friend CStringT operator+(const CStringT& a, XCHAR b) { return CStringT(a.m_text + b); }

    friend bool operator==(const CStringT& a, const CStringT& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CStringT& a, const XCHAR* b) { return a.m_text == OrEmpty(b); }
    friend bool operator==(const XCHAR* a, const CStringT& b) { return b == a; }
    friend bool operator!=(const CStringT& a, const CStringT& b) { return !(a == b); }
    friend bool operator!=(const CStringT& a, const XCHAR* b) { return !(a == b); }
    friend bool operator!=(const XCHAR* a, const CStringT& b) { return !(b == a); }
    friend bool operator<(const CStringT& a, const CStringT& b) { return a.m_text < b.m_text; }
    friend bool operator<(const CStringT& a, const XCHAR* b) { return a.m_text < OrEmpty(b); }
    friend bool operator<(const XCHAR* a, const CStringT& b) { return OrEmpty(a) < b.m_text; }

private:
    static const XCHAR* OrEmpty(const XCHAR* text)
    {
        static const XCHAR empty[1] = {0};
        return text == nullptr ? empty : text;
    }
    static size_t Start(int position) { return position < 0 ? 0 : static_cast<size_t>(position); }
    static int Start0(int count) { return count < 0 ? 0 : count; }
    static int Position(size_t position)
    {
        return position == std::basic_string<XCHAR>::npos ? -1 : static_cast<int>(position);
    }

    CStringT& ShiftCase(char first, char last, char toFirst)
    {
        for (XCHAR& character : m_text)
        {
            if (character >= XCHAR(first) && character <= XCHAR(last))
            {
                character = static_cast<XCHAR>(character - first + toFirst);
            }
        }
        return *this;
    }

    std::basic_string<XCHAR> m_text;
};

using CStringA = CStringT<char>;
using CStringW = CStringT<WCHAR>;
using CString = CStringA;

template <class CHAR_TYPE>
struct std::hash<CStringT<CHAR_TYPE>>
{
    size_t operator()(const CStringT<CHAR_TYPE>& text) const noexcept
    {
        using View = std::basic_string_view<CHAR_TYPE>;
        return std::hash<View>()(View(text.GetString(), static_cast<size_t>(text.GetLength())));
    }
};
