// How a host reaches the embedded provider, and the workarounds that it needs. Each test program links one of:
// DirectRoute.cpp (Outlook's key names the provider) or ForeignRoute.cpp (the system's own MAPI library forwards most
// calls to it).
#pragma once

#include "zebapi/ZebAPI.h"

namespace zeb::test
{

/// Registers the embedded provider in the registry of the test.
void RegisterProvider();

/// Opens the default store of the session's profile for writing when possible. @throws CZebException*
CZebMsgStore OpenDefaultStore(CZebSession& session);

} // namespace zeb::test
