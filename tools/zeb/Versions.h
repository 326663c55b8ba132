// The versions of what zeb works with.
#pragma once

#include <string>

namespace zeb::tools
{

/// The library's version, the provider of this machine with its version, and the settings file, a line each. Never
/// throws: what is missing is said.
std::string VersionDetails();

} // namespace zeb::tools
