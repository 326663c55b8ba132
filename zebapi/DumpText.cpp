#include "zebapi/DumpText.h"

#include "zebapi/HexText.h"

#include <utility>

namespace zeb
{

CDumpText::CDumpText(size_t expected)
{
    m_text.resize(expected);
}

void CDumpText::Grow(size_t count)
{
    if (count > INT_MAX - m_length)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY, __FILE__, __LINE__);
    }
    m_text.resize(std::max(m_length + count, 2 * m_text.size()));
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
    WriteNumber(Room(numberLength), number);
}

CStringA CDumpText::Take()
{
    m_text.resize(std::exchange(m_length, 0));
    return CStringA(std::move(m_text));
}

} // namespace zeb
