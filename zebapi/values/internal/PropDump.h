// A property as a line of a dump.
#pragma once

#include "framework/CString.h"
#include "zebapi/values/OnePROPVAL.h"

namespace zeb
{

/// Name, type and the first 256 bytes of the value, each but the last followed by a tab.
/// @throws CZebException* MAPI_E_BAD_VALUE without a value
CStringA DumpLine(const CZebOnePropVal& value);

} // namespace zeb
