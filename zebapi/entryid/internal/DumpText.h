// Internal: the text of a diagnostic dump while it grows.
#pragma once

#include "framework/CString.h"
#include "platform/mapi.h"

#include <algorithm>
#include <string_view>

namespace zeb
{

/// Text that grows at its end, in one block of memory. Texts are data: nothing in them is interpreted.
///
/// Text beyond the maximum size of a string is refused: every appending operation throws MAPI_E_NOT_ENOUGH_MEMORY
/// (CZebException*). Threads: none of its own.
class CDumpText
{
public:
    /// Reserves memory for `expected` characters.
    explicit CDumpText(size_t expected);

    void Append(std::string_view text);
    /// Bytes as upper-case hexadecimal text.
    void AppendHex(const void* bytes, ULONG count);
    /// "0x%08X"
    void AppendNumber(ULONG number);
    /// The beginning of a line: the prefix and a label, which is a literal.
    template <size_t Size>
    void Begin(std::string_view prefix, const char (&label)[Size])
    {
        PutLabel(Put(Room(prefix.size() + Size - 1), prefix), label);
    }
    /// A line: the prefix, a label, a text and "\r\n".
    template <size_t Size>
    void Line(std::string_view prefix, const char (&label)[Size], std::string_view text = {})
    {
        char* place = Room(prefix.size() + Size - 1 + text.size() + LineEndSize);
        PutLineEnd(Put(PutLabel(Put(place, prefix), label), text));
    }
    template <size_t Size>
    void LineOfHex(std::string_view prefix, const char (&label)[Size], const void* bytes, ULONG count)
    {
        Begin(prefix, label);
        AppendHex(bytes, count);
        PutLineEnd(Room(LineEndSize));
    }
    template <size_t Size>
    void LineOfNumber(std::string_view prefix, const char (&label)[Size], ULONG number)
    {
        Begin(prefix, label);
        AppendNumber(number);
        PutLineEnd(Room(LineEndSize));
    }

    /// Moves the text out; this object becomes empty.
    CStringA Take();

private:
    static constexpr size_t LineEndSize = 2;

    static char* Put(char* place, std::string_view text) { return std::copy(text.begin(), text.end(), place); }
    template <size_t Size>
    static char* PutLabel(char* place, const char (&label)[Size])
    {
        return std::copy(label, label + Size - 1, place);
    }
    static void PutLineEnd(char* place)
    {
        place[0] = '\r';
        place[1] = '\n';
    }
    /// A buffer for `count` more characters, which the caller writes.
    char* Room(size_t count)
    {
        if (count > static_cast<size_t>(m_text.GetLength()) - m_length)
        {
            Grow(count);
        }
        char* place = m_text.GetBuffer() + m_length;
        m_length += count;
        return place;
    }
    void Grow(size_t count);

    CStringA m_text; ///< longer than the written part
    size_t m_length = 0;
};

} // namespace zeb
