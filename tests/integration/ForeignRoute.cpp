#include "tests/integration/Route.h"

#include "platform/module.h"
#include "platform/registry.h"

namespace zeb::test
{

void RegisterProvider()
{
    // Without Outlook's key the search ends at the system's MAPI library, which loads the library of the default mail
    // client.
    constexpr auto root = platform::RegistryRoot::LocalMachine;
    platform::RegistryKey::Create(root, "SOFTWARE\\Clients\\Mail").SetStringValue("", "zebstore");
    platform::RegistryKey::Create(root, "SOFTWARE\\Clients\\Mail\\zebstore")
        .SetStringValue("DLLPathEx", platform::OwnFolder() + ZEB_STORE_LIBRARY);
}

CZebMsgStore OpenDefaultStore(CZebSession& session)
{
    CZebTable table = session.GetMsgStoresTable();
    table.SetColumns(1, PR_ENTRYID);
    CZebRestrictionAllocator isDefault;
    isDefault.Allocate();
    isDefault.CreateProp(PR_DEFAULT_STORE, RELOP_EQ) = true;
    CZebRowSet rows;
    table.Restrict(isDefault, 0);
    table.QueryRows(&rows, 1, nullptr, nullptr);
    return session.OpenMsgStore(rows[0][PR_ENTRYID], nullptr, MAPI_BEST_ACCESS);
}

} // namespace zeb::test
