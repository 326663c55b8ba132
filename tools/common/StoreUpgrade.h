// Store files of zebstore's that an older program wrote.
#pragma once

#include <string>

namespace zeb::tools
{

/// Says on standard error, when that is a terminal, that the store is about to be upgraded: opening such a file for
/// writing takes long, and MAPI has no progress for it. Says nothing of any other file.
/// @param file UTF-8; may be empty or missing
void AnnounceUpgrade(const std::string& file);

} // namespace zeb::tools
