#include "zebstore/exports/WabOpen.h"

#include "zebstore/addressbook/AddressBook.h"
#include "zebstore/base/Memory.h"
#include "zebstore/exports/MapiInitialize.h"
#include "zebstore/notify/Notifier.h"
#include "zebstore/profiles/ServiceAdmin.h"
#include "zebstore/storage/Text.h"

#include <atomic>

namespace zebstore
{
namespace
{

std::atomic<long> g_wabObjects{0};

/// WAB hosts never call MAPIUninitialize: its cleanup happens when the last WAB object is released. Threads: any.
class WabObject final : public Object<IWABObject>
{
public:
    WabObject() { ++g_wabObjects; }
    ~WabObject() override
    {
        if (--g_wabObjects == 0 && !IsInitialized())
        {
            Notifier::The().Stop();
        }
    }

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT code, ULONG flags, LPMAPIERROR* error) override
    {
        return Guarded("IWABObject::GetLastError", [&] { return LastErrorAsMapi(code, flags, error); });
    }

    HRESULT STDMETHODCALLTYPE AllocateBuffer(ULONG size, LPVOID* buffer) override
    {
        return Guarded("IWABObject::AllocateBuffer", [&]
        {
            Require(buffer != nullptr, "the output pointer is null");
            *buffer = nullptr;
            *buffer = Allocate(size);
        });
    }

    HRESULT STDMETHODCALLTYPE AllocateMore(ULONG size, LPVOID parent, LPVOID* buffer) override
    {
        return Guarded("IWABObject::AllocateMore", [&]
        {
            Require(buffer && parent, "the output pointer or the parent block is null");
            *buffer = nullptr;
            *buffer = Allocate(size, parent);
        });
    }

    HRESULT STDMETHODCALLTYPE FreeBuffer(LPVOID buffer) override
    {
        return Guarded("IWABObject::FreeBuffer", [&] { return FreeOf(buffer, "IWABObject::FreeBuffer"); });
    }

    HRESULT STDMETHODCALLTYPE Backup(LPSTR) override { return Refuse("IWABObject::Backup"); }
    HRESULT STDMETHODCALLTYPE Import(LPSTR) override { return Refuse("IWABObject::Import"); }
    HRESULT STDMETHODCALLTYPE Find(LPADRBOOK, HWND) override { return Refuse("IWABObject::Find"); }
    HRESULT STDMETHODCALLTYPE VCardDisplay(LPADRBOOK, HWND, LPSTR) override
    {
        return Refuse("IWABObject::VCardDisplay");
    }
    HRESULT STDMETHODCALLTYPE LDAPUrl(LPADRBOOK, HWND, ULONG, LPSTR, LPMAILUSER*) override
    {
        return Refuse("IWABObject::LDAPUrl");
    }
    HRESULT STDMETHODCALLTYPE VCardCreate(LPADRBOOK, ULONG, LPSTR, LPMAILUSER) override
    {
        return Refuse("IWABObject::VCardCreate");
    }
    HRESULT STDMETHODCALLTYPE VCardRetrieve(LPADRBOOK, ULONG, LPSTR, LPMAILUSER*) override
    {
        return Refuse("IWABObject::VCardRetrieve");
    }
    HRESULT STDMETHODCALLTYPE GetMe(LPADRBOOK, ULONG, DWORD*, SBinary*, ULONG) override
    {
        return Refuse("IWABObject::GetMe");
    }
    HRESULT STDMETHODCALLTYPE SetMe(LPADRBOOK, ULONG, SBinary, ULONG) override { return Refuse("IWABObject::SetMe"); }

private:
    static HRESULT Refuse(const char* method)
    {
        return Guarded(method,
                       [] { throw Error(MAPI_E_NO_SUPPORT, "the WAB object supports only memory allocation"); });
    }

    // The interface has no published identifier: it answers to IID_IUnknown.
    bool Answers(REFIID) const override { return false; }
};

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

} // namespace

Ref<IWABObject> NewWabObject()
{
    return Ref<IWABObject>::Adopt(new WabObject);
}

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
        Require(book && object, "the output pointer is null");
        *book = nullptr;
        *object = nullptr;
        const char* file = param ? param->szFileName : nullptr;
        Ref<IAddrBook> opened = OpenWabAddressBook(file ? StoredFromNarrow(file) : std::string());
        Ref<IWABObject> wab = NewWabObject();
        *book = opened.Detach();
        *object = wab.Detach();
    });
}
