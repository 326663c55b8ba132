// The tables and triggers of a text index.
#pragma once

#include "zebstore/storage/Database.h"

#include <string>

namespace zebstore
{

/// Which of its tables and triggers a file has.
enum class TextIndexSchema
{
    None,
    /// Not all of them, or others than this version makes.
    Foreign,
    Complete
};

TextIndexSchema ReadTextIndexSchema(Database& database);
/// In the caller's transaction, as the next.
void CreateTextIndexSchema(Database& database);
void DropTextIndexSchema(Database& database);

} // namespace zebstore
