#include "zebstore/exports/WabObject.h"

#include "zebstore/base/Memory.h"
#include "zebstore/exports/MapiInitialize.h"
#include "zebstore/notify/Notifier.h"

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
            Require(buffer != nullptr && parent != nullptr, "the output pointer or the parent block is null");
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

} // namespace

Ref<IWABObject> NewWabObject()
{
    return Ref<IWABObject>::Adopt(new WabObject);
}

} // namespace zebstore
