// Internal: numbers of a table that do not fit the library's 32 bits.
#pragma once

#include "platform/mapi.h"

namespace zeb
{

/// The kinds of numbers of a table. Numbers of different kinds are independent.
enum class TableNumber
{
    Connection, ///< from IMAPITable::Advise, for Unadvise
    Bookmark    ///< from IMAPITable::CreateBookmark
};

/// The 32-bit number that the library returns for `number` of `table`: the number itself if it fits and is free,
/// otherwise a substitute. The substitute is valid for every handle on the table until ForgetNumber. Threads: any.
/// @throws std::bad_alloc
ULONG ShortNumber(const IMAPITable* table, TableNumber kind, ULONG_PTR number);

/// The table's own number for `given`: the one that ShortNumber substituted, otherwise `given`. Threads: any.
ULONG_PTR WholeNumber(const IMAPITable* table, TableNumber kind, ULONG given) noexcept;

/// Removes the substitute of a freed number; no-op for a number without one. Threads: any.
void ForgetNumber(const IMAPITable* table, TableNumber kind, ULONG given) noexcept;

} // namespace zeb
