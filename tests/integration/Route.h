// How a host comes upon the embedded provider, and what it must do by other means there. Each test program
// links one of the two: DirectRoute.cpp (Outlook's key names the provider) or ForeignRoute.cpp (the system's
// own MAPI library hands over to it, but not everything).
#pragma once

#include "zebapi/ZebAPI.h"

namespace zeb::test
{

/// Registers the embedded provider in the registry of the test.
void RegisterProvider();

/// Opens the default store of the session's profile for writing where it can be. @throws CZebException*
CZebMsgStore OpenDefaultStore(CZebSession& session);

} // namespace zeb::test
