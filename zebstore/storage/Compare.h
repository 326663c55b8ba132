// How values are held against each other.
#pragma once

#include "zebstore/storage/PropertySet.h"

#include <string>

namespace zebstore
{

/// The order of two values of one single type: numbers as numbers, times as signed 64-bit numbers, text by
/// its folded form (case does not count), binaries and GUIDs byte by byte, a shorter one before a longer one
/// that it begins. Multi-valued: element by element.
/// @param bytes encoded values; the types match (TypesMatch) but text may be of either form
/// @param comparable set to false for a NaN, which is neither before, equal to nor after anything
int Compare(ULONG leftType, std::string_view left, ULONG rightType, std::string_view right, bool& comparable);

/// True when `relop` (RELOP_LT ... RELOP_NE) holds.
bool Holds(ULONG relop, int order, bool comparable);

/// Appends bytes whose byte-wise order is the order of tables: a missing value first, then as Compare, text
/// by its SortKey. `descending` turns it round.
void AppendSortBytes(std::string& to, const EncodedValue& value, bool descending);

/// The encoded bytes of a value, those of a large one read whole into `room`.
std::string_view BytesOf(const EncodedValue& value, std::string& room);

} // namespace zebstore
