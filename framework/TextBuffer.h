// The memory and the length of a string.
#pragma once

#include "framework/Memory.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace zeb::framework
{

/// A terminated, growing sequence of characters, which may contain zeros. Text of up to 15 bytes is kept inside the
/// object, longer text in shared memory.
///
/// The layout is part of the library's interface: 32 bytes, whatever the compiler and its standard library. A text
/// argument may be part of its own text. Lengths are in characters and below 2^31 - 1; beyond that ThrowTooLong is
/// called. An operation that throws leaves the text unchanged.
template <class CHAR_TYPE>
class TextBuffer
{
public:
    TextBuffer() noexcept { StartInside(); }
    /// A copy of length characters.
    TextBuffer(const CHAR_TYPE* text, std::size_t length)
    {
        StartInside();
        Assign(text, length);
    }
    /// A copy.
    TextBuffer(const TextBuffer& other)
        : TextBuffer(other.m_text, other.m_length)
    {
    }
    /// Takes the text; the other is empty then.
    TextBuffer(TextBuffer&& other) noexcept
    {
        StartInside();
        TakeOver(other);
    }
    ~TextBuffer() { FreeOutside(); }

    /// A copy.
    TextBuffer& operator=(const TextBuffer& other)
    {
        Assign(other.m_text, other.m_length);
        return *this;
    }
    /// Takes the text; the other is empty then.
    TextBuffer& operator=(TextBuffer&& other) noexcept
    {
        if (this != &other)
        {
            FreeOutside();
            StartInside();
            TakeOver(other);
        }
        return *this;
    }

    /// The characters, terminated.
    const CHAR_TYPE* Data() const { return m_text; }
    /// The characters, terminated.
    CHAR_TYPE* Data() { return m_text; }
    /// The number of characters.
    std::size_t Length() const { return m_length; }

    /// A copy of length characters.
    void Assign(const CHAR_TYPE* text, std::size_t length)
    {
        if (length <= m_capacity)
        {
            Move(m_text, text, length);
            SetLength(length);
            return;
        }
        CHAR_TYPE* const block = NewBlock(length);
        Move(block, text, length);
        Adopt(block, length, length);
    }
    /// Appends length characters.
    void Append(const CHAR_TYPE* text, std::size_t length)
    {
        if (length > m_capacity - m_length)
        {
            const std::size_t capacity = GrownCapacity(length);
            CHAR_TYPE* const block = NewBlock(capacity);
            Move(block, m_text, m_length);
            Move(block + m_length, text, length);
            Adopt(block, capacity, m_length + length);
            return;
        }
        Move(m_text + m_length, text, length);
        SetLength(m_length + length);
    }
    /// Appends a character, count times.
    void Append(std::size_t count, CHAR_TYPE character)
    {
        Reserve(count);
        std::fill_n(m_text + m_length, count, character);
        SetLength(m_length + count);
    }
    /// Appends a character.
    void Append(CHAR_TYPE character) { Append(&character, 1); }

    /// Truncates, or appends zeros.
    void Resize(std::size_t length)
    {
        if (length > m_length)
        {
            Append(length - m_length, CHAR_TYPE());
        }
        SetLength(length);
    }
    /// Reserves memory for `more` characters after the text.
    void Reserve(std::size_t more)
    {
        if (more > m_capacity - m_length)
        {
            const std::size_t capacity = GrownCapacity(more);
            CHAR_TYPE* const block = NewBlock(capacity);
            Move(block, m_text, m_length);
            Adopt(block, capacity, m_length);
        }
    }

private:
    static constexpr std::size_t InsideCapacity = 16 / sizeof(CHAR_TYPE) - 1;
    static constexpr std::size_t MaxLength = 0x7FFFFFFE;

    static void Move(CHAR_TYPE* to, const CHAR_TYPE* from, std::size_t count)
    {
        if (count != 0)
        {
            std::char_traits<CHAR_TYPE>::move(to, from, count);
        }
    }

    static CHAR_TYPE* NewBlock(std::size_t capacity)
    {
        if (capacity > MaxLength)
        {
            ThrowTooLong("text too long for a string");
        }
        return static_cast<CHAR_TYPE*>(AllocateShared((capacity + 1) * sizeof(CHAR_TYPE)));
    }

    /// REQUIRES: `more` characters do not fit.
    std::size_t GrownCapacity(std::size_t more) const
    {
        if (more > MaxLength - m_length)
        {
            ThrowTooLong("text too long for a string");
        }
        return std::max(m_length + more, std::min<std::size_t>(std::size_t{2} * m_capacity, MaxLength));
    }

    void StartInside()
    {
        m_text = m_inside;
        m_capacity = InsideCapacity;
        SetLength(0);
    }
    void SetLength(std::size_t length)
    {
        m_length = static_cast<std::uint32_t>(length);
        m_text[length] = CHAR_TYPE();
    }
    void FreeOutside()
    {
        if (m_text != m_inside)
        {
            FreeShared(m_text);
        }
    }
    /// REQUIRES: this text is empty and inline. The other text becomes empty and inline.
    void TakeOver(TextBuffer& other)
    {
        if (other.m_text == other.m_inside)
        {
            Assign(other.m_text, other.m_length);
            other.SetLength(0);
            return;
        }
        m_text = other.m_text;
        m_length = other.m_length;
        m_capacity = other.m_capacity;
        other.StartInside();
    }
    void Adopt(CHAR_TYPE* block, std::size_t capacity, std::size_t length)
    {
        FreeOutside();
        m_text = block;
        m_capacity = static_cast<std::uint32_t>(capacity);
        SetLength(length);
    }

    CHAR_TYPE* m_text;        ///< m_inside, or a block of shared memory
    std::uint32_t m_length;   ///< without the terminator
    std::uint32_t m_capacity; ///< likewise
    CHAR_TYPE m_inside[InsideCapacity + 1];
};

static_assert(sizeof(TextBuffer<char>) == 32 && sizeof(TextBuffer<WCHAR>) == 32,
              "the layout shared by host and library");

} // namespace zeb::framework
