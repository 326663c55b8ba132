// Internal: bytes through IStream.
#pragma once

#include "zebapi/frame/Exception.h"

namespace zeb
{

/// Writes all the bytes. @throws CZebException* what Write returns; STG_E_MEDIUMFULL when it takes none
inline void WriteAll(IStream& target, const BYTE* bytes, ULONG size, const char* operation = ZEB_CALLER)
{
    while (size != 0)
    {
        ULONG written = 0;
        ThrowIfFailed(target.Write(bytes, size, &written), ZEB_FILE, ZEB_LINE, operation);
        if (written == 0 || written > size)
        {
            CZebException::Throw(STG_E_MEDIUMFULL, ZEB_FILE, ZEB_LINE, operation);
        }
        bytes += written;
        size -= written;
    }
}

/// Writes what source gives from its position to its end. @throws CZebException* also what Read returns
inline void CopyStream(IStream& target, IStream& source, const char* operation = ZEB_CALLER)
{
    BYTE piece[16 * 1024];
    for (;;)
    {
        ULONG read = 0;
        ThrowIfFailed(source.Read(piece, sizeof piece, &read), ZEB_FILE, ZEB_LINE, operation);
        if (read == 0)
        {
            return;
        }
        WriteAll(target, piece, read, operation);
    }
}

} // namespace zeb
