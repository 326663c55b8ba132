// Internal: the tables of named constants, with an index over each.
#pragma once

#include "zebapi/TAGS.h"

#include <cstdint>

namespace zeb
{

/// A table and the index built over it when the library is compiled. Every slot of the index holds the number of a row,
/// counted from 1, or 0 when it is free; a value or a name is looked for from its hash on, until a free slot. Of rows
/// with one value, or one name, the index has the first.
struct IndexedNameTable
{
    ZebNameTable table;
    ULONG slotMask; ///< the number of slots, a power of two, less one
    const std::uint16_t* rowsByValue;
    const std::uint16_t* rowsByName;
};

/// The 22 tables, in their order.
constexpr ULONG nameTableCount = 22;
extern const IndexedNameTable nameTables[nameTableCount];

constexpr ULONG HashOfValue(ULONG value)
{
    return (value * 0x9E3779B1u) >> 16;
}

constexpr ULONG HashOfName(const char* name)
{
    ULONG hash = 0x811C9DC5u;
    for (; *name != 0; ++name)
    {
        hash = (hash ^ static_cast<unsigned char>(*name)) * 0x01000193u;
    }
    return hash ^ (hash >> 16);
}

} // namespace zeb
