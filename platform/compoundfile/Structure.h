// The structure of a compound file.
#pragma once

#include <string>

namespace zeb::platform
{

/// Checks that every chain of sectors ends, that no two share a sector, that each stream has the sectors that its size needs, and
/// that the directory is a tree. Neither reader does: one follows a chain that is a circle without end, the other loses
/// memory. Reads the tables and the directory, not the streams.
/// @param file path, UTF-8 @throws CompoundError
void CheckCompoundStructure(const std::string& file);

} // namespace zeb::platform
