// The check of a whole store file: its own rules, compared with its rows.
#pragma once

#include "zebstore/storage/TextIndex.h"

#include <string>
#include <vector>

namespace zebstore
{

/// @param failure receives the code of the failure that ended the check early, whose text is the last line; else S_OK
/// @return a line for each problem; empty when there is none
std::vector<std::string> CheckStore(StoreConnection& connection, TextIndex& texts, HRESULT& failure);

/// SQLite's check of the database. @return at most `most` lines
/// @throws Error when the disk does not give a page, which says nothing of its content
std::vector<std::string> CheckPages(Database& database, int most);

} // namespace zebstore
