#include "zebapi/entryid/internal/DumpText.h"

#include "zebapi/constants/internal/NumberText.h"
#include "zebapi/values/internal/HexText.h"

#include <utility>

namespace zeb
{

namespace
{

constexpr size_t Longest = INT_MAX - 1; ///< the maximum size of a string

} // namespace

CDumpText::CDumpText(size_t expected)
{
    m_text.GetBuffer(static_cast<int>(std::min(expected, Longest)));
}

void CDumpText::Grow(size_t count)
{
    if (count > Longest - m_length)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    const size_t doubled = std::min(2 * static_cast<size_t>(m_text.GetLength()), Longest);
    m_text.GetBuffer(static_cast<int>(std::max(m_length + count, doubled)));
}

void CDumpText::Append(std::string_view text)
{
    Put(Room(text.size()), text);
}

void CDumpText::AppendHex(const void* bytes, ULONG count)
{
    Bin2Digits(Room(size_t{2} * count), bytes, count);
}

void CDumpText::AppendNumber(ULONG number)
{
    WriteNumber(Room(NumberLength), number);
}

CStringA CDumpText::Take()
{
    m_text.ReleaseBuffer(static_cast<int>(std::exchange(m_length, 0)));
    return std::move(m_text);
}

} // namespace zeb
