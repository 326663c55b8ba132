// What a library is worth as a MAPI provider, in words.
#pragma once

#include "zebapi/ZebAPI.h"
#include "zebapi/search/ProviderSearch.h"

#include <string>

namespace zeb::tools
{

/// One line: that it is a provider and of which kind, or exactly what makes it unusable. UTF-8.
std::string VerdictOn(const ProviderCandidate& candidate);

/// The same of a library that was classified.
std::string VerdictOn(const ProviderClass& found);

} // namespace zeb::tools
