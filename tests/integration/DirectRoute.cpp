#include "tests/integration/Route.h"

#include "platform/module.h"
#include "platform/registry.h"

namespace zeb::test
{

void RegisterProvider()
{
    platform::RegistryKey::Create(platform::RegistryRoot::LocalMachine, "SOFTWARE\\Clients\\Mail\\Microsoft Outlook")
        .SetStringValue("DLLPathEx", platform::OwnFolder() + ZEB_STORE_LIBRARY);
}

CZebMsgStore OpenDefaultStore(CZebSession& session)
{
    return session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS);
}

} // namespace zeb::test
