// Internal: numbers of a table that do not fit the library's 32 bits.
#pragma once

#include "platform/mapi.h"

namespace zeb
{

/// What a number of a table stands for. Numbers of different kinds are independent.
enum class TableNumber
{
    Connection, ///< what IMAPITable::Advise gives and Unadvise takes
    Bookmark    ///< what IMAPITable::CreateBookmark gives
};

/// The 32-bit number that the library gives out for `number`, which `table` gave: the number
/// itself where it fits and is free, otherwise a substitute. The substitute is valid for every
/// handle on the table until ForgetNumber. Threads: any.
/// @throws std::bad_alloc
ULONG ShortNumber(const IMAPITable* table, TableNumber kind, ULONG_PTR number);

/// The table's own number for `given`: the one that ShortNumber substituted, otherwise `given`. Threads: any.
ULONG_PTR WholeNumber(const IMAPITable* table, TableNumber kind, ULONG given) noexcept;

/// Drops a substitute whose number the table has taken back; a number that has none is left alone. Threads: any.
void ForgetNumber(const IMAPITable* table, TableNumber kind, ULONG given) noexcept;

} // namespace zeb
