// Reads all that a store has, as a host does: through MAPI's interfaces.
#pragma once

#include "zebstore/objects/StoreContext.h"

#include <string>
#include <vector>

/// Opens each folder, message, attachment and address book entry, and reads their properties and tables.
/// @return a line for each call that failed and for each value that could not be read
std::vector<std::string> ReadAll(const zebstore::StorePtr& store);
