// Text: CStringA of 8-bit characters (the ANSI code page; UTF-8 on Linux), CStringW of 16-bit ones.
#pragma once

#include "framework/Format.h"
#include "framework/TextBuffer.h"
#include "platform/mapi.h"

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace zeb
{

/// A string that converts to its terminated character pointer. A null pointer as an argument means the empty text.
///
/// Positions and lengths are in characters. Text may contain zeros. Through an argument list (Format) pass the pointer,
/// not the string: `static_cast<const char*>(text)`. Layout and memory are the library's own and shared by host and
/// library (framework::TextBuffer). More than 2^31 - 2 characters throw std::length_error, out of memory std::bad_alloc
/// (inside the library, CZebException* for both).
template <class CHAR_TYPE>
class CStringT
{
public:
    /// The type of a character.
    using XCHAR = CHAR_TYPE;

    CStringT() = default;
    /// A copy of a terminated text; null is an empty one.
    CStringT(const XCHAR* text)
        : m_text(OrEmpty(text), LengthOf(text))
    {
    }
    /// A copy of length characters, which may contain zeros.
    CStringT(const XCHAR* text, int length)
        : m_text(OrEmpty(text), text == nullptr ? 0 : Start(length))
    {
    }
    /// A character, count times.
    CStringT(XCHAR character, int count) { m_text.Append(Start(count), character); }
    /// From any string type with data() and size(), such as std::string.
    template <class Text, class = std::enable_if_t<
                              std::is_convertible_v<decltype(std::declval<const Text&>().data()), const XCHAR*> &&
                              std::is_convertible_v<decltype(std::declval<const Text&>().size()), size_t>>>
    explicit CStringT(const Text& text)
        : m_text(text.data(), text.size())
    {
    }

    /// A copy of a terminated text; null is an empty one.
    CStringT& operator=(const XCHAR* text)
    {
        m_text.Assign(OrEmpty(text), LengthOf(text));
        return *this;
    }

    /// The number of characters.
    int GetLength() const { return static_cast<int>(m_text.Length()); }
    /// Whether there are no characters.
    bool IsEmpty() const { return m_text.Length() == 0; }
    /// Makes the text empty.
    void Empty() { m_text.Resize(0); }

    /// The text, terminated and borrowed.
    operator const XCHAR*() const { return m_text.Data(); }
    /// The text, terminated and borrowed.
    const XCHAR* GetString() const { return m_text.Data(); }
    /// @throws std::out_of_range for a position at or past the length
    XCHAR GetAt(int index) const { return m_text.Data()[Checked(index)]; }
    /// @throws std::out_of_range for a position at or past the length
    void SetAt(int index, XCHAR character) { m_text.Data()[Checked(index)] = character; }
    /// The character at index. @throws std::out_of_range outside the text
    XCHAR operator[](int index) const { return GetAt(index); }

    /// A writable buffer of `length` characters and a terminator, which begins with the string's current text. Until
    /// ReleaseBuffer no other operation may be used.
    XCHAR* GetBuffer(int length)
    {
        m_text.Resize(std::max(Start(length), m_text.Length()));
        return m_text.Data();
    }
    /// The buffer of the current text's length.
    XCHAR* GetBuffer() { return GetBuffer(0); }
    /// Ends GetBuffer: the text becomes the buffer's first `length` characters, or up to its terminator when -1.
    void ReleaseBuffer(int length = -1)
    {
        m_text.Resize(length < 0 ? LengthOf(m_text.Data()) : static_cast<size_t>(length));
    }

    /// Replaces the text: printf, including Windows' %I64. %s takes text of the string's own characters; in a CStringW
    /// %S and %hs take narrow text. The arguments may point into this string.
    void Format(const XCHAR* format, ...)
    {
        va_list args;
        va_start(args, format);
        FormatV(format, args);
        va_end(args);
    }
    /// Format for an argument list.
    void FormatV(const XCHAR* format, va_list args)
    {
        framework::TextBuffer<XCHAR> text;
        framework::FormatText(text, format, args);
        m_text = std::move(text);
    }
    /// Appends what Format gives.
    void AppendFormat(const XCHAR* format, ...)
    {
        framework::TextBuffer<XCHAR> text;
        va_list args;
        va_start(args, format);
        framework::FormatText(text, format, args);
        va_end(args);
        m_text.Append(text.Data(), text.Length());
    }

    /// Negative, 0 or positive, by character code.
    int Compare(const XCHAR* other) const { return Order(*this, other, LengthOf(other)); }
    /// Like Compare, ignoring the case of ASCII letters.
    int CompareNoCase(const XCHAR* other) const
    {
        CStringT left(*this);
        CStringT right(other);
        return left.MakeLower().Compare(right.MakeLower());
    }

    /// @return the position of the first occurrence at or after `start`, or -1.
    int Find(XCHAR character, int start = 0) const
    {
        return Position(std::basic_string_view<XCHAR>(m_text.Data(), m_text.Length()).find(character, Start(start)));
    }
    /// The position of the first occurrence of text from start on; -1 when there is none.
    int Find(const XCHAR* text, int start = 0) const
    {
        return Position(
            std::basic_string_view<XCHAR>(m_text.Data(), m_text.Length()).find(OrEmpty(text), Start(start)));
    }
    /// The position of the last occurrence; -1 when there is none.
    int ReverseFind(XCHAR character) const
    {
        return Position(std::basic_string_view<XCHAR>(m_text.Data(), m_text.Length()).rfind(character));
    }

    /// Parts of the text; the range is clipped to the text.
    CStringT Mid(int first, int count) const
    {
        const size_t from = std::min(Start(first), m_text.Length());
        CStringT part;
        part.m_text.Assign(m_text.Data() + from, std::min(Start(count), m_text.Length() - from));
        return part;
    }
    /// The text from first on.
    CStringT Mid(int first) const { return Mid(first, GetLength()); }
    /// The first count characters.
    CStringT Left(int count) const { return Mid(0, count); }
    /// The last count characters.
    CStringT Right(int count) const { return count >= GetLength() ? *this : Mid(GetLength() - std::max(count, 0)); }

    /// ASCII letters only.
    CStringT& MakeUpper() { return ShiftCase('a', 'z', 'A'); }
    /// Makes the letters A to Z small.
    CStringT& MakeLower() { return ShiftCase('A', 'Z', 'a'); }

    /// @return the number of replacements
    int Replace(XCHAR from, XCHAR to)
    {
        int count = 0;
        for (size_t i = 0; i < m_text.Length(); ++i)
        {
            if (m_text.Data()[i] == from)
            {
                m_text.Data()[i] = to;
                ++count;
            }
        }
        return count;
    }

    /// Appends length characters.
    CStringT& Append(const XCHAR* text, int length)
    {
        m_text.Append(text, Start(length));
        return *this;
    }
    /// Appends a text.
    CStringT& operator+=(const CStringT& text)
    {
        m_text.Append(text.m_text.Data(), text.m_text.Length());
        return *this;
    }
    /// Appends a text; null is an empty one.
    CStringT& operator+=(const XCHAR* text)
    {
        m_text.Append(OrEmpty(text), LengthOf(text));
        return *this;
    }
    /// Appends a character.
    CStringT& operator+=(XCHAR character)
    {
        m_text.Append(character);
        return *this;
    }

    /// Both texts.
    friend CStringT operator+(const CStringT& a, const CStringT& b)
    {
        return Join(a.GetString(), a.m_text.Length(), b.GetString(), b.m_text.Length());
    }
    /// Both texts.
    friend CStringT operator+(const CStringT& a, const XCHAR* b)
    {
        return Join(a.GetString(), a.m_text.Length(), OrEmpty(b), LengthOf(b));
    }
    /// Both texts.
    friend CStringT operator+(const XCHAR* a, const CStringT& b)
    {
        return Join(OrEmpty(a), LengthOf(a), b.GetString(), b.m_text.Length());
    }
    /// The text and a character.
    friend CStringT operator+(const CStringT& a, XCHAR b) { return Join(a.GetString(), a.m_text.Length(), &b, 1); }

    /// Whether the characters are equal.
    friend bool operator==(const CStringT& a, const CStringT& b)
    {
        return a.m_text.Length() == b.m_text.Length() &&
               std::char_traits<XCHAR>::compare(a.GetString(), b.GetString(), a.m_text.Length()) == 0;
    }
    /// Whether the characters are equal.
    friend bool operator==(const CStringT& a, const XCHAR* b) { return a.Compare(b) == 0; }
    /// Whether the characters are equal.
    friend bool operator==(const XCHAR* a, const CStringT& b) { return b == a; }
    /// Whether the characters differ.
    friend bool operator!=(const CStringT& a, const CStringT& b) { return !(a == b); }
    /// Whether the characters differ.
    friend bool operator!=(const CStringT& a, const XCHAR* b) { return !(a == b); }
    /// Whether the characters differ.
    friend bool operator!=(const XCHAR* a, const CStringT& b) { return !(b == a); }
    /// By the values of the characters.
    friend bool operator<(const CStringT& a, const CStringT& b)
    {
        return Order(a, b.GetString(), b.m_text.Length()) < 0;
    }
    /// By the values of the characters.
    friend bool operator<(const CStringT& a, const XCHAR* b) { return a.Compare(b) < 0; }
    /// By the values of the characters.
    friend bool operator<(const XCHAR* a, const CStringT& b) { return b.Compare(a) > 0; }

private:
    static const XCHAR* OrEmpty(const XCHAR* text)
    {
        static const XCHAR empty[1] = {0};
        return text == nullptr ? empty : text;
    }
    static size_t LengthOf(const XCHAR* text) { return text == nullptr ? 0 : std::char_traits<XCHAR>::length(text); }
    static size_t Start(int position) { return position < 0 ? 0 : static_cast<size_t>(position); }
    static int Position(size_t position) { return position == size_t(-1) ? -1 : static_cast<int>(position); }

    size_t Checked(int index) const
    {
        if (index < 0 || static_cast<size_t>(index) >= m_text.Length())
        {
            throw std::out_of_range("CStringT: position outside the text");
        }
        return static_cast<size_t>(index);
    }

    static int Order(const CStringT& left, const XCHAR* right, size_t rightLength)
    {
        const size_t leftLength = left.m_text.Length();
        const int order =
            std::char_traits<XCHAR>::compare(left.GetString(), OrEmpty(right), std::min(leftLength, rightLength));
        return order != 0 ? order
                          : static_cast<int>(leftLength > rightLength) - static_cast<int>(leftLength < rightLength);
    }

    static CStringT Join(const XCHAR* left, size_t leftLength, const XCHAR* right, size_t rightLength)
    {
        CStringT joined;
        joined.m_text.Reserve(leftLength + rightLength);
        joined.m_text.Append(left, leftLength);
        joined.m_text.Append(right, rightLength);
        return joined;
    }

    CStringT& ShiftCase(char first, char last, char toFirst)
    {
        for (size_t i = 0; i < m_text.Length(); ++i)
        {
            XCHAR& character = m_text.Data()[i];
            if (character >= XCHAR(first) && character <= XCHAR(last))
            {
                character = static_cast<XCHAR>(character - first + toFirst);
            }
        }
        return *this;
    }

    framework::TextBuffer<XCHAR> m_text;
};

/// 8-bit text: in the ANSI code page (UTF-8 on Linux), unless said otherwise.
using CStringA = CStringT<char>;
/// 16-bit text: UTF-16.
using CStringW = CStringT<WCHAR>;
/// 8-bit text.
using CString = CStringA;

} // namespace zeb

/// @cond
/// The same in every binary (FNV-1a over the characters): host and library share maps.
template <class CHAR_TYPE>
struct std::hash<zeb::CStringT<CHAR_TYPE>>
{
    size_t operator()(const zeb::CStringT<CHAR_TYPE>& text) const noexcept
    {
        std::uint64_t sum = 0xCBF29CE484222325u;
        const CHAR_TYPE* const characters = text.GetString();
        for (int i = 0; i < text.GetLength(); ++i)
        {
            sum = (sum ^ static_cast<std::make_unsigned_t<CHAR_TYPE>>(characters[i])) * 0x100000001B3u;
        }
        return static_cast<size_t>(sum ^ (sum >> 32));
    }
};
/// @endcond

#ifndef ZEBAPI_NO_FRAMEWORK_NAMES
using zeb::CString;
using zeb::CStringA;
using zeb::CStringT;
using zeb::CStringW;
#endif
