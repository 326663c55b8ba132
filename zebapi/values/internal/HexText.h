// Internal: bytes and numbers as the hexadecimal text that the library shows.
#pragma once

#include "qorth/Hex.h"
#include "zebapi/frame/Exception.h"

#include <climits>

namespace zeb
{

/// Two upper-case digits a byte; empty for null bytes.
/// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY for more bytes than a text can show
inline CStringA HexText(const void* bytes, ULONG count)
{
    if (bytes == nullptr)
    {
        return CStringA();
    }
    if (count > INT_MAX / 2)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY, __FILE__, __LINE__);
    }
    CStringA text;
    Bin2String(text, bytes, count, 0);
    return text;
}

/// The length of a number's text.
constexpr size_t numberLength = sizeof "0x12345678" - 1;

/// Writes "0x%08X", without a terminator. @return the place behind it
inline char* WriteNumber(char* text, ULONG number)
{
    *text++ = '0';
    *text++ = 'x';
    for (int shift = 28; shift >= 0; shift -= 4)
    {
        *text++ = "0123456789ABCDEF"[(number >> shift) & 0xF];
    }
    return text;
}

} // namespace zeb
