// The check of a whole store file: its own rules, compared with its rows.
#pragma once

#include "zebstore/storage/StoreConnection.h"

#include <string>
#include <vector>

namespace zebstore
{

/// @return a line for each problem; empty when there is none
std::vector<std::string> CheckStore(StoreConnection& connection);

} // namespace zebstore
