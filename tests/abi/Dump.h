// The dump of the MAPI declarations that we use: one fact per line.
#pragma once

#include <string>

namespace abidump
{

/// "size SPropValue 24", "offset SPropValue.Value 8", "slot IMAPITable.QueryRows 19"
std::string Layouts();
/// "constant PT_LONG 00000003"
std::string Constants();
/// "identifier IID_IMAPITable 00020301-0000-0000-C000-000000000046"
std::string Identifiers();

inline std::string All()
{
    return Layouts() + Constants() + Identifiers();
}

} // namespace abidump
