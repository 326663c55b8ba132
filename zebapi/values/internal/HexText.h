// Internal: bytes as hexadecimal text.
#pragma once

#include "qorth/Hex.h"
#include "zebapi/frame/Exception.h"

#include <climits>

namespace zeb
{

/// Two upper-case digits per byte; empty for null bytes. @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY for too many
/// bytes for a text
inline CStringA HexText(const void* bytes, ULONG count)
{
    if (bytes == nullptr)
    {
        return CStringA();
    }
    if (count > INT_MAX / 2)
    {
        CZebException::Throw(MAPI_E_NOT_ENOUGH_MEMORY);
    }
    CStringA text;
    Bin2String(text, bytes, count, 0);
    return text;
}

} // namespace zeb
