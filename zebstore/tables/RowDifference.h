// The changes that lead from one order of rows to another.
#pragma once

#include "zebstore/storage/RowChange.h"

#include <vector>

namespace zebstore
{

/// Compares the rows of a view before and after its source changed. Whoever has a copy of the rows before and applies
/// the result in its order has a copy of the rows after.
/// @param changed what the source listed: a row among them is modified even where it stays in its place
/// @return Unknown when the changes are too many to be listed
RowChanges DifferenceOf(const std::vector<RowKey>& before, const std::vector<RowKey>& after,
                        const std::vector<RowChange>& changed);

} // namespace zebstore
