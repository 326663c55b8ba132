// Property names that are missing from the library's tables of MAPI names.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>

namespace zeb::tools
{

/// The name of a property by its identifier, from the library's tables or those of
/// later headers; null when it has none.
const char* NameOfProperty(ULONG id);

/// The tag of a name; text in its 8-bit form, as in the library's tables. @return false when the name is unknown
bool TagOfProperty(const std::string& name, ULONG& tag);

} // namespace zeb::tools
