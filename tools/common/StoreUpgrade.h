// zebstore store files written by an older version.
#pragma once

#include <string>

namespace zeb::tools
{

/// Announces on standard error, when that is a terminal, that the store is about to be upgraded: opening such a file
/// for writing takes long, and MAPI has no progress for it. Prints nothing for other files.
/// @param file UTF-8; may be empty or missing
void AnnounceUpgrade(const std::string& file);

} // namespace zeb::tools
