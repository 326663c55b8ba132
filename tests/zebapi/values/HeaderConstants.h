// The constants of the MAPI headers, as the headers themselves say them.
#pragma once

#include "platform/mapi.h"

#include <map>
#include <string>

namespace zeb::test
{

/// Every PR_, MAPI_, CMC_ ... macro that the headers define, with its value. The list is read out of the headers when
/// the build is configured.
const std::map<std::string, ULONG>& HeaderConstants();

} // namespace zeb::test
