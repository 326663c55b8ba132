// Internal: the tables of named constants, with an index over each.
#pragma once

#include "zebapi/constants/NameTable.h"

#include <array>
#include <cstdint>

namespace zeb
{

/// A table and its index, which is built at compile time. Every slot of the index holds the number of a row, counted
/// from 1, or 0 when it is free; a look-up starts at the hash of the value or name and ends at a free slot. Of rows
/// with the same value, or the same name, the index has the first.
struct IndexedNameTable
{
    ZebNameTable table;
    ULONG slotMask; ///< the number of slots, a power of two, less one
    const std::uint16_t* rowsByValue;
    const std::uint16_t* rowsByName;
    char key[16]; ///< the table's name in lower case
};

/// The 22 tables, in their order.
constexpr ULONG NameTableCount = 22;
extern const std::array<IndexedNameTable, NameTableCount> NameTables;

/// For every letter, the first table whose name begins with it; nameTableCount when none does.
extern const std::array<std::uint8_t, 26> FirstTableOfLetter;

/// Makes an upper-case letter lower case; no other character becomes a letter.
constexpr char LowerLetter(char character)
{
    return static_cast<char>(character | 0x20);
}

/// The upper bits of the product, which depend on every bit of the value.
constexpr ULONG HashOfValue(ULONG value)
{
    return (value * 0x9E3779B1u) >> 20;
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
