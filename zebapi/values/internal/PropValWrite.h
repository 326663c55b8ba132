// Internal: the common part of property value writes that allocate.
#pragma once

#include "zebapi/frame/internal/Blocks.h"

#include <cstring>

namespace zeb
{

/// @throws CZebException* MAPI_E_INVALID_OBJECT without an allocation parent
inline void CheckParent(const void* parent, const char* file = ZEB_FILE, int line = ZEB_LINE)
{
    if (parent == nullptr)
    {
        CZebException::Throw(MAPI_E_INVALID_OBJECT, file, line);
    }
}

/// `length` characters and a terminator, in a block chained to `parent`.
template <class Char>
Char* CopyText(const Char* text, std::uint64_t length, void* parent)
{
    Char* copy = AllocateArray<Char>(length + 1, parent);
    std::memcpy(copy, text, static_cast<size_t>(length) * sizeof(Char));
    return copy;
}

} // namespace zeb
