// The exported conversions between bytes and hexadecimal text.
#include "zebstore/base/Guard.h"

#include <cstring>

using zebstore::Guarded;
using zebstore::Require;

namespace
{

int DigitOf(char digit)
{
    if (digit >= '0' && digit <= '9')
    {
        return digit - '0';
    }
    if (digit >= 'A' && digit <= 'F')
    {
        return digit - 'A' + 10;
    }
    if (digit >= 'a' && digit <= 'f')
    {
        return digit - 'a' + 10;
    }
    return -1;
}

/// Reads pairs of digits up to the end of the text. @return false at the first character that is not a digit, at an odd
/// number of digits, or when `room` bytes are full before the text ends
bool Parse(const char* text, BYTE* bytes, size_t room)
{
    for (; *text; text += 2, ++bytes, --room)
    {
        const int high = DigitOf(text[0]);
        const int low = high < 0 ? -1 : DigitOf(text[1]);
        if (low < 0 || room == 0)
        {
            return false;
        }
        *bytes = static_cast<BYTE>(high * 16 + low);
    }
    return true;
}

} // namespace

BOOL WINAPI FBinFromHex(LPTSTR text, LPBYTE bytes)
{
    return text != nullptr && bytes != nullptr && Parse(text, bytes, std::strlen(text)) ? TRUE : FALSE;
}

SCODE WINAPI ScBinFromHexBounded(LPTSTR text, LPBYTE bytes, ULONG room)
{
    return Guarded("ScBinFromHexBounded", [&]() -> HRESULT
    {
        Require(text != nullptr && (bytes != nullptr || room == 0), "the text or the output pointer is null");
        return Parse(text, bytes, room) ? S_OK : MAPI_E_INVALID_PARAMETER;
    });
}

void WINAPI HexFromBin(LPBYTE bytes, int count, LPTSTR text)
{
    if (text == nullptr || (bytes == nullptr && count > 0))
    {
        return;
    }
    for (int i = 0; i < count; ++i)
    {
        *text++ = "0123456789ABCDEF"[bytes[i] >> 4];
        *text++ = "0123456789ABCDEF"[bytes[i] & 15];
    }
    *text = 0;
}
