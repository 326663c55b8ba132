// Tables over rows in memory.
#pragma once

#include "zebstore/storage/MemoryRows.h"

#include <memory>
#include <vector>

namespace zebstore
{

/// A table over rows that do not change.
/// @param flags MAPI_UNICODE: texts have 16 bits
IMAPITable* NewMemoryTable(std::vector<PropertySet> rows, std::vector<ULONG> defaultColumns, ULONG flags);

/// A table over rows that change and are shared with their owner.
IMAPITable* TableOver(const std::shared_ptr<MemoryRows>& rows, ULONG flags);

} // namespace zebstore
