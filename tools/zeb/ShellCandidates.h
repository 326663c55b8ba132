// Values for the completion of command lines.
#pragma once

#include <string>
#include <vector>

namespace zeb::tools
{

/// The folders of the profile's default store for a kind that begins with "FOLDER", the profiles for "PROFILE", none for
/// others. Throws what opening them throws.
std::vector<std::string> ShellCandidates(const std::string& kind, const std::string& profile);

} // namespace zeb::tools
