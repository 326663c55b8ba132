#include "zebapi/entryid/BinaryParser.h"

#include <cstring>

namespace zeb
{

namespace
{

/// Text of this many characters or more is not measured.
constexpr std::uint64_t LongestText = 0x80000000;

} // namespace

CBinaryParser::CBinaryParser(std::uint64_t size, const void* start)
    : m_size(start == nullptr ? 0 : size)
    , m_start(static_cast<const BYTE*>(start))
    , m_end(start == nullptr ? nullptr : m_start + size)
{
}

CBinaryParser::~CBinaryParser() = default;

std::uint64_t CBinaryParser::Remaining() const
{
    return m_offset < m_size ? m_size - m_offset : 0;
}

void CBinaryParser::Advance(std::uint64_t n)
{
    m_offset = n <= UINT64_MAX - m_offset ? m_offset + n : UINT64_MAX;
}

std::uint64_t CBinaryParser::Offset() const
{
    return m_offset;
}

const BYTE* CBinaryParser::Current() const
{
    return m_offset < m_size ? m_start + m_offset : m_end;
}

void CBinaryParser::Fetch(std::uint64_t n, void* destination)
{
    if (n == 0 || destination == nullptr || n > m_size || m_offset > m_size - n)
    {
        return;
    }
    std::memcpy(destination, m_start + m_offset, static_cast<size_t>(n));
    m_offset += n;
}

template <class T>
T CBinaryParser::Fetch()
{
    T value = 0;
    Fetch(sizeof value, &value);
    return value;
}

std::uint8_t CBinaryParser::Read8()
{
    return Fetch<std::uint8_t>();
}

std::uint16_t CBinaryParser::Read16()
{
    return Fetch<std::uint16_t>();
}

std::uint32_t CBinaryParser::Read32()
{
    return Fetch<std::uint32_t>();
}

void CBinaryParser::Read64(std::uint64_t& value)
{
    value = Fetch<std::uint64_t>();
}

void CBinaryParser::ReadBytes(std::uint64_t n, void* destination)
{
    Fetch(n, destination);
}

/// Including the terminator; 0 when the rest has none.
template <>
std::uint64_t CBinaryParser::TerminatedLength<char>() const
{
    const std::uint64_t bound = Remaining();
    if (bound == 0 || bound >= LongestText)
    {
        return 0;
    }
    const BYTE* place = Current();
    const void* end = std::memchr(place, 0, static_cast<size_t>(bound));
    return end == nullptr ? 0 : static_cast<std::uint64_t>(static_cast<const BYTE*>(end) - place) + 1;
}

template <class Char>
std::uint64_t CBinaryParser::TerminatedLength() const
{
    const std::uint64_t bound = Remaining() / sizeof(Char);
    if (bound >= LongestText)
    {
        return 0;
    }
    const BYTE* place = Current();
    for (std::uint64_t length = 1; length <= bound; ++length, place += sizeof(Char))
    {
        Char character;
        std::memcpy(&character, place, sizeof character);
        if (character == 0)
        {
            return length;
        }
    }
    return 0;
}

template <class Text>
Text CBinaryParser::FetchText(std::uint64_t n)
{
    using Char = typename Text::XCHAR;
    if (n == 0 || n > Remaining() / sizeof(Char))
    {
        return Text();
    }
    CSafeArray<Char> text(static_cast<size_t>(n) + 1);
    Fetch(n * sizeof(Char), text.Get());
    text[static_cast<size_t>(n)] = 0;
    return Text(text.Get());
}

CStringA CBinaryParser::ReadStringA()
{
    return ReadStringA(TerminatedLength<char>());
}

CStringA CBinaryParser::ReadStringA(std::uint64_t n)
{
    return FetchText<CStringA>(n);
}

CStringW CBinaryParser::ReadStringW()
{
    return ReadStringW(TerminatedLength<WCHAR>());
}

CStringW CBinaryParser::ReadStringW(std::uint64_t n)
{
    return FetchText<CStringW>(n);
}

} // namespace zeb
