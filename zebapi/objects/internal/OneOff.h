// Internal: recipients that no address book knows.
#pragma once

#include "zebapi/values/Binary.h"

namespace zeb
{

/// The one-off entry identifier of an address, as the published format has it: 16-bit texts, no rich text wanted.
/// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY
CZebBinary OneOffEntryID(const WCHAR* name, const WCHAR* addressType, const WCHAR* address);

/// The search key of an address: "SMTP:ADA@EXAMPLE.ORG" in 8-bit text, with its terminator.
/// @throws CZebException* MAPI_E_NOT_ENOUGH_MEMORY
CZebBinary AddressSearchKey(const WCHAR* addressType, const WCHAR* address);

} // namespace zeb
