// The texts of a message that are indexed.
#pragma once

#include "zebstore/storage/StoreConnection.h"
#include "zebstore/storage/StoreIds.h"
#include "zebstore/storage/TextGrams.h"

namespace zebstore
{

/// Adds the grams of a message and its recipients, all as a table's restriction would read them.
/// @return false when the message or one of its recipients cannot be read because it is damaged
bool AddTexts(StoreConnection& connection, MessageId message, GramSet& to);

} // namespace zebstore
