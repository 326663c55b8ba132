// The verdict on a library as a MAPI provider, as text.
#pragma once

#include "zebapi/ZebAPI.h"
#include "zebapi/search/ProviderSearch.h"

#include <string>

namespace zeb::tools
{

/// One line: the kind of provider, or the exact reason why it is unusable. UTF-8.
std::string VerdictOn(const ProviderCandidate& candidate);

/// The same for a classified library.
std::string VerdictOn(const ProviderClass& found);

} // namespace zeb::tools
