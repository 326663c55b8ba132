// Internal: numbers as the hexadecimal text that the library shows.
#pragma once

#include "platform/mapi.h"

#include <cstddef>

namespace zeb
{

/// The length of a number's text.
constexpr size_t NumberLength = sizeof "0x12345678" - 1;

/// Writes "0x%08X", without a terminator. @return the position after it
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
