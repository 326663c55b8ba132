// WABOpen: opens the address book without a session.
#include "zebstore/addressbook/AddressBook.h"
#include "zebstore/exports/MapiInitialize.h"
#include "zebstore/exports/WabObject.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/profiles/ServiceAdmin.h"
#include "zebstore/storage/Text.h"

namespace zebstore
{
namespace
{

Service ServiceOfDefaultProfile()
{
    const std::string profile = profiles::Default().value_or("");
    if (profile.empty())
    {
        throw Error(MAPI_E_NOT_FOUND, "the address book cannot be opened: there is no default profile");
    }
    const std::vector<Service> services = profiles::Services(profile);
    if (services.empty() || services.front().path.empty())
    {
        throw Error(MAPI_E_NOT_FOUND, "the profile '" + profile + "' has no store");
    }
    return services.front();
}

/// The address book of a store's file, or of the default profile's store when `file` is empty (UTF-8).
/// @throws Error MAPI_E_NOT_FOUND when the file does not exist, or no default profile with a store
Ref<IAddrBook> OpenWabAddressBook(const std::string& file)
{
    Service service;
    service.path = file;
    if (file.empty())
    {
        service = ServiceOfDefaultProfile();
    }
    const StorePtr store = std::make_shared<StoreContext>(OpenServiceFile(service, &Notifier::The()));
    return NewAddressBook(store, store->File().IsReadOnly() ? Access::Read : Access::Write);
}

} // namespace
} // namespace zebstore

using namespace zebstore;

HRESULT STDMETHODCALLTYPE WABOpen(LPADRBOOK* book, LPWABOBJECT* object, LPWAB_PARAM param, DWORD)
{
    // WAB hosts never call MAPIInitialize.
    if (!IsInitialized() && g_liveObjects == 0)
    {
        ApplySwitchesOfEnvironment();
    }
    return Guarded("WABOpen", [&]
    {
        Require(book != nullptr && object != nullptr, "the output pointer is null");
        *book = nullptr;
        *object = nullptr;
        const char* file = param != nullptr ? param->szFileName : nullptr;
        Ref<IAddrBook> opened = OpenWabAddressBook(file != nullptr ? StoredFromNarrow(file) : std::string());
        Ref<IWABObject> wab = NewWabObject();
        *book = opened.Detach();
        *object = wab.Detach();
    });
}
