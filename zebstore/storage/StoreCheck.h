// The check of a whole store file: its own rules, compared with its rows.
#pragma once

#include "zebstore/storage/TextIndex.h"

#include <string>
#include <vector>

namespace zebstore
{

/// @return a line for each problem; empty when there is none
std::vector<std::string> CheckStore(StoreConnection& connection, TextIndex& texts);

} // namespace zebstore
